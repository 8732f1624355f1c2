// The frames of a journal: kind, visit, position within the visit, length, payload, checksum. The checksum is
// chained from the visit's first frame on, so that bytes which an earlier visit left in the file are never
// taken for this one's. All numbers are little-endian.
#pragma once

#include "dayfile/block_parser.h"
#include "platform/files.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

/// On the disk: never renumber.
enum class EFrame : std::uint8_t {
    Visit = 1,    ///< SVisitInfo: before the first event is taken
    Record = 2,   ///< number of an extended record or 0, and one record image
    Lost = 3,     ///< ELostCause: an event of which no record is made
    Store = 4,    ///< SStoreInfo: before the day file's first byte
    Done = 5,     ///< a file has the records, or they are not to be written
    SetAside = 6, ///< SSetAsideInfo: before the set-aside file's first byte
    Waits = 7,    ///< the UTC date of a run that could not bring the visit in
};
inline constexpr EFrame kLastFrame = EFrame::Waits;

/// Why no record is made of an event. On the disk: never renumber.
enum class ELostCause : std::uint8_t {
    NotStated = 0, ///< by a journal of an earlier version
    UnknownKind = 1,
    Malformed = 2,
    RecordNotRead = 3,
    NoMemory = 4,
};
inline constexpr std::size_t kLostCauses = 5;

/// What every journal begins with; another version has another text.
inline constexpr std::string_view kJournalHead = "RUVO JOURNAL 1\r\n";
inline constexpr std::size_t kFrameHeadSize = 1 + 4 + 4 + 4;
inline constexpr std::size_t kFrameOverhead = kFrameHeadSize + 4;
inline constexpr std::size_t kLargestRecordFrame = kFrameOverhead + 4 + kMaxRecordImage;

/// The state of a visit's chain of frames.
struct SChain {
    std::uint32_t position = 0;
    std::uint32_t checksum = 0;
};

struct SFrame {
    EFrame kind = EFrame::Done;
    std::uint32_t visit = 0;
    std::uint64_t offset = 0;              ///< in the journal
    std::span<const std::uint8_t> payload; ///< until the next frame is read
};

/// A visit as it begins.
struct SVisitInfo {
    std::string key;          ///< of the INI file
    std::string file;         ///< FOLDER\FILE below the event root
    std::string begun;        ///< UTC, for people
    std::uint64_t length = 0; ///< of the day file under its lock
    bool isFileMade = false;  ///< by this visit
    bool isFolderMade = false;
    std::string source; ///< the set-aside file that the records come from; empty for a relay's visit
};

/// Consecutive records, counted from 0 in the order of their frames.
struct SRecordRun {
    std::uint32_t first = 0;
    std::uint32_t count = 0;
};

/// What is about to be written into the day file.
struct SStoreInfo {
    std::uint64_t length = 0;       ///< of the day file, where the records go
    std::uint32_t lastExtended = 0; ///< for the header
    std::vector<SRecordRun> records;
};

/// Where records go that do not go into their day file.
struct SSetAsideInfo {
    std::string name; ///< in the journal's folder
    std::string reason;
};

/// Replaces the bytes by a frame, and moves the chain on. The payload may come in two parts.
void MakeFrame(std::vector<std::uint8_t>& bytes, EFrame kind, std::uint32_t visit, SChain& chain,
               std::span<const std::uint8_t> payload, std::span<const std::uint8_t> morePayload = {});

[[nodiscard]] std::vector<std::uint8_t> Pack(const SVisitInfo& info);
[[nodiscard]] std::vector<std::uint8_t> Pack(const SStoreInfo& info);
[[nodiscard]] std::vector<std::uint8_t> Pack(const SSetAsideInfo& info);
[[nodiscard]] std::optional<SVisitInfo> UnpackVisit(std::span<const std::uint8_t> payload);
[[nodiscard]] std::optional<SStoreInfo> UnpackStore(std::span<const std::uint8_t> payload);
[[nodiscard]] std::optional<SSetAsideInfo> UnpackSetAside(std::span<const std::uint8_t> payload);
/// The number of the extended record, 0 for a simple one, and the image after it.
struct SRecordPayload {
    std::uint32_t extendedNumber = 0;
    std::span<const std::uint8_t> image;
};
[[nodiscard]] std::optional<SRecordPayload> UnpackRecord(std::span<const std::uint8_t> payload);

/// Reads frames from an open journal, in little memory; nothing in it is trusted.
class CFrameReader {
public:
    /// With a visit, reading begins at that visit's first frame; the frames of others are skipped unread.
    /// With an end, nothing is read from there on.
    CFrameReader(CFile& file, std::uint64_t offset, std::optional<std::uint32_t> visit = std::nullopt,
                 std::uint64_t end = std::numeric_limits<std::uint64_t>::max())
        : m_file(file), m_offset(offset), m_end(end), m_visit(visit) {}

    /// False at the first place without a whole frame.
    [[nodiscard]] bool Next(SFrame& frame);
    /// After the last whole frame.
    [[nodiscard]] std::uint64_t Offset() const { return m_offset; }
    /// The states of the visits' chains.
    [[nodiscard]] const std::map<std::uint32_t, SChain>& Chains() const { return m_chains; }
    /// Whether the bytes at the offset can be no more than one torn frame: only zeros follow it.
    [[nodiscard]] bool IsTornAtMost();
    /// Whether the file could not be read: then nothing is known of what follows.
    [[nodiscard]] bool HasFailed() const { return !m_failure.Good(); }
    /// Of reading the file.
    [[nodiscard]] SFileResult Failure() const { return m_failure; }

private:
    [[nodiscard]] bool Has(std::size_t count);
    [[nodiscard]] bool HoldsAnotherHead(std::span<const std::uint8_t> bytes, std::size_t claimed,
                                        std::uint32_t visit) const;
    [[nodiscard]] bool IsChained(EFrame kind, std::uint32_t visit, std::uint32_t position,
                                 std::size_t length);

    CFile& m_file;
    std::uint64_t m_offset;
    std::uint64_t m_end;
    std::optional<std::uint32_t> m_visit;
    std::map<std::uint32_t, SChain> m_chains;
    std::vector<std::uint8_t> m_bytes; ///< from the offset on, after `m_passed`
    std::size_t m_passed = 0;
    SFileResult m_failure;
};

} // namespace ruvo
