// A substation file from a recording: relays that answer the simulator's clients as the recorded ones did.
#pragma once

#include "link/recording/recording.h"

#include <string>
#include <string_view>

namespace ruvo {

/// In the place of passwords that a relay has accepted.
inline constexpr std::string_view kStandInPassword = "RUVO";

/// Reads the recording to its end. The text is TOML.
[[nodiscard]] std::string SubstationFileOf(CRecordingReader& reader);

} // namespace ruvo
