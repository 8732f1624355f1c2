// The relay's 8-bit character set. Below 0x7F it is ASCII; from there on a pair of tables leads to the
// program's code page and back, and what has no partner becomes ".".
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace ruvo {

inline constexpr unsigned kDefaultCodePage = 1252;

/// Chooses the tables for the whole process: 1252 (the initial choice) or 1251; any other code page has no
/// characters from 0x7F upwards. To be set before texts are decoded, not meanwhile.
void SetDeviceCodePage(unsigned codePage);

/// Device bytes to text. A byte that follows a byte 0x10 is a display column and stays unchanged.
std::string DecodeDeviceBytes(std::span<const std::uint8_t> bytes);
/// The same for device bytes held as a text.
std::string DecodeDeviceText(std::string_view text);
/// Text to device bytes, every character through the table.
std::string EncodeDeviceText(std::string_view text);

char DecodeDeviceChar(char device);
char EncodeDeviceChar(char character);

/// Whether the character's device code lies in [low, high]. One without a device character does not.
bool IsDeviceCharInRange(char character, std::uint32_t low, std::uint32_t high);
/// The character, or the one of the nearest end when its device code lies outside [low, high]; one without a
/// device character counts as ".".
char ClampDeviceChar(char character, std::uint32_t low, std::uint32_t high);

} // namespace ruvo
