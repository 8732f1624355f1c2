#include "base/json_writer.h"

#include "base/code_page.h"
#include "base/text.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

unsigned char ByteAt(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

/// By character: whether it cannot stand in a JSON string as it is, or is none of ASCII.
constexpr std::array<bool, 256> kSpecials = [] {
    std::array<bool, 256> specials{};
    for (std::size_t code = 0; code < specials.size(); ++code) {
        const char c = static_cast<char>(code);
        specials[code] = IsControlCharacter(c) || code >= 0x80 || c == '"' || c == '\\';
    }
    return specials;
}();

/// Where the next such character is, or the end.
std::size_t NextSpecial(std::string_view text, std::size_t at) {
    const auto* const found = std::find_if(text.data() + at, text.data() + text.size(),
                                           [](char c) { return kSpecials[static_cast<unsigned char>(c)]; });
    return static_cast<std::size_t>(found - text.data());
}

void AppendJsonEscape(std::string& out, unsigned code) {
    if (code == '"' || code == '\\') {
        out += '\\';
        out += static_cast<char>(code);
        return;
    }
    out += "\\u00";
    AppendHexByte(out, code);
}

} // namespace

void AppendJsonRelayText(std::string& out, std::string_view cp1252) {
    std::size_t done = 0;
    for (std::size_t at = NextSpecial(cp1252, 0); at < cp1252.size(); at = NextSpecial(cp1252, done)) {
        out += cp1252.substr(done, at - done);
        done = at + 1;
        if (ByteAt(cp1252, at) >= 0x80) {
            out += Cp1252ToUtf8(cp1252.substr(at, 1));
        } else {
            AppendJsonEscape(out, ByteAt(cp1252, at));
        }
    }
    out += cp1252.substr(done);
}

void AppendJsonText(std::string& out, std::string_view utf8) {
    std::size_t done = 0;
    std::size_t size = 0;
    for (std::size_t at = NextSpecial(utf8, 0); at < utf8.size(); at = NextSpecial(utf8, at + size)) {
        unsigned code = 0;
        if (IsUtf8ControlAt(utf8, at, code, size) || code == '"' || code == '\\') {
            out += utf8.substr(done, at - done);
            AppendJsonEscape(out, code);
            done = at + size;
        }
    }
    out += utf8.substr(done);
}

} // namespace ruvo
