// Reading the INI file into the configuration.
#pragma once

#include "config/ini_keys.h"
#include "config/ruvo_config.h"

#include <cstddef>
#include <cstdint>
#include <set>
#include <span>
#include <string>
#include <string_view>

namespace ruvo {

class CProfileReader;

/// What is read of a text; the rest is cut.
inline constexpr std::size_t kLongestText = 300;

/// Relay keys run from "RV000" to "RV999".
inline constexpr int kRelayKeyCount = 1000;

/// The key text of a number from 0 to 999: "RV007".
std::string RelayKey(int number);
/// True for "RV" and three digits, in any letter case.
[[nodiscard]] bool IsRelayKey(std::string_view key);
/// The relay keys among names of keys, each once, as RelayKey writes it and in the order of its number.
[[nodiscard]] std::set<std::string> RelayKeys(std::span<const std::string> names);

/// Reads the INI file at a full path into `config`. False only when the file has no section (missing,
/// unreadable or empty); the configuration then holds the path alone. Relative paths in the file count from
/// the current folder.
bool LoadConfiguration(const std::string& iniPath, CRuvoConfig& config);

/// The value of an integer key: `defaultValue` when the text is absent or empty, `notANumber` when it is no
/// number.
std::int32_t ReadIntKey(const CProfileReader& reader, std::string_view section, std::string_view key,
                        std::int32_t defaultValue, std::int32_t notANumber);

/// True for decimal digits only; a first "0" before further digits passes only with `allowLeadingZero`.
bool IsNumericText(std::string_view text, bool allowLeadingZero);

/// The value of a text that passed IsNumericText; numbers above 2147483647 count as 2147483647.
std::int32_t NumericValue(std::string_view text);

} // namespace ruvo
