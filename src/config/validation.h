// The rules that a loaded configuration has to pass.
#pragma once

#include "config/result_code.h"
#include "config/ruvo_config.h"

#include <cstdint>
#include <string_view>

namespace ruvo {

class CIniText;

/// The code of the first rule that fails, or Success. Reads the INI file again for the duplicate test.
[[nodiscard]] EResultCode ValidateConfiguration(const CRuvoConfig& config);

enum class EDuplicateKey : std::uint8_t {
    No = 0,
    Yes = 1,
    TextMissing = 2, ///< the file's text could not be had; nobody knows
};

/// The answer that reading a key, deleting its first occurrence from a copy and reading it again would give:
/// Yes when the first two occurrences stand in the first section of the name and both read as values. One
/// without "=", or with the value "NOT_FOUND", reads as missing. `ini` is null when the file's text could not
/// be read. Costs a look-up, so that a full check stays quick with a thousand entries in every section.
[[nodiscard]] EDuplicateKey HasDuplicateKey(const CIniText* ini, std::string_view section,
                                            std::string_view key);

} // namespace ruvo
