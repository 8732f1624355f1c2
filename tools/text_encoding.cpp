#include "tools/text_encoding.h"

#include "base/code_page.h"
#include "base/text.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

/// First byte of U+0080 to U+00BF in UTF-8; the ones up to U+009F are control characters.
constexpr unsigned char kLatin1Lead = 0xC2;
constexpr unsigned char kLastC1Trail = 0x9F;

unsigned char ByteAt(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

/// The control character that begins there; `size` is how many bytes it takes. False for any other one.
bool IsControlAt(std::string_view utf8, std::size_t at, unsigned& code, std::size_t& size) {
    code = ByteAt(utf8, at);
    size = 1;
    if (code == kLatin1Lead && at + 1 < utf8.size() && ByteAt(utf8, at + 1) <= kLastC1Trail) {
        code = ByteAt(utf8, at + 1);
        size = 2;
        return true;
    }
    return IsControlCharacter(utf8[at]);
}

bool IsPlainInJson(char c) {
    return !IsControlCharacter(c) && static_cast<unsigned char>(c) < 0x80 && c != '"' && c != '\\';
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

/// Length of the well-formed UTF-8 character that begins there; 0 when none does.
std::size_t CharacterSize(std::string_view text, std::size_t at) {
    struct SRow {
        unsigned char first;
        unsigned char last;
        std::size_t size;
        unsigned char
            secondFirst; ///< the second byte's range keeps out surrogates and forms that are too long
        unsigned char secondLast;
    };
    static constexpr std::array kRows{
        SRow{0x00, 0x7F, 1, 0x80, 0xBF}, SRow{0xC2, 0xDF, 2, 0x80, 0xBF}, SRow{0xE0, 0xE0, 3, 0xA0, 0xBF},
        SRow{0xE1, 0xEC, 3, 0x80, 0xBF}, SRow{0xED, 0xED, 3, 0x80, 0x9F}, SRow{0xEE, 0xEF, 3, 0x80, 0xBF},
        SRow{0xF0, 0xF0, 4, 0x90, 0xBF}, SRow{0xF1, 0xF3, 4, 0x80, 0xBF}, SRow{0xF4, 0xF4, 4, 0x80, 0x8F}};
    const unsigned char lead = ByteAt(text, at);
    const auto* const row =
        std::ranges::find_if(kRows, [lead](const SRow& r) { return lead >= r.first && lead <= r.last; });
    if (row == kRows.end() || text.size() - at < row->size) {
        return 0;
    }
    for (std::size_t i = 1; i < row->size; ++i) {
        const unsigned char byte = ByteAt(text, at + i);
        const unsigned char first = i == 1 ? row->secondFirst : 0x80;
        const unsigned char last = i == 1 ? row->secondLast : 0xBF;
        if (byte < first || byte > last) {
            return 0;
        }
    }
    return row->size;
}

bool IsUtf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t size = CharacterSize(text, at);
        if (size == 0) {
            return false;
        }
        at += size;
    }
    return true;
}

} // namespace

void AppendJsonRelayText(std::string& out, std::string_view cp1252) {
    std::size_t done = 0;
    for (std::size_t at = 0; at < cp1252.size(); ++at) {
        if (IsPlainInJson(cp1252[at])) {
            continue;
        }
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
    for (std::size_t at = 0; at < utf8.size();) {
        unsigned code = 0;
        std::size_t size = 0;
        if (IsControlAt(utf8, at, code, size) || code == '"' || code == '\\') {
            out += utf8.substr(done, at - done);
            AppendJsonEscape(out, code);
            done = at + size;
        }
        at += size;
    }
    out += utf8.substr(done);
}

std::string SystemTextToUtf8(std::string_view text) {
    return IsUtf8(text) ? std::string(text) : Cp1252ToUtf8(text);
}

std::string EscapeControls(std::string_view utf8, ELineFeeds lineFeeds) {
    std::string readable;
    readable.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size();) {
        unsigned code = 0;
        std::size_t size = 0;
        const bool isControl = IsControlAt(utf8, at, code, size);
        if (isControl && !(code == '\n' && lineFeeds == ELineFeeds::Keep)) {
            readable += "\\x";
            AppendHexByte(readable, code);
        } else {
            readable += utf8.substr(at, size);
        }
        at += size;
    }
    return readable;
}

std::string ReadableRelayText(std::string_view cp1252, ELineFeeds lineFeeds) {
    return EscapeControls(Cp1252ToUtf8(cp1252), lineFeeds);
}

std::string ReadableRelayLine(std::string_view cp1252) {
    return ReadableRelayText(Trim(cp1252, kBlank));
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
