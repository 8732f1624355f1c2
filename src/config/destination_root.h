// The folder that receives the event files.
#pragma once

#include "config/run_context.h"

namespace ruvo {

/// Sets the destination root and the registry flag of the context: the event root of the configuration when
/// it was loaded, unless the user's or the machine's registry names a folder, which then gets a RUVO
/// subfolder. Shows one message box when the user's folder cannot be used and the machine's takes its place.
void ResolveDestinationRoot(CRunContext& context, bool configurationLoaded);

} // namespace ruvo
