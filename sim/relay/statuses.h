// Statuses that the server answers. A relay's own reply code stands in the second byte over the kind 0x11.
#pragma once

#include <cstdint>

namespace ruvo::sim {

using Status = std::int32_t;

inline constexpr Status kGood = 0;
inline constexpr Status kBusy = 7;
inline constexpr Status kNotResponding = 8;
inline constexpr Status kWrongParameters = 10;
inline constexpr Status kCannotOpenPort = 11;
inline constexpr Status kBadPortParameters = 12;
inline constexpr Status kNothingToClose = 13;
inline constexpr Status kDataNotReady = 14;
inline constexpr Status kNoPortOpen = 15;
inline constexpr Status kAborted = 18;
inline constexpr Status kNoDisturbanceRecord = 19;
inline constexpr Status kNoDisturbanceConfiguration = 20;
inline constexpr Status kNoCompressedRecord = 21;
inline constexpr Status kWrongSerialNumber = 22;
inline constexpr Status kSameAddress = 23;
inline constexpr Status kAddressTaken = 24;
inline constexpr Status kNothingToAbort = 28;
inline constexpr Status kAbortInProgress = 29;
inline constexpr Status kNoCall = 48;
inline constexpr Status kNoSuchLine = 50;
inline constexpr Status kLineInUse = 54;
inline constexpr Status kCallTimedOut = 68;

constexpr Status Reply(std::uint8_t code) {
    return code * 256 + 0x11;
}

inline constexpr Status kNoSuchCell = Reply(1);
inline constexpr Status kNoData = Reply(2);
inline constexpr Status kRejected = Reply(4);
inline constexpr Status kNotSettable = Reply(5);
inline constexpr Status kNoProvider = Reply(9); ///< a user's password cannot be checked here
inline constexpr Status kBlocked = Reply(11);
inline constexpr Status kUnknownUser = Reply(14);

} // namespace ruvo::sim
