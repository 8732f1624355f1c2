#include "tools/events/day_file_walk.h"

#include "platform/files.h"
#include "tools/text_encoding.h"

namespace ruvo {

bool Counts(const SFoundFile& file, const SDayFileItem& item) {
    return file.fetched == nullptr ||
           file.fetched->Touches(item.offset,
                                 item.offset + (item.record != nullptr ? 1 : item.damage->length));
}

void CDayFileWalk::Read(const SFoundFiles& found, const ItemHandler& handle) {
    for (const std::string& failure : found.failures) {
        ReportFailure(failure);
    }
    CProgress progress(m_console, found.files.size());
    std::size_t done = 0;
    for (const SFoundFile& file : found.files) {
        if (m_console.out.IsGood()) {
            ReadDayFile(file, handle, progress, done);
        }
        ++done;
    }
}

void CDayFileWalk::ReadDayFile(const SFoundFile& file, const ItemHandler& handle, CProgress& progress,
                               std::size_t filesDone) {
    if (const SFileResult opened = m_reader.Open(file.path); !opened.Good()) {
        progress.Clear();
        ReportFailure(file.path + ": " + SystemErrorText(opened.systemCode));
        return;
    }
    const SEventSource source{SystemTextToUtf8(file.path), file.relay, file.site, file.clock};
    SDayFileItem item;
    while (m_console.out.IsGood() && m_reader.Next(item)) {
        if (Counts(file, item)) {
            handle(source, item, progress);
        }
        progress.Update(filesDone, m_bytes + m_reader.Position());
    }
    m_bytes += m_reader.Position();
}

void CDayFileWalk::ReportFailure(const std::string& what) {
    m_failures.push_back(EscapeControls(SystemTextToUtf8(what)));
    m_console.error.Write("ruvoctl: " + m_failures.back() + "\n");
    m_console.error.Flush();
}

} // namespace ruvo
