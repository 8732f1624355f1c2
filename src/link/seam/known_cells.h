// The cells that mean the same in every relay of the family. The client and the simulated relays know them
// from here alone.
#pragma once

#include "link/seam/cell_address.h"

#include <cstddef>
#include <cstdint>

namespace ruvo {

namespace cells {
inline constexpr CellAddress kPassword = 0x0002; ///< password of the plain generation; a reset logs out
inline constexpr CellAddress kDescription = 0x0004;
inline constexpr CellAddress kPlant = 0x0005;
inline constexpr CellAddress kModel = 0x0006;
inline constexpr CellAddress kSerialNumber = 0x0008;
inline constexpr CellAddress kBreaker = 0x0010;
inline constexpr CellAddress kSoftware = 0x0011;
inline constexpr CellAddress kSecondIdentification = 0x00D1;
inline constexpr CellAddress kSecurityVersion = 0x00DF;    ///< generation of the access control
inline constexpr CellAddress kSecurityPassword = 0x00E1;   ///< password of the cyber-security generations
inline constexpr CellAddress kSalt = 0x00E5;               ///< salt of a hashed password
inline constexpr CellAddress kUserName = 0x00F1;           ///< who logs in
inline constexpr CellAddress kUserCount = 0x00F2;          ///< number of users
inline constexpr CellAddress kSecondEditionProbe = 0x00F4; ///< absent where passwords may be longer
inline constexpr CellAddress kPasswordGuard = 0xBF03;      ///< cleared while a password is entered
inline constexpr CellAddress kEncryptionKey = 0xBF10;
inline constexpr CellAddress kSecurityColumn = 0xBF12; ///< number of the cyber-security column
inline constexpr CellAddress kLoginProbe = 0xBF15;     ///< written to make the relay ask for its password
} // namespace cells

/// Rows with a fixed meaning in a column whose number the relay reports.
namespace rows {
inline constexpr std::uint8_t kSelectRecord = 0x01; ///< of a record column: selects the record when written
// The others are of the cyber-security column.
inline constexpr std::uint8_t kDisplayText = 0x01;
inline constexpr std::uint8_t kAttemptsLeft = 0x11;
inline constexpr std::uint8_t kBlockingTime = 0x12;
inline constexpr std::uint8_t kFirstUser = 0x21; ///< name of the first user; the others follow
} // namespace rows

inline constexpr std::size_t kMaxUsers = 0xFF - rows::kFirstUser + 1; ///< as many as the column has rows left
inline constexpr std::size_t kUserNameLength = 16;                    ///< characters, filled up with blanks

} // namespace ruvo
