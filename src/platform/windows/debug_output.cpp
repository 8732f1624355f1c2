#include "platform/debug_output.h"

#include "platform/windows/system.h"

namespace ruvo {

void WriteDebugOutput(const std::string& text) noexcept {
    OutputDebugStringA(text.c_str());
}

} // namespace ruvo
