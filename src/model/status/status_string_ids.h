// Numbers of the string-table texts for statuses of the comms server, as far as every user of them agrees.
#pragma once

#include <cstdint>

namespace ruvo {

inline constexpr unsigned kStringUnspecifiedReply = 138;
inline constexpr unsigned kStringUndefinedStatus = 209;

/// The text of device reply codes 0 to 9; "unspecified" for any other.
unsigned ReplyStringId(std::uint32_t replyCode);
/// The text of statuses 0 to 71 and 250 to 253; 0 for any other.
unsigned CommsStatusStringId(std::uint32_t status);

} // namespace ruvo
