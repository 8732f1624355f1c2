// Type codes of data values. They are sent on the wire and stored in day files: never renumber.
#pragma once

#include <cstdint>

namespace ruvo {

inline constexpr std::uint32_t kTypeText = 0x18;
inline constexpr std::uint32_t kTypePassword = 0x1C;
inline constexpr std::uint32_t kTypeFlags = 0x20;
inline constexpr std::uint32_t kTypeUint = 0x24;
inline constexpr std::uint32_t kTypeInt = 0x28;
inline constexpr std::uint32_t kTypeShortNumber = 0x2C;
inline constexpr std::uint32_t kTypeLongNumber = 0x30;
inline constexpr std::uint32_t kTypeFloat = 0x34;
inline constexpr std::uint32_t kTypeTimer = 0x38;
inline constexpr std::uint32_t kTypeIEC870 = 0x3C;
inline constexpr std::uint32_t kTypeMenu = 0x44;
inline constexpr std::uint32_t kTypeReply = 0x48;
inline constexpr std::uint32_t kTypeStringIndex = 0x50;
inline constexpr std::uint32_t kTypeNoData = 0x58; ///< taken from the wire only; the value says kTypeInvalid
inline constexpr std::uint32_t kTypeHex = 0x64;
inline constexpr std::uint32_t kTypeModem = 0x68;
inline constexpr std::uint32_t kTypeEncryptedPassword = 0x6C;
inline constexpr std::uint32_t kTypeInvalid = 0xFF;

} // namespace ruvo
