// Output text: UTF-8, with control characters escaped for terminals.
#pragma once

#include "base/code_page.h" // for SystemTextToUtf8

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ruvo {

/// UTF-8 with control characters as "\xNN"; line feeds are kept on request.
enum class ELineFeeds : bool { Escape, Keep };
std::string EscapeControls(std::string_view utf8, ELineFeeds lineFeeds = ELineFeeds::Escape);
/// The same for a relay's text.
std::string ReadableRelayText(std::string_view cp1252, ELineFeeds lineFeeds = ELineFeeds::Escape);

/// The same on one line, without surrounding blanks.
std::string ReadableRelayLine(std::string_view cp1252);

/// As text of HTML and XML, between tags and within quotes.
std::string EscapeMarkup(std::string_view utf8);

/// The width of the text in columns: its number of characters.
std::size_t ColumnsOf(std::string_view utf8);

/// True when `part` occurs in `text`, ASCII letters compared without case.
bool ContainsText(std::string_view text, std::string_view part);

} // namespace ruvo
