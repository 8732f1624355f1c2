// Cells with a fixed meaning for every relay of the family.
#pragma once

#include "sim/file/substation.h"

namespace ruvo::sim {

inline constexpr std::size_t kUserNameLength = 16;  ///< characters, padded with blanks
inline constexpr std::uint8_t kSelectionRow = 0x01; ///< row of a record column that selects the record

namespace cells {
inline constexpr CellAddress kPassword = 0x0002; ///< password of the plain generation; a reset logs out
inline constexpr CellAddress kDescription = 0x0004;
inline constexpr CellAddress kPlant = 0x0005;
inline constexpr CellAddress kModel = 0x0006;
inline constexpr CellAddress kSerialNumber = 0x0008;
inline constexpr CellAddress kSoftware = 0x0011;
inline constexpr CellAddress kVersion = 0x00DF; ///< generation of the access control
inline constexpr CellAddress kSecurePassword = 0x00E1;
inline constexpr CellAddress kSalt = 0x00E5;
inline constexpr CellAddress kUserName = 0x00F1;
inline constexpr CellAddress kUserCount = 0x00F2;
inline constexpr CellAddress kSecondEditionProbe = 0x00F4;
inline constexpr CellAddress kKey = 0xBF10;
inline constexpr CellAddress kSecurityColumn = 0xBF12;
inline constexpr CellAddress kLoginProbe = 0xBF15;
} // namespace cells

/// Rows of the security column.
namespace rows {
inline constexpr std::uint8_t kDisplayText = 0x01;
inline constexpr std::uint8_t kAttemptsLeft = 0x11;
inline constexpr std::uint8_t kBlockingTime = 0x12;
inline constexpr std::uint8_t kFirstUser = 0x21;
} // namespace rows

} // namespace ruvo::sim
