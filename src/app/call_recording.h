// Whether the calls of the comms server are recorded, and where.
#pragma once

#include <string>

namespace ruvo {

/// The path that RUVO_RECORD names, or else the registry's value of that name; empty where neither does.
[[nodiscard]] std::string AskedRecording();

/// Plans that recording for the next connection to the server, unless it would be in the event root, or one
/// that earlier runs had: what is there goes to the users of the events. A reason goes to standard error.
void PlanRecording(const std::string& eventRoot);

} // namespace ruvo
