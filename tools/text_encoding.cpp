#include "tools/text_encoding.h"

#include "base/code_page.h"
#include "base/text.h"

#include <algorithm>
#include <array>

namespace ruvo {

std::string EscapeControls(std::string_view utf8, ELineFeeds lineFeeds) {
    std::string readable;
    readable.reserve(utf8.size());
    std::size_t done = 0;
    for (std::size_t at = 0; at < utf8.size();) {
        unsigned code = 0;
        std::size_t size = 0;
        const bool isControl = IsUtf8ControlAt(utf8, at, code, size);
        if (isControl && !(code == '\n' && lineFeeds == ELineFeeds::Keep)) {
            readable += utf8.substr(done, at - done);
            readable += "\\x";
            AppendHexByte(readable, code);
            done = at + size;
        }
        at += size;
    }
    readable += utf8.substr(done);
    return readable;
}

std::string ReadableRelayText(std::string_view cp1252, ELineFeeds lineFeeds) {
    return EscapeControls(Cp1252ToUtf8(cp1252), lineFeeds);
}

std::string ReadableRelayLine(std::string_view cp1252) {
    return ReadableRelayText(Trim(cp1252, kBlank));
}

std::string EscapeMarkup(std::string_view utf8) {
    std::string out;
    for (const char c : utf8) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        default:
            out += c;
        }
    }
    return out;
}

std::size_t ColumnsOf(std::string_view utf8) {
    return static_cast<std::size_t>(
        std::ranges::count_if(utf8, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

bool ContainsText(std::string_view text, std::string_view part) {
    const auto equal = [](char a, char b) { return ToLower(a) == ToLower(b); };
    return std::search(text.begin(), text.end(), part.begin(), part.end(), equal) != text.end() ||
           part.empty();
}

} // namespace ruvo
