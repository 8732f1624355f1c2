// --fetched: the events that came into day files within a time, whenever they happened.
#pragma once

#include "tools/command.h"
#include "tools/events/event_files.h"

namespace ruvo {

inline constexpr SOption kFetchedOption{
    EOptionKind::Text, "--fetched",
    "only events that came in on a day or since a time: yesterday, 2026-11-24, 24h", "TIME"};

/// Keeps the files in which events came in within the time of that option, and notes in each what counts.
/// Says on standard error what had to be taken by the UTC day in its name. Reports an invalid time and
/// returns false.
[[nodiscard]] bool KeepFetched(const CArguments& arguments, SConsole& console, SFoundFiles& found);

} // namespace ruvo
