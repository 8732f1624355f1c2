#include "ledger/journal_copy.h"

#include "ledger/journal_file.h"
#include "paths/path_utilities.h"

#include <algorithm>
#include <iterator>

namespace ruvo {

namespace {

constexpr std::string_view kCopyMark = "-copy";
constexpr std::string_view kUnfinishedEnding = ".new"; // until the copy is whole: a part of it is none
constexpr std::size_t kPieceSize = std::size_t{64} * 1024;

/// Writes what is added in pieces. After a failure nothing more is written.
class CPieces {
public:
    explicit CPieces(CFile& file) : m_file(file) {}

    void Add(std::span<const std::uint8_t> bytes) {
        m_piece.insert(m_piece.end(), bytes.begin(), bytes.end());
        if (m_piece.size() >= kPieceSize) {
            Write();
        }
    }
    SFileResult Finish() {
        Write();
        m_result = m_result.Good() ? m_file.FlushToDisk() : m_result;
        return m_result;
    }

private:
    void Write() {
        std::size_t count = 0;
        m_result = m_result.Good() ? m_file.Write(m_piece, count) : m_result;
        m_piece.clear();
    }

    CFile& m_file;
    std::vector<std::uint8_t> m_piece;
    SFileResult m_result;
};

/// Fails when the journal cannot be read now: a copy of what could be read would look like a whole one.
SFileResult CopyEntry(CFile& journal, const SJournalEntry& entry, std::uint64_t end, CPieces& pieces) {
    CFrameReader reader(journal, entry.offset, entry.visit, end);
    std::vector<std::uint8_t> bytes;
    SChain chain;
    std::uint32_t records = 0;
    for (SFrame frame; reader.Next(frame);) {
        records += frame.kind == EFrame::Record ? 1 : 0;
        MakeFrame(bytes, frame.kind, frame.visit, chain, frame.payload);
        pieces.Add(bytes);
    }
    return reader.HasFailed() || records == entry.records ? reader.Failure()
                                                          : SFileResult{EFileFailure::Other, 0};
}

} // namespace

std::string CopyPathOf(const std::string& journalPath) {
    const std::size_t stem = journalPath.size() - kJournalEnding.size();
    return journalPath.substr(0, stem) + std::string(kCopyMark) + std::string(kJournalEnding);
}

void LeaveOutCopiesBesideTheirJournal(std::vector<std::string>& journals) {
    std::vector<std::string> copies;
    std::ranges::transform(journals, std::back_inserter(copies), CopyPathOf);
    std::erase_if(journals,
                  [&](const std::string& path) { return std::ranges::find(copies, path) != copies.end(); });
}

SFileResult CopyOpenEntries(const std::string& journalPath, CFile& journal,
                            const SJournalContents& contents) {
    const std::string path = CopyPathOf(journalPath);
    if (!IsAbsent(path)) {
        return GetPathKind(path) == EPathKind::File ? SFileResult() : SFileResult{EFileFailure::Other, 0};
    }
    const std::string unfinished = path + std::string(kUnfinishedEnding);
    CFile copy;
    const SFileResult made = copy.Open(
        unfinished, {.write = true, .create = true, .truncate = true, .plain = true, .ownerOnly = true});
    if (!made.Good()) {
        return made;
    }
    CPieces pieces(copy);
    pieces.Add({reinterpret_cast<const std::uint8_t*>(kJournalHead.data()), kJournalHead.size()});
    SFileResult copied;
    for (const SJournalEntry& entry : contents.entries) {
        copied = copied.Good() && !entry.isDone ? CopyEntry(journal, entry, contents.end, pieces) : copied;
    }
    copied = copied.Good() ? pieces.Finish() : copied;
    static_cast<void>(copy.Close());
    const bool isNamed = copied.Good() && RenameFile(unfinished, path);
    if (isNamed && FlushFolder(ParentFolder(path))) {
        return {};
    }
    RemoveFile(isNamed ? path : unfinished);
    return copied.Good() ? SFileResult{EFileFailure::Other, 0} : copied;
}

} // namespace ruvo
