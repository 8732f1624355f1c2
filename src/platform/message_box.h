// Message boxes with a single OK button. On POSIX the text goes to standard output, and the program does not
// wait.
#pragma once

#include <cstdint>
#include <string>

namespace ruvo {

enum class EMessageIcon : std::uint8_t { Information, Warning, Error };

void ShowMessageBox(EMessageIcon icon, const std::string& title, const std::string& text);

} // namespace ruvo
