// The version of the programs.
#pragma once

namespace ruvo {

/// In four parts, as in the files of Windows: "1.0.0.0". Set by the build.
const char* ProgramVersion();

} // namespace ruvo
