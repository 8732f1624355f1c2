// The options that select records, shared by all commands that read day files.
#pragma once

#include "tools/command.h"
#include "tools/events/event_files.h"
#include "tools/events/event_filter.h"

namespace ruvo {

inline constexpr SOption kSinceOption{
    EOptionKind::Text, "--since", "only events at or after this date (2026-11-16) or time (2026-11-16T03:12)",
    "TIME"};
inline constexpr SOption kUntilOption{EOptionKind::Text, "--until",
                                      "only events at or before this date or time", "TIME"};
inline constexpr SOption kRelayOption{EOptionKind::Text, "--relay",
                                      "only relays whose name contains this text; case does not matter"};

inline constexpr SOption kSiteOption{
    EOptionKind::Text, "--site",
    "name of the site in json and csv (default: the name of the INI file or the folder)", "NAME"};
/// Gives all files the site's name from that option.
void NameSite(const CArguments& arguments, SFoundFiles& found);

/// Fills the filter from these options and from "--match". Reports an invalid time and returns false.
[[nodiscard]] bool ParseFilterOptions(const CArguments& arguments, SConsole& console, SEventFilter& filter);

} // namespace ruvo
