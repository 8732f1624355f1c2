#include "platform/message_box.h"

#include "platform/windows/system.h"

#include <array>

namespace ruvo {

void ShowMessageBox(EMessageIcon icon, const std::string& title, const std::string& text) {
    constexpr std::array<UINT, 3> kIcons{MB_ICONINFORMATION, MB_ICONWARNING, MB_ICONERROR};
    MessageBoxA(nullptr, text.c_str(), title.c_str(), MB_OK | kIcons[static_cast<std::size_t>(icon)]);
}

} // namespace ruvo
