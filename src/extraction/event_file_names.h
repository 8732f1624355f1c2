// Names of a relay's folder and day file, made from what the relay calls itself.
#pragma once

#include <cstdint>
#include <string>

namespace ruvo {

/// The text of cell 00.row: that of the first value delivered, which must be a text; else empty. Code page
/// 1252.
std::string ReadSystemText(std::uint8_t row);

/// The first four characters of the model, "-", the serial number; blanks at both ends removed. `isWhole`,
/// when given, becomes false where the relay gave no text for one of the two.
std::string MakeDeviceFolderName(bool* isWhole = nullptr);

/// Model and serial number again, the current UTC date and "DEV.evt"; `isWhole` likewise.
std::string MakeEventFileName(bool* isWhole = nullptr);

/// True for a name that stays inside its folder on every system: without separators, colons, control
/// characters and the characters that no path may hold.
bool IsSafeFileName(const std::string& name);

} // namespace ruvo
