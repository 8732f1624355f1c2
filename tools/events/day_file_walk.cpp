#include "tools/events/day_file_walk.h"

#include "platform/files.h"
#include "tools/text_encoding.h"

namespace ruvo {

void CDayFileWalk::Read(const SFoundFiles& found, const Taker& take) {
    for (const std::string& failure : found.failures) {
        Complain(failure);
    }
    CProgress progress(m_console, found.files.size());
    std::size_t done = 0;
    for (const SFoundFile& file : found.files) {
        if (m_console.out.IsGood()) {
            ReadDayFile(file, take, progress, done);
        }
        ++done;
    }
}

void CDayFileWalk::ReadDayFile(const SFoundFile& file, const Taker& take, CProgress& progress,
                               std::size_t filesDone) {
    if (const SFileResult opened = m_reader.Open(file.path); !opened.Good()) {
        progress.Clear();
        Complain(file.path + ": " + SystemErrorText(opened.systemCode));
        return;
    }
    const SEventSource source{SystemTextToUtf8(file.path), file.relay};
    SDayFileItem item;
    while (m_console.out.IsGood() && m_reader.Next(item)) {
        take(source, item, progress);
        progress.Tell(filesDone, m_bytes + m_reader.Position());
    }
    m_bytes += m_reader.Position();
}

void CDayFileWalk::Complain(const std::string& what) {
    m_failures.push_back(EscapeControls(SystemTextToUtf8(what)));
    m_console.error.Write("ruvoctl: " + m_failures.back() + "\n");
    m_console.error.Flush();
}

} // namespace ruvo
