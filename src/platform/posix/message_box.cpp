#include "platform/message_box.h"

#include "platform/posix/pipe_signal.h"

#include <array>
#include <cstdio>

namespace ruvo {

void ShowMessageBox(EMessageIcon icon, const std::string& title, const std::string& text) {
    constexpr std::array kLabels{"[Information] ", "[Warning] ", "[Error] "};
    const char* lineEnd = text.ends_with('\n') ? "" : "\n"; // one empty line follows, however the text ends
    const std::string box = kLabels[static_cast<std::size_t>(icon)] + title + "\n" + text + lineEnd + "\n";
    const CPipeSignalBlock hold; // a box without a reader is closed at once
    std::fwrite(box.data(), 1, box.size(), stdout);
    std::fflush(stdout);
}

} // namespace ruvo
