#include "platform/console_buffer.h"

namespace ruvo {

std::unique_ptr<std::streambuf> ConsoleBuffer(EStandardStream /*stream*/) {
    return nullptr;
}

} // namespace ruvo
