#include "base/text.h"

#include <algorithm>

namespace ruvo {

std::string_view Trim(std::string_view text, std::string_view dropped) {
    text.remove_prefix(std::min(text.find_first_not_of(dropped), text.size()));
    return TrimEnd(text, dropped);
}

std::string_view TrimEnd(std::string_view text, std::string_view dropped) {
    return text.substr(0, text.find_last_not_of(dropped) + 1);
}

void EraseTrailingBlanks(std::string& text, std::size_t start) {
    text.erase(std::max(text.find_last_not_of(kBlank) + 1, start));
}

std::string BlankControlCharacters(std::string_view text) {
    std::string cleaned(text);
    std::ranges::replace_if(cleaned, IsControlCharacter, ' ');
    return cleaned;
}

std::string ToUpperText(std::string_view text) {
    std::string upper(text);
    std::ranges::transform(upper, upper.begin(), ToUpper);
    return upper;
}

std::string Counted(std::uint64_t number, std::string_view what) {
    return std::to_string(number) + ' ' + std::string(what) + (number == 1 ? "" : "s");
}

void AppendHexByte(std::string& out, unsigned byte) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    out.append({kDigits[byte >> 4U & 0x0FU], kDigits[byte & 0x0FU]});
}

} // namespace ruvo
