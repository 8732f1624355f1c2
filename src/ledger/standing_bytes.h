// Compares what a day file contains from a position on with what is expected there.
#pragma once

#include "platform/files.h"

#include <cstdint>
#include <span>
#include <vector>

namespace ruvo {

enum class EStanding : std::uint8_t {
    All,       ///< anything may follow it
    Beginning, ///< or nothing, and nothing else
    Torn,      ///< each sector holds a beginning of its part and zeros after it, as a power failure leaves it
    Other,
    Unread, ///< the file cannot be read, or is shorter than it was
};

class CStandingBytes {
public:
    /// The file stays the caller's. `length` is how long it is.
    CStandingBytes(CFile& file, std::uint64_t start, std::uint64_t length)
        : m_file(file), m_length(length), m_position(start), m_isOther(length < start) {}

    /// Compares the next of the expected bytes. False when the file cannot be read.
    [[nodiscard]] bool Compare(std::span<const std::uint8_t> expected);
    /// Once all have been compared.
    [[nodiscard]] EStanding Outcome();

private:
    [[nodiscard]] bool Read(std::uint64_t position, std::size_t count);
    [[nodiscard]] bool DoWholeRecordsFollow();

    CFile& m_file;
    std::uint64_t m_length;
    std::uint64_t m_position; ///< of the next byte
    std::vector<std::uint8_t> m_bytes;
    bool m_isOther;
    bool m_isUnread = false;
    bool m_isEqual = true;
    bool m_isInZeros = false; ///< within a sector, after the beginning of its part
};

} // namespace ruvo
