// One journal on the disk: made by a run for itself, or opened to bring in what an ended run left. Locked as
// long as it is open. Nothing here throws except when memory runs out.
#pragma once

#include "ledger/background_flush.h"
#include "ledger/frames.h"
#include "platform/mapped_part.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ruvo {

inline constexpr std::string_view kJournalEnding = ".journal";
/// Added to the name of a journal that could not be read to its end, once all that could be read is stored.
inline constexpr std::string_view kDamagedEnding = ".damaged";

struct SListedFiles {
    std::vector<std::string> paths; ///< by name
    bool isRead = true;             ///< the folder, or it is missing

    /// False, too, for a folder that cannot be read: then it is not known.
    [[nodiscard]] bool AreNone() const { return isRead && paths.empty(); }
};
/// The files in a folder whose names end so.
[[nodiscard]] SListedFiles ListFiles(const std::string& folder, std::string_view ending);
/// The journals in an event root's folder, the oldest first.
[[nodiscard]] SListedFiles JournalsIn(const std::string& folder);

/// The outcome of opening an ended run's journal.
enum class [[nodiscard]] EJournalOpening : std::uint8_t{
    Opened,
    InUse, ///< its run lives, or another run has just removed it
    Failed,
};

/// What the first bytes of a file show.
enum class [[nodiscard]] EJournalHead : std::uint8_t{Known, Unknown, Unreadable};

class CJournalFile {
public:
    /// Makes a journal with a new name in the folder, whose own name must be on the disk already.
    [[nodiscard]] bool Make(const std::string& folder, const std::string& nameBegin);
    EJournalOpening OpenEnded(const std::string& path);
    /// Opens one to read it, without its lock.
    [[nodiscard]] SFileResult OpenToRead(const std::string& path);
    /// Whether it begins as journals of this version do. One with a part of that does: its making was ended.
    EJournalHead Head();

    /// A frame that is written is safe from an end of the process, and from one of the machine once it is
    /// flushed, which happens within a second. After a failure, of a flush too, nothing more is written.
    [[nodiscard]] bool Append(EFrame kind, std::uint32_t visit, SChain& chain,
                              std::span<const std::uint8_t> payload,
                              std::span<const std::uint8_t> morePayload = {});
    [[nodiscard]] bool Flush();
    /// Ensures that so many more bytes can be written, by writing zeros in their place.
    [[nodiscard]] bool Reserve(std::size_t bytes);
    /// Where the next frame goes.
    [[nodiscard]] std::uint64_t End() const { return m_end; }
    void SetEnd(std::uint64_t end) { m_end = end; }
    [[nodiscard]] bool HasFailed() const { return m_hasFailed; }
    /// What has failed last, of making, writing or flushing it.
    [[nodiscard]] SFileResult Failure() const { return m_failure; }
    /// Counts as failed from here on.
    void GiveUp() { m_hasFailed = true; }
    /// Takes the frames from there on out of it, also of one that has failed.
    [[nodiscard]] bool TakeBack(std::uint64_t end);

    /// Empties it, once nothing is open in it; on the disk when this returns.
    void Clear();
    /// Removes and closes it.
    void Remove();

    /// To be read through until the next frame is written.
    [[nodiscard]] CFile& File() {
        m_place.reset();
        return m_file;
    }
    [[nodiscard]] const std::string& Path() const { return m_path; }
    [[nodiscard]] const std::string& Folder() const { return m_folder; }

private:
    [[nodiscard]] bool IsGood(SFileResult result);
    [[nodiscard]] bool WriteAt(std::uint64_t position, std::span<const std::uint8_t> bytes);
    [[nodiscard]] bool StoreOrWrite(std::span<const std::uint8_t> frame);

    CFile m_file;
    CBackgroundFlush m_flush{m_file};
    std::string m_path;
    std::string m_folder;
    std::optional<std::uint64_t> m_place; ///< the handle's, while nothing else moves it
    std::uint64_t m_end = 0;
    std::uint64_t m_reserved = 0; ///< up to here the file has bytes
    CMappedPart m_mapped;
    bool m_isMappable = true; ///< as far as is known
    std::vector<std::uint8_t> m_frame;
    bool m_hasFailed = false;
    SFileResult m_failure;
};

} // namespace ruvo
