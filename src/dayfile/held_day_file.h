// The day file of one visit, held from before the first event is taken until the visit ends: made where it is
// missing, locked, and written at known positions through the one handle that the lock is on.
#pragma once

#include "dayfile/off_file.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ruvo {

/// Why a day file could not be held: the cause, and a text for people that names the obstacle.
struct SHoldFailure {
    EFileCause cause = EFileCause::Generic;
    std::string why;
};

/// What becomes of folders on the way to a day file that are missing.
enum class EMissingFolders : std::uint8_t { AreMade, AreAFailure };

/// When the names of the event root's folders are flushed, of which the day file's folder is one.
enum class ERootNames : std::uint8_t {
    FlushedNow,
    FlushedLater, ///< by the caller, for several day files at once
};

/// Holds one day file, once. Failures of what is done with it then are raised as CFileException.
class CHeldDayFile {
public:
    CHeldDayFile() = default;
    CHeldDayFile(const CHeldDayFile&) = delete;
    CHeldDayFile& operator=(const CHeldDayFile&) = delete;
    ~CHeldDayFile() { Release(); }

    /// Makes the folders that are missing, and the file; opens it by the rule against links, locks it, has it
    /// flushed and takes its length. On failure, what was made for it is removed at the release.
    std::optional<SHoldFailure> Hold(const std::string& path,
                                     EMissingFolders missing = EMissingFolders::AreMade);
    const std::string& Path() const { return m_path; }
    /// Whether it, or its folder, was made here.
    bool IsMade() const { return m_wasMissing; }
    bool IsFolderMade() const { return !m_madeFolders.empty(); }
    /// To be read through.
    CFile& File() { return m_file.File(); }
    /// The file's length when it was locked.
    std::uint64_t FoundLength() const { return m_foundLength; }
    /// Its length now: programs that do not lock it may have appended. When the file has been moved or
    /// removed meanwhile, the one at the path is held instead; if that fails, StartAt raises it.
    std::uint64_t LengthNow();

    /// The records that follow are written from this position on, after the header if it is 0.
    void StartAt(std::uint64_t position, const CTextFileHeader& header);
    /// Adds one whole record image. Images go out in pieces, each of which ends with a whole record; the
    /// header goes out together with the first. Needs no memory.
    void Add(std::span<const std::uint8_t> image);
    /// Writes what is left, and returns when it is on the disk: bytes, the file's name, and those of its
    /// folder and the event root.
    void Finish(ERootNames rootNames = ERootNames::FlushedNow);
    /// Whether the caller has to flush the event root's names before the images are safe.
    bool AreRootNamesLeft() const { return m_areRootNamesLeft; }
    /// Images that are whole in the file.
    std::size_t StoredCount() const { return m_storedCount; }
    /// Where they are: the first byte, a header's included, and the one after the last.
    std::uint64_t WrittenFrom() const { return m_start; }
    std::uint64_t WrittenTo() const { return m_wholeEnd; }
    /// The images are in the file, but a power failure may lose them: the system reports a failed flush once,
    /// and a later one that succeeds proves nothing.
    bool HasFlushFailed() const { return m_hasFlushFailed; }
    /// After a failure: cuts the file back to the end of the last whole record that was written, or to where
    /// the writing began, unless another program has written there. False when a torn record may remain.
    bool CutBack() noexcept;

    /// Closes. A file and folders that were made here are removed while they are empty.
    void Release() noexcept;

private:
    enum class EOpening : std::uint8_t { Held, HeldByAnother, Moved, Failed };
    EOpening Open(bool isFolderNew, CFileException& failure);
    EOpening Lock(CFileException& failure);
    SHoldFailure Explain(EOpening opening, const CFileException& failure) const;
    void WritePiece();
    bool HoldsBeginning(CFile& file, std::uint64_t length) const;
    bool Cut(CFile& file);

    COffFile m_file;
    std::string m_path;
    std::string m_folder;
    std::vector<std::string> m_madeFolders; ///< the outermost first
    bool m_isOpen = false;
    bool m_wasMissing = false; ///< so it was made here, or at the same moment by another
    std::uint64_t m_foundLength = 0;
    std::uint64_t m_knownLength = 0; ///< where the system does not say it now
    std::optional<SHoldFailure> m_lossOfFile;

    bool m_isHeaderDue = false;
    std::uint64_t m_start = 0;    ///< of what is written
    std::uint64_t m_position = 0; ///< where the next piece goes
    std::uint64_t m_wholeEnd = 0; ///< of the images that are in the file
    std::vector<std::uint8_t> m_piece;
    std::vector<std::size_t> m_ends; ///< of the images within the piece
    std::size_t m_storedCount = 0;
    bool m_hasFlushFailed = false;
    bool m_areRootNamesLeft = false;
};

/// Removes a day file that is empty and not locked, on request with its folder.
void RemoveEmptyDayFile(const std::string& path, bool withFolder);

} // namespace ruvo
