#include "ledger/journal_file.h"

#include "ledger/journal_copy.h"
#include "paths/path_utilities.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

constexpr std::size_t kReserveStep = std::size_t{64} * 1024;
constexpr std::array<std::uint8_t, kReserveStep> kZeros{};
/// As much of a journal is in memory at a time.
constexpr std::size_t kMappedSize = std::size_t{1024} * 1024;

std::span<const std::uint8_t> HeadBytes() {
    return {reinterpret_cast<const std::uint8_t*>(kJournalHead.data()), kJournalHead.size()};
}

/// Whether an earlier journal of that name was damaged (a clock may have been set back): what is left of it
/// would be taken for the new one's, or be overwritten.
bool HasLeftover(const std::string& journalPath) {
    return !IsAbsent(CopyPathOf(journalPath)) || !IsAbsent(journalPath + std::string(kDamagedEnding));
}

/// What is below something that is no folder is not known to be missing.
bool IsMissing(const std::string& folder) {
    std::vector<SFolderEntry> entries;
    const std::string above = ParentFolder(folder);
    return IsAbsent(folder) && (IsAbsent(above) || ListFolder(above, entries));
}

} // namespace

SListedFiles ListFiles(const std::string& folder, std::string_view ending) {
    std::vector<SFolderEntry> entries;
    SListedFiles found;
    found.isRead = folder.empty() || ListFolder(folder, entries) || IsMissing(folder);
    for (const SFolderEntry& entry : entries) {
        if (entry.isFile && entry.name.ends_with(ending)) {
            found.paths.push_back(folder + "\\" + entry.name);
        }
    }
    std::ranges::sort(found.paths);
    return found;
}

SListedFiles JournalsIn(const std::string& folder) {
    return ListFiles(folder, kJournalEnding);
}

bool CJournalFile::Make(const std::string& folder, const std::string& nameBegin) {
    constexpr int kMostNames = 1000;
    m_folder = folder;
    for (int number = 1; number <= kMostNames; ++number) {
        m_path = folder;
        m_path.append("\\")
            .append(nameBegin)
            .append("-")
            .append(std::to_string(number))
            .append(kJournalEnding);
        if (HasLeftover(m_path)) {
            continue;
        }
        const SFileResult made = File().Open(
            m_path, {.read = true, .write = true, .create = true, .exclusive = true, .removable = true});
        if (made.failure != EFileFailure::Exists && !IsGood(made)) {
            return false;
        }
        // A run that looks for journals may have taken, or taken away, what had just been made.
        if (made.Good() && m_file.TryLock() != EFileLock::HeldByAnother && m_file.IsAt(m_path)) {
            m_end = kJournalHead.size();
            if (WriteAt(0, HeadBytes()) && FlushFolder(folder)) {
                return true;
            }
            Remove();
            return false;
        }
    }
    return false;
}

EJournalOpening CJournalFile::OpenEnded(const std::string& path) {
    m_path = path;
    m_folder = ParentFolder(path);
    const SFileResult opened =
        File().Open(path, {.read = true, .write = true, .plain = true, .removable = true});
    if (!opened.Good()) {
        return opened.failure == EFileFailure::NotFound || opened.failure == EFileFailure::SharingViolation
                   ? EJournalOpening::InUse
                   : EJournalOpening::Failed;
    }
    return m_file.TryLock() != EFileLock::HeldByAnother && m_file.IsAt(path) ? EJournalOpening::Opened
                                                                             : EJournalOpening::InUse;
}

SFileResult CJournalFile::OpenToRead(const std::string& path) {
    m_path = path;
    return File().Open(path, {.read = true, .plain = true, .removable = true});
}

EJournalHead CJournalFile::Head() {
    std::array<std::uint8_t, kJournalHead.size()> head{};
    std::uint64_t position = 0;
    std::size_t count = 0;
    const bool isRead =
        File().Seek(0, ESeekOrigin::Start, position).Good() && m_file.Read(head, count).Good();
    const auto read = std::span<const std::uint8_t>(head).first(count);
    const auto unwritten = std::ranges::mismatch(read, HeadBytes()).in1;
    if (!isRead) {
        return EJournalHead::Unreadable;
    }
    const bool isKnown = std::all_of(unwritten, read.end(), [](std::uint8_t byte) { return byte == 0; });
    return isKnown ? EJournalHead::Known : EJournalHead::Unknown;
}

bool CJournalFile::IsGood(SFileResult result) {
    m_failure = result.Good() ? m_failure : result;
    return result.Good();
}

bool CJournalFile::WriteAt(std::uint64_t position, std::span<const std::uint8_t> bytes) {
    std::uint64_t reached = 0;
    std::size_t count = 0;
    const bool isThere = m_place == position || IsGood(m_file.Seek(static_cast<std::int64_t>(position),
                                                                   ESeekOrigin::Start, reached));
    const bool isDone = isThere && IsGood(m_file.Write(bytes, count));
    m_place = isDone ? std::optional(position + count) : std::nullopt;
    m_reserved = std::max(m_reserved, position + count);
    return isDone;
}

/// A call of the system for each frame would cost more than all the rest of an event. Only what is reserved
/// is stored without one: elsewhere the disk may have no room.
bool CJournalFile::StoreOrWrite(std::span<const std::uint8_t> frame) {
    const bool isReserved = m_end + frame.size() <= m_reserved && frame.size() <= kMappedSize;
    if (isReserved && m_isMappable && !m_mapped.Covers(m_end, frame.size())) {
        m_isMappable = m_mapped.Map(m_file, m_end, kMappedSize);
    }
    return isReserved && m_isMappable ? IsGood(m_mapped.Store(m_end, frame)) : WriteAt(m_end, frame);
}

bool CJournalFile::Append(EFrame kind, std::uint32_t visit, SChain& chain,
                          std::span<const std::uint8_t> payload, std::span<const std::uint8_t> morePayload) {
    SChain next = chain;
    MakeFrame(m_frame, kind, visit, next, payload, morePayload);
    if (!m_hasFailed) {
        m_hasFailed = !StoreOrWrite(m_frame) || (!m_flush.NoteWrite() && !IsGood(m_flush.Failure()));
    }
    if (!m_hasFailed) {
        chain = next;
        m_end += m_frame.size();
    }
    return !m_hasFailed;
}

bool CJournalFile::Flush() {
    return m_flush.Flush() || IsGood(m_flush.Failure());
}

bool CJournalFile::Reserve(std::size_t bytes) {
    while (m_reserved < m_end + bytes) {
        if (!WriteAt(m_reserved, kZeros)) {
            return false;
        }
    }
    return true;
}

void CJournalFile::Clear() {
    if (m_file.SetLength(kJournalHead.size()).Good()) {
        m_end = m_reserved = kJournalHead.size();
    }
    const bool isCut = IsGood(m_file.FlushToDisk()); // else what went could come back
    m_hasFailed = !Flush() || !isCut || m_hasFailed;
}

bool CJournalFile::TakeBack(std::uint64_t end) {
    const bool isTaken = m_file.SetLength(end).Good();
    static_cast<void>(m_file.FlushToDisk()); // where no flush succeeds any more, that is all that can be done
    return isTaken;
}

void CJournalFile::Remove() {
    RemoveFile(m_path);
    m_flush.Stop();
    m_mapped.Unmap();
    static_cast<void>(m_file.Close());
    FlushFolder(m_folder);
}

} // namespace ruvo
