#include "platform/native_text.h"

#include "base/code_page.h"
#include "base/text.h"

namespace ruvo {

std::string NativeRelayText(std::string_view cp1252) {
    return Cp1252ToUtf8(BlankControlCharacters(cp1252));
}

} // namespace ruvo
