// The version of the programs.
#pragma once

namespace ruvo {

/// In four parts, as the files of Windows have it: "1.0.0.0". The build gives it.
const char* ProgramVersion();

} // namespace ruvo
