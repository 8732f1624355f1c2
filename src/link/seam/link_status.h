// Statuses of the comms server's commands: 32 bits, 0 is success. The client, the simulated server and all
// who look at a status use these names. Statuses that nothing here makes or looks at pass through unnamed.
#pragma once

#include <cstdint>

namespace ruvo {

using LinkStatus = std::uint32_t;

inline constexpr LinkStatus kLinkGood = 0;
inline constexpr LinkStatus kLinkBusy = 7;               ///< another command is in progress
inline constexpr LinkStatus kLinkNotResponding = 8;      ///< device not connected or not responding
inline constexpr LinkStatus kLinkWrongParameters = 10;   ///< the command's inputs make no sense
inline constexpr LinkStatus kLinkCannotOpenPort = 11;    ///< no such port, or another program uses it
inline constexpr LinkStatus kLinkBadPortParameters = 12; ///< the port does not take its parameters
inline constexpr LinkStatus kLinkNothingToClose = 13;    ///< close, with no port open
inline constexpr LinkStatus kLinkDataNotReady = 14;      ///< fetch, with nothing started or not complete
inline constexpr LinkStatus kLinkNoPortOpen = 15;
inline constexpr LinkStatus kLinkAborted = 18; ///< aborted by the user, or a password declined
inline constexpr LinkStatus kLinkNoDisturbanceRecord = 19;
inline constexpr LinkStatus kLinkNoDisturbanceConfiguration = 20;
inline constexpr LinkStatus kLinkNoCompressedRecord = 21;
inline constexpr LinkStatus kLinkWrongSerialNumber = 22;
inline constexpr LinkStatus kLinkSameAddress = 23;  ///< the new device address is the old one
inline constexpr LinkStatus kLinkAddressTaken = 24; ///< another device has the new address
inline constexpr LinkStatus kLinkNothingToAbort = 28;
inline constexpr LinkStatus kLinkAbortInProgress = 29;
inline constexpr LinkStatus kLinkLineDisconnected = 46; ///< the modem is hanging up
inline constexpr LinkStatus kLinkNoCall = 48;           ///< no call in progress
inline constexpr LinkStatus kLinkNoSuchLine = 50;       ///< wrong line address
inline constexpr LinkStatus kLinkLineInUse = 54;
inline constexpr LinkStatus kLinkCallTimedOut = 68;
inline constexpr LinkStatus kLinkDisobeysProtocol = 251; ///< event data that makes no sense
inline constexpr LinkStatus kLinkBadReply = 254;         ///< a reply that could not be unpacked
inline constexpr LinkStatus kLinkComFailure = 255;       ///< the call did not reach the server

/// Low byte of a status that carries the reply code of the device in its second byte.
inline constexpr LinkStatus kLinkReply = 0x11;

/// The status that a device's reply code travels as.
constexpr LinkStatus ReplyStatus(std::uint8_t replyCode) {
    return (static_cast<LinkStatus>(replyCode) << 8U) | kLinkReply;
}
/// Whether a status carries a device's reply.
constexpr bool IsReply(LinkStatus status) {
    return (status & 0xFFU) == kLinkReply;
}
/// The second byte of any status: the reply code of one that carries a reply, 0 for success.
constexpr std::uint8_t ReplyCodeOf(LinkStatus status) {
    return static_cast<std::uint8_t>((status >> 8U) & 0xFFU);
}

inline constexpr LinkStatus kReplyNoSuchCell = ReplyStatus(1);
inline constexpr LinkStatus kReplyNoData = ReplyStatus(2);
inline constexpr LinkStatus kReplyRejected = ReplyStatus(4);
inline constexpr LinkStatus kReplyNotSettable = ReplyStatus(5);
inline constexpr LinkStatus kReplyPasswordNeeded = ReplyStatus(6);
inline constexpr LinkStatus kReplyCommandRejected = ReplyStatus(9);
inline constexpr LinkStatus kReplyBlocked = ReplyStatus(11);
inline constexpr LinkStatus kReplyPasswordNeededToo = ReplyStatus(13);
inline constexpr LinkStatus kReplyUnknownUser = ReplyStatus(14);

/// 0 and 1 both count as success of a write.
constexpr bool IsWriteGood(LinkStatus status) {
    return status <= 1;
}
/// The device requires a password before it answers.
constexpr bool IsPasswordRequest(LinkStatus status) {
    return status == kReplyPasswordNeeded || status == kReplyPasswordNeededToo;
}

/// Bit of the device's own status byte, which GetDeviceStatus reads: events wait to be taken.
inline constexpr std::uint8_t kEventsPending = 0x20;

} // namespace ruvo
