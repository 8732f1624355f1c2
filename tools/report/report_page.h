// The page around the data: one file that needs nothing else and runs nothing but its own script.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace ruvo {

/// The page before and after its data, compiled in from the files of tools/report/page. The data is in a
/// script element of a type that no browser runs.
[[nodiscard]] std::span<const std::string_view> PageBeforeData();
[[nodiscard]] std::span<const std::string_view> PageAfterData();

/// Appends JSON as the text of a script element: nothing in it can end the element, begin another, or end a
/// line of script. It stays the same JSON.
void AppendScriptJson(std::string& out, std::string_view json);

/// The whole page.
[[nodiscard]] std::string MakePage(std::string_view json);

} // namespace ruvo
