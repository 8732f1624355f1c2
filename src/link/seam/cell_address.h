// Cell addresses as the link's requests carry them: 16 bits, column in the high byte, row in the low byte.
#pragma once

#include <cstdint>

namespace ruvo {

using CellAddress = std::uint16_t;

constexpr CellAddress MakeCellAddress(std::uint8_t column, std::uint8_t row) {
    return static_cast<CellAddress>((column << 8) | row);
}
constexpr std::uint8_t ColumnOf(CellAddress cell) {
    return static_cast<std::uint8_t>(cell >> 8);
}
constexpr std::uint8_t RowOf(CellAddress cell) {
    return static_cast<std::uint8_t>(cell & 0xFF);
}

/// The cells that the link and the run know by address.
namespace cells {
inline constexpr CellAddress kPassword = 0x0002; ///< password of the plain generation
inline constexpr CellAddress kDescription = 0x0004;
inline constexpr CellAddress kPlant = 0x0005;
inline constexpr CellAddress kModel = 0x0006;
inline constexpr CellAddress kSerialNumber = 0x0008;
inline constexpr CellAddress kBreaker = 0x0010;
inline constexpr CellAddress kSoftware = 0x0011;
inline constexpr CellAddress kSecondIdentification = 0x00D1;
inline constexpr CellAddress kSecurityVersion = 0x00DF;    ///< access-control generation
inline constexpr CellAddress kSecurityPassword = 0x00E1;   ///< password of the cyber-security generations
inline constexpr CellAddress kSalt = 0x00E5;               ///< salt of a hashed password
inline constexpr CellAddress kUserName = 0x00F1;           ///< who logs in
inline constexpr CellAddress kUserCount = 0x00F2;          ///< number of users
inline constexpr CellAddress kSecondEditionProbe = 0x00F4; ///< absent where passwords may be longer
inline constexpr CellAddress kPasswordGuard = 0xBF03;      ///< cleared while a password is entered
inline constexpr CellAddress kEncryptionKey = 0xBF10;
inline constexpr CellAddress kSecurityColumn = 0xBF12; ///< number of the cyber-security column
inline constexpr CellAddress kLoginProbe = 0xBF15;     ///< written to make the relay ask for its password
inline constexpr std::uint8_t kDisplayTextRow = 0x01;  ///< rows of the cyber-security column
inline constexpr std::uint8_t kAttemptsLeftRow = 0x11;
inline constexpr std::uint8_t kBlockingTimeRow = 0x12;
inline constexpr std::uint8_t kFirstUserRow = 0x21; ///< name of the first user; the others follow
inline constexpr std::uint32_t kMaxUsers = 0xFF - kFirstUserRow + 1;
} // namespace cells

} // namespace ruvo
