// A recording as it is read. Its bytes may come from anywhere.
#pragma once

#include "link/recording/recorded_value.h"
#include "link/seam/operations.h"

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace ruvo {

/// One entry. Its values borrow the bytes that were read.
struct SRecordingEntry {
    ERecordingEntry kind = ERecordingEntry::End;
    std::uint64_t number = 0; ///< of a call or its reply; of a gap, how many entries were left out
    std::uint64_t time = 0;   ///< microseconds since the recording began
    std::uint64_t thread = 0;
    const SOperationRow* operation = nullptr; ///< of a call, and of the reply to one that is known
    std::uint8_t slot = 0;                    ///< of an event, of the sink
    bool isThrough = false;                   ///< of a reply
    SRecordedValue status;                    ///< of a reply that got through
    std::vector<SRecordedValue> values;
    ERecordingEnd end = ERecordingEnd::Closed;
};

/// Whether the bytes begin as a recording does.
[[nodiscard]] bool IsRecording(std::span<const std::uint8_t> bytes);

enum class ERecordingRead : std::uint8_t {
    Read,
    Unreadable,  ///< no regular file, or one that is longer than a recording gets
    NoRecording, ///< it begins otherwise, and is not read on
};
/// The bytes of a recording's file.
[[nodiscard]] ERecordingRead ReadRecordingFile(const std::string& path, Variant::Bytes& bytes);

/// Reads entry by entry, as far as the bytes make sense. Borrows them.
class CRecordingReader {
public:
    explicit CRecordingReader(std::span<const std::uint8_t> bytes);

    /// Seconds since 1970, UTC.
    [[nodiscard]] std::int64_t Begin() const { return m_begin; }
    /// The next entry; false at the end, and where the bytes are no entry.
    [[nodiscard]] bool Next(SRecordingEntry& entry);
    /// Why the bytes are no recording, or from where on they are none; else empty.
    [[nodiscard]] const std::string& Error() const { return m_error; }
    /// Whether the End has been read. Without it the program was ended, or still runs.
    [[nodiscard]] bool IsWhole() const { return m_isWhole; }

private:
    void TakeHead();
    bool TakeEntry(std::span<const std::uint8_t> bytes, SRecordingEntry& entry);
    bool TakeBody(CByteCursor& cursor, SRecordingEntry& entry);
    bool TakeCall(CByteCursor& cursor, SRecordingEntry& entry);
    bool TakeReply(CByteCursor& cursor, SRecordingEntry& entry);

    std::size_t m_size;
    CByteCursor m_cursor;
    std::int64_t m_begin = 0;
    std::string m_error;
    bool m_isWhole = false;
    std::map<std::uint64_t, const SOperationRow*> m_open; ///< calls whose reply has not come
};

} // namespace ruvo
