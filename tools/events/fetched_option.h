// --fetched: the events that came into day files within a time, whenever they happened.
#pragma once

#include "tools/command.h"
#include "tools/events/event_files.h"

#include <cstddef>
#include <optional>
#include <string>

namespace ruvo {

inline constexpr SOption kFetchedOption{
    EOptionKind::Text, "--fetched",
    "only events that came in on a day or since a time: yesterday, 2026-11-24, 24h", "TIME"};

/// Keeps the files in which events came in within the time of that option, and notes in each what counts.
/// Says on standard error what had to be taken by the UTC day in its name. Reports an invalid time and
/// returns false.
[[nodiscard]] bool KeepFetched(const CArguments& arguments, SConsole& console, SFoundFiles& found);

/// The time of that option; none where it was not given. Reports an invalid time and returns false.
[[nodiscard]] bool ParseFetchedOption(const CArguments& arguments, SConsole& console,
                                      std::optional<SPeriod>& period);

/// What came into the day files of an event root within the time, as the records of its visits say. Reports
/// records that cannot be read.
[[nodiscard]] CFetchedBytes ReadFetchedBytes(const std::string& fullEventRoot, SPeriod period,
                                             SConsole& console);

/// Says on standard error how many day files had to be taken by the UTC day in their names.
void TellWholeFiles(std::size_t count, SConsole& console);

} // namespace ruvo
