// Whether what was printed is in the form that it promises. Written anew here: a check that shares its code
// with what it checks finds little.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ruvo::fuzz {

/// Well-formed UTF-8, by decoding: no surrogates, no form longer than needed, nothing beyond U+10FFFF.
inline bool IsUtf8Text(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const auto lead = static_cast<unsigned char>(text[at]);
        const std::size_t more = lead < 0x80 ? 0 : lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 9;
        if (more > 3 || lead >= 0xF8 || text.size() - at <= more) {
            return false;
        }
        std::uint32_t code = more == 0 ? lead : lead & (0x3FU >> more);
        for (std::size_t i = 1; i <= more; ++i) {
            const auto trail = static_cast<unsigned char>(text[at + i]);
            if ((trail & 0xC0U) != 0x80) {
                return false;
            }
            code = code << 6U | (trail & 0x3FU);
        }
        const std::uint32_t least = more == 0 ? 0 : more == 1 ? 0x80 : more == 2 ? 0x800 : 0x10000;
        if (code < least || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
            return false;
        }
        at += more + 1;
    }
    return true;
}

/// No C0 control character but CR and LF, no DEL, and none of U+0080 to U+009F.
inline bool HasNoControls(std::string_view utf8) {
    for (std::size_t at = 0; at < utf8.size(); ++at) {
        const auto byte = static_cast<unsigned char>(utf8[at]);
        const bool isC1 =
            byte == 0xC2 && at + 1 < utf8.size() && static_cast<unsigned char>(utf8[at + 1]) < 0xA0;
        if (isC1 || byte == 0x7F || (byte < 0x20 && byte != '\n' && byte != '\r')) {
            return false;
        }
    }
    return true;
}

/// Fields of the one CSV row that the text is, CR LF at its end; 0 when it is no row by RFC 4180.
inline std::size_t CsvFieldCount(std::string_view row) {
    std::size_t fields = 1;
    bool isQuoted = false;
    for (std::size_t at = 0; at < row.size(); ++at) {
        if (row[at] == '"') {
            const bool mayOpen = at == 0 || row[at - 1] == ',' || row[at - 1] == '"';
            if (!isQuoted && !mayOpen) {
                return 0;
            }
            isQuoted = !isQuoted;
        } else if (!isQuoted && row[at] == ',') {
            ++fields;
        } else if (!isQuoted && (row[at] == '\r' || row[at] == '\n')) {
            return row.substr(at) == "\r\n" ? fields : 0;
        }
    }
    return 0;
}

} // namespace ruvo::fuzz
