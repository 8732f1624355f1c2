// A row of comma-separated values by RFC 4180.
#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace ruvo {

/// For what the values are read.
struct SCsvForm {
    /// An apostrophe precedes a text that a spreadsheet would take for a formula, and the file begins with
    /// the mark of UTF-8.
    bool forSpreadsheets = false;
    /// "1,5" and ";" between the fields, as spreadsheets of many countries expect it.
    bool decimalComma = false;
};

/// Appends fields in order to the caller's string. A relay's text is readable: control characters but line
/// feeds are escaped.
class CCsvRow {
public:
    CCsvRow(std::string& out, const SCsvForm& form) : m_out(out), m_form(form) {}

    void Text(std::string_view utf8);
    void RelayText(std::string_view cp1252);
    void Number(std::uint64_t number) { PutNumber(number); }
    void Signed(std::int64_t number) { PutNumber(number); }
    /// A number as digits with "." before the fraction, or nothing.
    void Decimal(std::string_view digits);
    void Bool(bool value) { Ready(value ? "true" : "false"); }
    void Empty(int count = 1);
    /// A text that needs neither quotes nor escapes.
    void Ready(std::string_view text) {
        Separate();
        m_out += text;
    }
    /// What `write` appends; it must need neither quotes nor escapes.
    template <class TWrite>
    void Plain(const TWrite& write) {
        Separate();
        write(m_out);
    }
    void End() { m_out += "\r\n"; }

private:
    void Separate() {
        if (!m_isFirst) {
            m_out += m_form.decimalComma ? ';' : ',';
        }
        m_isFirst = false;
    }
    template <class TNumber>
    void PutNumber(TNumber number) {
        Separate();
        char digits[20];
        m_out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
    }
    void AppendPlain(std::string_view text);
    /// With quotes where the text needs them.
    void AppendQuoted(std::string_view readable);

    std::string& m_out;
    const SCsvForm& m_form;
    bool m_isFirst = true;
};

/// The line of the columns' names, "a,b" or "a;b", after the mark of UTF-8 where a spreadsheet wants it.
void AppendCsvHead(std::string& out, std::string_view names, const SCsvForm& form);

} // namespace ruvo
