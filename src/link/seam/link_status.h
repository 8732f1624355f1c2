// Status codes of the link: 32 bits, 0 is success. The server's own codes pass through; these are the ones
// that the client makes or looks at itself.
#pragma once

#include <cstdint>

namespace ruvo {

using LinkStatus = std::uint32_t;

inline constexpr LinkStatus kLinkGood = 0;
inline constexpr LinkStatus kLinkNotResponding = 8;      ///< device not connected or not responding
inline constexpr LinkStatus kLinkAborted = 18;           ///< aborted by the user, or a password declined
inline constexpr LinkStatus kLinkLineDisconnected = 46;  ///< the modem is hanging up
inline constexpr LinkStatus kLinkDisobeysProtocol = 251; ///< event data that makes no sense
inline constexpr LinkStatus kLinkBadReply = 254;         ///< a reply that could not be unpacked
inline constexpr LinkStatus kLinkComFailure = 255;       ///< the call did not reach the server

/// The status of a device reply code: low byte 0x11, the code in the second byte.
constexpr LinkStatus ReplyStatus(std::uint8_t replyCode) {
    return (static_cast<LinkStatus>(replyCode) << 8U) | 0x11U;
}
inline constexpr LinkStatus kReplyNoSuchCell = ReplyStatus(1);
inline constexpr LinkStatus kReplyRejected = ReplyStatus(4);
inline constexpr LinkStatus kReplyNotSettable = ReplyStatus(5);
inline constexpr LinkStatus kReplyPasswordNeeded = ReplyStatus(6);
inline constexpr LinkStatus kReplyBlocked = ReplyStatus(11);
inline constexpr LinkStatus kReplyPasswordNeededToo = ReplyStatus(13);
inline constexpr LinkStatus kReplyUnknownUser = ReplyStatus(14);

/// 0 and 1 both count as success of a write.
constexpr bool IsWriteGood(LinkStatus status) {
    return status <= 1;
}
/// The device wants a password before it answers.
constexpr bool IsPasswordRequest(LinkStatus status) {
    return status == kReplyPasswordNeeded || status == kReplyPasswordNeededToo;
}

} // namespace ruvo
