// Words in the language of the documentation.
#pragma once

#include <string>
#include <string_view>

namespace ruvo {

/// Plain words, with a "\\" before what the language would take for a mark.
inline std::string Escaped(std::string_view text) {
    std::string out;
    for (const char c : text) {
        if (std::string_view("\\`*_<>[]#|~").find(c) != std::string_view::npos) {
            out += '\\';
        }
        out += c;
    }
    return out;
}

} // namespace ruvo
