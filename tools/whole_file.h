// Writes a file atomically: a reader sees the old one or the new one, never half of it.
#pragma once

#include "platform/file_replacement.h"

#include <string>
#include <string_view>

namespace ruvo {

/// A readable reason why an output file could not be written.
[[nodiscard]] std::string OutputFailureText(const SAccessResult& result);

/// Replaces the file with the text, as COutputFileReplacement does. Returns a readable reason on failure,
/// else an empty string.
[[nodiscard]] std::string ReplaceWholeFile(const std::string& path, std::string_view text);

} // namespace ruvo
