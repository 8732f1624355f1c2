#include "dayfile/held_day_file.h"

#include "dayfile/block_parser.h"
#include "model/records/block_layout.h"
#include "paths/path_utilities.h"
#include "platform/full_path.h"

#include <algorithm>
#include <array>
#include <exception>
#include <ranges>

namespace ruvo {

namespace {

constexpr std::size_t kPieceSize = std::size_t{64} * 1024;
constexpr std::size_t kShortestImage = kBlockHeadSize + kMinEventSize;

/// Flushes the names that lead to the file, even if another run created them: its own, its folder's, and that
/// of an event root that was created for it.
bool FlushNames(const std::string& path, std::size_t madeFolders) {
    bool isGood = true;
    std::string folder = ParentFolder(path);
    for (std::size_t name = 0; name <= std::max<std::size_t>(madeFolders, 1) && !folder.empty(); ++name) {
        isGood = FlushFolder(folder) && isGood;
        folder = ParentFolder(folder);
    }
    return isGood;
}

} // namespace

/// Under the file's lock, so that a run which has just made or opened the file finds out.
void RemoveEmptyDayFile(const std::string& path, bool withFolder) {
    CFile file;
    std::uint64_t length = 0;
    const SOpenMode mode{.read = true, .write = true, .plain = true, .removable = true};
    if (file.Open(path, mode).Good() && file.TryLock() != EFileLock::HeldByAnother && file.IsAt(path) &&
        file.GetLength(length).Good() && length == 0) {
        RemovePlainFile(path);
    }
    if (withFolder) {
        static_cast<void>(file.Close());
        RemoveEmptyFolder(ParentFolder(path));
    }
}

std::optional<SHoldFailure> CHeldDayFile::Hold(const std::string& path, EMissingFolders missing) {
    constexpr int kAttempts = 4;
    m_path = path;
    m_folder = ParentFolder(path);
    CFileException failure;
    EOpening opening = EOpening::Moved;
    bool isDisturbed = true;
    for (int attempt = 0; attempt < kAttempts && isDisturbed; ++attempt) {
        // What could not be made shows in the opening.
        const std::size_t madeBefore = m_madeFolders.size();
        const bool hadFolder =
            missing == EMissingFolders::AreMade && MakeFolderChain(m_folder, m_madeFolders);
        opening = Open(m_madeFolders.size() > madeBefore, failure);
        if (opening == EOpening::Held) {
            opening = Lock(failure);
        }
        const bool isGone =
            failure.GetCause() == EFileCause::BadPath || failure.GetCause() == EFileCause::FileNotFound;
        isDisturbed = opening == EOpening::Moved ||
                      (opening == EOpening::Failed && hadFolder && isGone); // by another run
    }
    if (opening == EOpening::Held) {
        return std::nullopt;
    }
    m_file.Abort();
    return Explain(opening, failure);
}

/// In a new folder there is no file to look for.
CHeldDayFile::EOpening CHeldDayFile::Open(bool isFolderNew, CFileException& failure) {
    SOpenMode mode{.read = true, .write = true};
    m_isOpen = true; // even if it fails: Release looks at what was created
    if (!isFolderNew) {
        if (m_file.Open(m_path, mode, failure)) {
            return EOpening::Held;
        }
        if (failure.GetCause() != EFileCause::FileNotFound) {
            return EOpening::Failed;
        }
    }
    m_wasMissing = true;
    mode.create = true;
    return m_file.Open(m_path, mode, failure) ? EOpening::Held : EOpening::Failed;
}

/// The file may have been removed or replaced between its opening and the lock. The length counts only once
/// it is on the disk: what an ended run left unflushed could still be lost. A file that was just created is
/// empty.
CHeldDayFile::EOpening CHeldDayFile::Lock(CFileException& failure) {
    if (m_file.File().TryLock() == EFileLock::HeldByAnother) {
        return EOpening::HeldByAnother;
    }
    if (!m_file.File().IsAt(m_path)) {
        return EOpening::Moved;
    }
    try {
        m_foundLength = m_knownLength = m_file.GetLength();
        if (!m_wasMissing || m_foundLength > 0) {
            m_file.FlushToDisk();
        }
    } catch (const CFileException& raised) {
        failure = raised;
        return EOpening::Failed;
    }
    return EOpening::Held;
}

SHoldFailure CHeldDayFile::Explain(EOpening opening, const CFileException& failure) const {
    const std::string name = "Day file " + DisplayPath(m_path);
    const std::string reason = ": " + SystemErrorText(failure.GetSystemCode());
    if (opening == EOpening::HeldByAnother) {
        return {EFileCause::SharingViolation, name + " is held by another run"};
    }
    if (opening == EOpening::Moved) {
        return {EFileCause::Generic, name + " keeps being replaced"};
    }
    const std::string nearest = NearestExisting(m_folder);
    if (nearest != m_folder && !IsLink(nearest)) { // the first folder that is missing cannot be made
        const SFileResult makes = CanMakeEntryIn(nearest, EPathKind::Folder);
        return {EFileCause::AccessDenied, "No folder can be made in " +
                                              DisplayPath(nearest.ends_with(':') ? nearest + "\\" : nearest) +
                                              (makes.Good() ? "" : ": " + SystemErrorText(makes.systemCode))};
    }
    CFile look;
    const bool isPlain =
        look.Open(m_path, {.read = true, .write = true, .plain = true}).failure != EFileFailure::NotPlain;
    const std::string why = IsLink(m_folder) ? "The relay's folder " + DisplayPath(m_folder) + " is a link"
                            : IsLink(m_path) ? name + " is a link"
                            : !isPlain       ? name + " is not a regular file in a folder"
                            : m_wasMissing   ? "No file can be made in " + DisplayPath(m_folder) + reason
                                             : name + reason;
    return {failure.GetCause(), why};
}

std::uint64_t CHeldDayFile::LengthNow() {
    if (!m_file.File().IsAt(m_path)) { // the records would go with it, or nowhere
        m_file.Abort();
        m_lossOfFile = Hold(m_path);
    }
    std::uint64_t length = 0;
    if (!m_lossOfFile && m_file.File().GetLength(length).Good()) {
        m_knownLength = length;
    }
    return m_knownLength;
}

void CHeldDayFile::StartAt(std::uint64_t position, const CTextFileHeader& header) {
    if (m_lossOfFile) {
        throw CFileException(m_lossOfFile->cause, m_path, m_lossOfFile->why);
    }
    m_start = m_position = m_wholeEnd = position;
    m_storedCount = 0;
    m_piece.clear();
    m_piece.reserve(kPieceSize + kMaxRecordImage); // from here on no memory is asked for
    m_ends.clear();
    m_ends.reserve(kPieceSize / kShortestImage);
    m_isHeaderDue = position == 0;
    if (m_isHeaderDue) {
        const std::string bytes = COffFile::HeaderBytes(header);
        m_piece.assign(bytes.begin(), bytes.end());
    }
}

void CHeldDayFile::Add(std::span<const std::uint8_t> image) {
    m_piece.insert(m_piece.end(), image.begin(), image.end());
    m_ends.push_back(m_piece.size());
    if (m_piece.size() >= kPieceSize) {
        WritePiece();
    }
}

void CHeldDayFile::WritePiece() {
    m_file.Seek(static_cast<std::int64_t>(m_position), ESeekOrigin::Start);
    if (m_isHeaderDue) {
        m_file.WriteFromHeader(m_piece);
    } else {
        m_file.WriteBytes(m_piece);
    }
    m_isHeaderDue = false;
    m_position += m_piece.size();
    m_wholeEnd = m_position;
    m_knownLength = std::max(m_knownLength, m_position);
    m_storedCount += m_ends.size();
    m_piece.clear();
    m_ends.clear();
}

/// The folders of those on the way to an event root that was made here are no other visit's business.
void CHeldDayFile::Finish(ERootNames rootNames) {
    if (!m_ends.empty()) { // a header without a record is none
        WritePiece();
    }
    m_hasFlushFailed = true; // until it is known to have come back
    m_file.FlushToDisk();
    m_areRootNamesLeft = rootNames == ERootNames::FlushedLater && m_madeFolders.size() <= 1;
    m_hasFlushFailed =
        !(m_areRootNamesLeft ? FlushFolder(m_folder) : FlushNames(m_path, m_madeFolders.size()));
    if (m_hasFlushFailed) {
        throw CFileException(EFileCause::Generic, m_path,
                             "The name of day file " + DisplayPath(m_path) + " could not be flushed");
    }
}

bool CHeldDayFile::CutBack() noexcept {
    bool isCut = Cut(m_file.File());
    try {
        CFile fresh; // the handle may be the very thing that failed
        isCut =
            isCut || (fresh.Open(m_path, {.read = true, .write = true, .plain = true}).Good() && Cut(fresh));
        if (m_storedCount > 0) {
            m_hasFlushFailed = !FlushNames(m_path, m_madeFolders.size()) || m_hasFlushFailed;
        }
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): no memory; what is cut is cut
    }
    return isCut;
}

/// Whether all bytes up to this length, from the position of the failed write on, are a beginning of what was
/// to be written. A program that does not lock the file may have appended at that moment.
bool CHeldDayFile::HoldsBeginning(CFile& file, std::uint64_t length) const {
    std::uint64_t position = 0;
    std::array<std::uint8_t, 4096> buffer{}; // needs no memory
    auto wanted = std::span<const std::uint8_t>(m_piece).first(
        static_cast<std::size_t>(length - std::min(length, m_position)));
    if (!wanted.empty() &&
        !file.Seek(static_cast<std::int64_t>(m_position), ESeekOrigin::Start, position).Good()) {
        return false;
    }
    while (!wanted.empty()) {
        std::size_t count = 0;
        const auto part = std::span(buffer).first(std::min(wanted.size(), buffer.size()));
        if (!file.Read(part, count).Good() || count == 0 ||
            !std::ranges::equal(part.first(count), wanted.first(count))) {
            return false;
        }
        wanted = wanted.subspan(count);
    }
    return true;
}

bool CHeldDayFile::Cut(CFile& file) {
    std::uint64_t length = 0;
    if (m_ends.empty()) { // no write has failed
        return true;
    }
    if (!file.GetLength(length).Good() || length > m_position + m_piece.size() ||
        !HoldsBeginning(file, length)) {
        return false;
    }
    const auto isWhole = [&](std::size_t end) { return m_position + end <= length; };
    const auto whole = static_cast<std::size_t>(std::ranges::count_if(m_ends, isWhole));
    const std::uint64_t end = whole > 0 ? m_position + m_ends[whole - 1] : m_position;
    if (length > end && !file.SetLength(end).Good()) {
        return false;
    }
    m_storedCount += whole;
    m_wholeEnd = end;
    m_ends.clear();
    // Earlier pieces count as stored: they have to last, even if nothing of this one has come.
    m_hasFlushFailed = (length > m_position || m_storedCount > 0) && !file.FlushToDisk().Good();
    return true;
}

void CHeldDayFile::Release() noexcept {
    if (!m_isOpen) {
        return;
    }
    m_isOpen = false;
    m_file.Abort(); // what matters has been flushed
    try {
        if (m_storedCount > 0) {
            return;
        }
        if (m_wasMissing) {
            RemoveEmptyDayFile(m_path, false);
        }
        while (!m_madeFolders.empty() && RemoveEmptyFolder(m_madeFolders.back())) {
            m_madeFolders.pop_back();
        }
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): readers know an empty file to be none
    }
}

} // namespace ruvo
