// A site as people name it on a command line.
#pragma once

#include <string>

namespace ruvo {

/// The full path of the INI file: of the folder for sites when what was typed is a name, with or without its
/// ending, else of the path. Empty for a path that no visit takes; the extractor would use another file.
[[nodiscard]] std::string GivenSitePath(const std::string& typed);

} // namespace ruvo
