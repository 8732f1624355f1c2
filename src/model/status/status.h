// The status word of the comms server, and which statuses a request accepts.
#pragma once

#include "model/status/errors.h"

#include <cstdint>

namespace ruvo {

/// Kinds of status that have a meaning of their own; any other is a status of the comms server itself.
inline constexpr std::uint8_t kStatusSuccess = 0;
inline constexpr std::uint8_t kStatusReplyEight = 1; ///< reply code 8, which counts as success
inline constexpr std::uint8_t kStatusReply = 17;     ///< the device answered with the reply code

/// Status values of the comms server that have a meaning here.
inline constexpr std::uint16_t kStatusBusyOverflow = 2; ///< the device was busy too often
inline constexpr std::uint16_t kStatusNotResponding = 8;
inline constexpr std::uint16_t kStatusNoPortOpen = 15;
inline constexpr std::uint16_t kStatusAborted = 18; ///< the user aborted the request

/// Two bytes: the kind (low) and a code (high). Thrown, as itself, when a request in progress was aborted.
class CStatus {
public:
    constexpr CStatus() = default;
    /// A status as the link returns it; its lower 16 bits count.
    explicit constexpr CStatus(std::uint32_t status) : m_value(static_cast<std::uint16_t>(status)) {}
    /// The status of a device's reply code; 0 is success.
    static CStatus FromReplyCode(std::uint8_t replyCode);

    constexpr std::uint16_t GetValue() const { return m_value; }
    constexpr std::uint8_t GetKind() const { return static_cast<std::uint8_t>(m_value & 0xFFU); }
    constexpr std::uint8_t GetCode() const { return static_cast<std::uint8_t>(m_value >> 8U); }
    /// Number of the status's text in the string table.
    unsigned GetMessageId() const;

    bool operator==(const CStatus&) const = default;

private:
    std::uint16_t m_value = 0;
};

/// Whether a status is acceptable at a level. 0 and levels beyond 7 accept success alone, 1 to 5 and 7 some
/// device replies too, 6 nearly everything. At every level but 6 an aborted status is thrown as a CStatus.
bool IsAcceptable(CStatus status, int level);

/// As IsAcceptable, but a status that is not acceptable is recorded first: a CRelayError goes to the end of
/// the list, and its texts to the trace.
bool CheckStatus(CStatus status, int level, unsigned messageId, unsigned prefixId, std::uint32_t code,
                 CErrorList& errors);

} // namespace ruvo
