#include "base/json_writer.h"

#include "base/code_page.h"
#include "base/text.h"

namespace ruvo {

namespace {

unsigned char ByteAt(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
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
        if (IsPlainInJson(utf8[at])) {
            ++at;
            continue;
        }
        unsigned code = 0;
        std::size_t size = 0;
        if (IsUtf8ControlAt(utf8, at, code, size) || code == '"' || code == '\\') {
            out += utf8.substr(done, at - done);
            AppendJsonEscape(out, code);
            done = at + size;
        }
        at += size;
    }
    out += utf8.substr(done);
}

} // namespace ruvo
