#include "platform/native_text.h"

#include "base/text.h"

namespace ruvo {

// The bytes go to the ...A functions as they are.
std::string NativeRelayText(std::string_view cp1252) {
    return BlankControlCharacters(cp1252);
}

} // namespace ruvo
