// Names of a relay's folder and day file, made from what the relay calls itself.
#pragma once

#include <cstdint>
#include <string>

namespace ruvo {

/// The text of cell 00.row: that of the first value delivered, which must be a text; else empty. Code page
/// 1252.
std::string ReadSystemText(std::uint8_t row);

/// The first four characters of the model, "-", the serial number; blanks at both ends removed.
std::string MakeDeviceFolderName();

/// Model and serial number again, the current UTC date and "DEV.evt".
std::string MakeEventFileName();

/// False when the relay gave no text for its model or its serial number: the two names then lack it.
bool AreNamesWhole(const std::string& folder, const std::string& file);

/// True for a name that stays inside its folder on every system: without separators, colons, control
/// characters and the characters that no path may hold.
bool IsSafeFileName(const std::string& name);

} // namespace ruvo
