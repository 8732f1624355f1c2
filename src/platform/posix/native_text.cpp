#include "platform/native_text.h"

#include "base/code_page.h"
#include "base/text.h"

namespace ruvo {

void UseUtf8Texts() noexcept {}

std::vector<std::string> ProgramArguments(int count, char** texts) {
    return {texts + (count > 0 ? 1 : 0), texts + count};
}

std::string TextOfStored(std::string_view bytes) {
    return std::string(bytes);
}

std::optional<std::string> StoredText(std::string_view text) {
    return std::string(text);
}

std::string NativeTextToUtf8(std::string_view text) {
    return SystemTextToUtf8(text);
}

std::string NativeRelayText(std::string_view cp1252) {
    return Cp1252ToUtf8(BlankControlCharacters(cp1252));
}

} // namespace ruvo
