// Texts on their way to the system, whose own are UTF-16, and back.
#pragma once

#include "platform/windows/system.h"

#include <string>
#include <string_view>

namespace ruvo {

/// A text of this process, see native_text.h. Up to the first NUL a path is one function argument:
/// Wide(path).c_str().
std::wstring Wide(std::string_view text);
/// The same back; a character that the process's encoding lacks becomes one that is like it, or "?".
std::string Narrow(std::wstring_view wide);

/// UTF-8, whatever the process has its texts in.
std::wstring WideOfUtf8(std::string_view utf8);
std::string Utf8OfWide(std::wstring_view wide);

} // namespace ruvo
