// Relay keys that occur more than once in a section. Reading shows only the first.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace ruvo {

class CIniText;

enum class EDuplicateKey : std::uint8_t {
    No = 0,
    Yes = 1,
    TextMissing = 2, ///< the file's text could not be read
};

/// The answer that reading a key, deleting its first occurrence from a copy and reading it again would give:
/// Yes when the first two occurrences are in the first section of the name and both read as values. One
/// without "=", or with the value "NOT_FOUND", reads as missing. `ini` is null when the file's text could not
/// be read. Costs a look-up, so that a full check stays quick with a thousand entries in every section.
[[nodiscard]] EDuplicateKey HasDuplicateKey(const CIniText* ini, std::string_view section,
                                            std::string_view key);

/// The sections of relays and passwords in which a relay key is a duplicate.
[[nodiscard]] std::vector<std::string_view> SectionsWithDuplicates(const CIniText* ini);

} // namespace ruvo
