#include "platform/system_tools.h"

#include "base/text.h"

#include <algorithm>

namespace ruvo {

namespace {

bool IsPlain(char c) {
    constexpr std::string_view kPlain = "/._-+=:,@%";
    return IsLetter(c) || IsDigit(c) || static_cast<unsigned char>(c) >= 0x80 ||
           kPlain.find(c) != std::string_view::npos;
}

} // namespace

ESystemTools SystemTools() noexcept {
    return ESystemTools::Posix;
}

std::string ShellWord(std::string_view word) {
    if (!word.empty() && std::ranges::all_of(word, IsPlain)) {
        return std::string(word);
    }
    std::string quoted = "'";
    for (const char c : word) {
        quoted += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return quoted + "'";
}

} // namespace ruvo
