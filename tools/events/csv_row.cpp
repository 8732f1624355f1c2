#include "tools/events/csv_row.h"

#include "tools/text_encoding.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace ruvo {

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

enum class ECharacter : std::uint8_t { Plain, Quoted, Encoded };

/// What a character needs: nothing, quotes around its field, or first a look at how it is encoded.
constexpr std::array<ECharacter, 256> kCharacters = [] {
    std::array<ECharacter, 256> characters{};
    for (std::size_t c = 0; c != characters.size(); ++c) {
        characters[c] = c == '"' || c == ',' || c == ';' ? ECharacter::Quoted
                        : c >= 0x20 && c < 0x7F          ? ECharacter::Plain
                                                         : ECharacter::Encoded;
    }
    return characters;
}();

ECharacter MostOf(std::string_view text) {
    ECharacter most = ECharacter::Plain;
    for (const char c : text) {
        most = std::max(most, kCharacters[static_cast<unsigned char>(c)]);
    }
    return most;
}

/// A spreadsheet takes a cell that begins so for a formula, which a relay's text must never become.
bool LooksLikeFormula(std::string_view cell) {
    const std::size_t start = cell.find_first_not_of(' ');
    return start != std::string_view::npos &&
           std::string_view("=+-@\t\r").find(cell[start]) != std::string_view::npos;
}

} // namespace

void CCsvRow::Text(std::string_view utf8) {
    const ECharacter most = MostOf(utf8);
    if (most == ECharacter::Encoded) {
        AppendQuoted(EscapeControls(utf8, ELineFeeds::Keep));
    } else {
        most == ECharacter::Plain ? AppendPlain(utf8) : AppendQuoted(utf8);
    }
}

void CCsvRow::RelayText(std::string_view cp1252) {
    if (MostOf(cp1252) == ECharacter::Encoded) {
        AppendQuoted(ReadableRelayText(cp1252, ELineFeeds::Keep));
    } else {
        Text(cp1252);
    }
}

void CCsvRow::AppendPlain(std::string_view text) {
    Separate();
    m_out += m_form.forSpreadsheets && LooksLikeFormula(text) ? "'" : "";
    m_out += text;
}

void CCsvRow::AppendQuoted(std::string_view readable) {
    if (readable.find_first_of(m_form.decimalComma ? "\";\n" : "\",\n") == std::string::npos) {
        AppendPlain(readable);
        return;
    }
    Separate();
    m_out += m_form.forSpreadsheets && LooksLikeFormula(readable) ? "\"'" : "\"";
    for (std::size_t quote = readable.find('"'); quote != std::string_view::npos;
         quote = readable.find('"')) {
        m_out += readable.substr(0, quote + 1);
        m_out += '"';
        readable.remove_prefix(quote + 1);
    }
    m_out += readable;
    m_out += '"';
}

void CCsvRow::Decimal(std::string_view digits) {
    Separate();
    const std::size_t point = m_form.decimalComma ? digits.find('.') : std::string_view::npos;
    m_out += digits.substr(0, point);
    if (point != std::string_view::npos) {
        m_out += ',';
        m_out += digits.substr(point + 1);
    }
}

void CCsvRow::Empty(int count) {
    for (; count > 0; --count) {
        Separate();
    }
}

void AppendCsvHead(std::string& out, std::string_view names, const SCsvForm& form) {
    out += form.forSpreadsheets ? kUtf8Mark : "";
    const std::size_t start = out.size();
    out += names;
    if (form.decimalComma) {
        std::replace(out.begin() + static_cast<std::ptrdiff_t>(start), out.end(), ',', ';');
    }
    out += "\r\n";
}

} // namespace ruvo
