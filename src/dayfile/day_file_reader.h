// Reads a day file back, record by record and in little memory, whatever has happened to the file.
#pragma once

#include "dayfile/block_parser.h"
#include "model/records/event_record.h"
#include "platform/files.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace ruvo {

/// A range of the file that makes no sense, and why its first byte does not.
struct SDayFileDamage {
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
    EDayFileFault fault = EDayFileFault::NoBlock;
};

/// A record, or damage. A record comes with damage of its own when it holds values of an unknown type or
/// size: it is shown without them, and the damage says where they are.
struct SDayFileItem {
    std::uint64_t offset = 0; ///< of the record's first block, or of the damage
    std::unique_ptr<CEventRecord> record;
    bool isExtended = false;
    std::span<const std::uint8_t> bytes; ///< the record's, as they are in the file; until the next item
    std::optional<SDayFileDamage> damage;

    /// Whether the system has not let the file be read further: what follows is not known.
    [[nodiscard]] bool IsReadFailure() const { return damage && damage->fault == EDayFileFault::ReadFailed; }
};

/// Walks one day file from its header to its end. Damage is reported once, as one range; reading goes on
/// after it at the next sound record that has a witness (see docs/day-file-format.md). The work grows with
/// the file's length, not with its square, whatever the bytes are.
class CDayFileReader {
public:
    CDayFileReader();

    /// Starts over with the file at a path, in Windows form or the system's own.
    SFileResult Open(const std::string& path, SOpenMode mode = {.read = true});
    /// The next item in file order; false at the end of the file.
    [[nodiscard]] bool Next(SDayFileItem& item);
    /// Bytes passed so far.
    [[nodiscard]] std::uint64_t Position() const { return m_at.offset; }

private:
    using Bytes = std::span<const std::uint8_t>;

    bool ReadHeader(SDayFileItem& item);
    void ReadRecord(SDayFileItem& item);
    void SkipDamage(EDayFileFault fault, std::size_t known, SDayFileItem& item);
    [[nodiscard]] SParsedRecord Parse(Bytes bytes);
    [[nodiscard]] bool SkipDoubtful(const SParsedRecord& parsed, SDayFileItem& item);
    [[nodiscard]] std::size_t FindRecordWithin(std::size_t size);
    [[nodiscard]] std::size_t ResumableSize(Bytes bytes);
    [[nodiscard]] bool ReportReadFailure(SDayFileItem& item);

    /// The bytes from the position on: as many as a decision may need, or all that the file has left.
    [[nodiscard]] Bytes Window();
    void Refill();
    void Advance(std::size_t count);

    /// What starts over with each file.
    struct SProgress {
        std::size_t begin = 0; ///< of the bytes in the buffer that are still to come
        std::size_t end = 0;
        std::uint64_t offset = 0; ///< of `begin` in the file
        bool atEnd = false;       ///< nothing is left to be read into the buffer
        bool readFailed = false;
        bool headerRead = false;
        std::uint64_t parseBudget = 0; ///< bytes that may still be parsed, see Parse
        SParsedRecord ahead;           ///< the record at the position when it has been parsed already
    };

    CFile m_file;
    std::unique_ptr<std::uint8_t[]>
        m_buffer; ///< not zeroed: a visit that reads a small file touches little of it
    SProgress m_at;
};

/// How a day file ends.
struct SDayFileEnd {
    bool isRead = true; ///< else nothing is known of it
    /// Where the damage begins that it ends with; none when it ends with a whole record or its header, or is
    /// empty.
    std::optional<std::uint64_t> torn;
};
/// Reads the whole file.
[[nodiscard]] SDayFileEnd ReadDayFileEnd(const std::string& path);

} // namespace ruvo
