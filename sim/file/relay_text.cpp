#include "sim/file/relay_text.h"

#include "base/code_page.h"
#include "base/text.h"
#include "model/values/character_set.h"

#include <map>

namespace ruvo::sim {
namespace {

// The platform knows the way from the code page to UTF-8; this is the way back, so that one table tells both.
const std::map<std::string, char>& CodePageCharacters() {
    static const std::map<std::string, char> kCharacters = [] {
        std::map<std::string, char> characters;
        constexpr int kCodes = 256;
        for (int code = 0; code < kCodes; ++code) {
            const char character = static_cast<char>(code);
            characters.emplace(Cp1252ToUtf8(std::string_view(&character, 1)), character);
        }
        characters.erase("\xEF\xBF\xBD"); // stands for the codes without a character
        return characters;
    }();
    return kCharacters;
}

std::size_t SequenceLength(char first) {
    const auto byte = static_cast<unsigned char>(first);
    return byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

} // namespace

std::optional<std::string> Utf8ToCp1252(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::string sequence(text.substr(0, SequenceLength(text.front())));
        const auto found = CodePageCharacters().find(sequence);
        if (found == CodePageCharacters().end()) {
            return std::nullopt;
        }
        result.push_back(found->second);
        text.remove_prefix(sequence.size());
    }
    return result;
}

std::optional<std::vector<std::uint8_t>> EncodeRelayText(std::string_view utf8) {
    const std::optional<std::string> text = Utf8ToCp1252(utf8);
    if (!text) {
        return std::nullopt;
    }
    // The encoder writes "." for what the relay lacks; here that is a mistake in the file.
    const std::string encoded = EncodeDeviceText(*text);
    for (std::size_t i = 0; i < encoded.size(); ++i) {
        if (encoded[i] == '.' && (*text)[i] != '.') {
            return std::nullopt;
        }
    }
    return std::vector<std::uint8_t>(encoded.begin(), encoded.end());
}

std::string WithoutTrailingBlanks(std::string_view text) {
    return std::string(TrimEnd(text, kWhiteSpace));
}

} // namespace ruvo::sim
