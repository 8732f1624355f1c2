// Relay values as a substation file writes them.
#pragma once

#include "link/recording/recorded_value.h"
#include "link/seam/cell_address.h"

#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

/// A text in quotation marks.
[[nodiscard]] std::string TomlText(std::string_view utf8);
/// "CC.RR".
[[nodiscard]] std::string TomlCell(CellAddress cell);
/// "CC".
[[nodiscard]] std::string TomlColumn(std::uint8_t column);
/// A tagged value, or what came in its place.
[[nodiscard]] std::string TomlValue(const SRecordedValue& value);
/// An array of them.
[[nodiscard]] std::string TomlValues(const SRecordedValue& list);
/// Members of a table: a value of that type, as members without braces.
[[nodiscard]] std::string TomlMembers(std::uint8_t type, std::span<const std::uint8_t> data);
/// The members that say the same as the three outputs of reading a value; empty when none do.
[[nodiscard]] std::string TomlPacked(const std::vector<SRecordedValue>& packed);

} // namespace ruvo
