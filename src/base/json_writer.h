// Appends JSON to the caller's string; the only state is whether a comma is due.
#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ruvo {

/// Appends a relay's text (code page 1252) as the inside of a JSON string.
void AppendJsonRelayText(std::string& out, std::string_view cp1252);
/// Appends UTF-8 text as the inside of a JSON string; control characters become \u00NN.
void AppendJsonText(std::string& out, std::string_view utf8);

/// The caller pairs Open and Close, and writes a key before each value of an object.
class CJsonWriter {
public:
    explicit CJsonWriter(std::string& out) : m_out(out) {}

    void Open(char bracket) {
        Separate();
        m_out += bracket;
        m_isFirst = true;
    }
    void Close(char bracket) {
        m_out += bracket;
        m_isFirst = false;
    }
    /// The key is plain ASCII. Nearly all are literals, which are appended together with what is around them.
    template <std::size_t TSize>
    CJsonWriter& Key(const char (&key)[TSize]) {
        constexpr std::size_t kSize = TSize - 1; // without the zero
        std::array<char, kSize + 4> piece{',', '"'};
        std::copy_n(key, kSize, piece.begin() + 2);
        std::copy_n("\":", 2, piece.begin() + 2 + kSize);
        const std::size_t skipped = m_isFirst ? 1 : 0;
        m_out.append(piece.data() + skipped, piece.size() - skipped);
        m_isFirst = true;
        return *this;
    }
    CJsonWriter& Key(std::string_view key) {
        OpenText();
        m_out += key;
        m_out += "\":";
        m_isFirst = true;
        return *this;
    }
    void RelayText(std::string_view cp1252) {
        OpenText();
        AppendJsonRelayText(m_out, cp1252);
        m_out += '"';
    }
    void Text(std::string_view utf8) {
        OpenText();
        AppendJsonText(m_out, utf8);
        m_out += '"';
    }
    void Number(std::uint64_t number) {
        Separate();
        char digits[20];
        m_out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
    }
    void Signed(std::int64_t number) {
        Separate();
        char digits[20];
        m_out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
    }
    void Bool(bool value) { Literal(value ? "true" : "false"); }
    void Null() { Literal("null"); }
    /// A value that is already JSON.
    void Ready(std::string_view json) { Literal(json); }
    /// A string that `write` appends; it must not need escaping.
    template <class TWrite>
    void PlainText(const TWrite& write) {
        OpenText();
        write(m_out);
        m_out += '"';
    }

private:
    void Separate() {
        if (!m_isFirst) {
            m_out += ',';
        }
        m_isFirst = false;
    }
    void OpenText() {
        Separate();
        m_out += '"';
    }
    void Literal(std::string_view json) {
        Separate();
        m_out += json;
    }

    std::string& m_out;
    bool m_isFirst = true;
};

} // namespace ruvo
