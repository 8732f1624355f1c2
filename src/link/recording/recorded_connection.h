// A connection to the comms server whose calls are recorded.
#pragma once

#include "link/recording/recording_file.h"
#include "link/seam/server_connection.h"

#include <memory>

namespace ruvo {

/// The recording that the next connections make; none to begin with. Process-wide; set before the connection.
SRecordingPlan& PlannedRecording();

/// The connection itself where no recording is planned, or none can be made; else one that makes the same
/// calls of it and records them. A failure goes to the program's standard error.
std::unique_ptr<IServerConnection> RecordedAsPlanned(std::unique_ptr<IServerConnection> connection);

} // namespace ruvo
