#include "platform/system_tools.h"

namespace ruvo {

ESystemTools SystemTools() noexcept {
    return ESystemTools::Windows;
}

// A path has no quotes.
std::string ShellWord(std::string_view word) {
    const bool isPlain = !word.empty() && word.find_first_of(" &()[]{}^=;!'+,`~") == std::string_view::npos;
    return isPlain ? std::string(word) : "\"" + std::string(word) + "\"";
}

} // namespace ruvo
