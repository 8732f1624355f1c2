// Writes a file so that whoever reads it sees the old one or the new one, never half of it.
#pragma once

#include "platform/file_access.h"

#include <string>
#include <string_view>

namespace ruvo {

/// What went wrong with an output file, for people.
[[nodiscard]] std::string TellOutputFailure(const SAccessResult& result);

/// Puts the text there as CFileReplacement does. What went wrong, for people; empty when it is done.
[[nodiscard]] std::string ReplaceWholeFile(const std::string& path, std::string_view text);

} // namespace ruvo
