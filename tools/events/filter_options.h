// The options that select records, shared by all commands that read day files.
#pragma once

#include "tools/clocks/relay_clocks.h"
#include "tools/command.h"
#include "tools/events/event_files.h"
#include "tools/events/event_filter.h"

namespace ruvo {

inline constexpr SOption kSinceOption{
    EOptionKind::Text, "--since",
    "only events at or after this time: 2026-11-16, 2026-11-16T03:12, today, yesterday, 24h or 7d ago",
    "TIME"};
inline constexpr SOption kUntilOption{EOptionKind::Text, "--until",
                                      "only events at or before this time; a day counts to its end", "TIME"};
inline constexpr SOption kRelayOption{
    EOptionKind::Text, "--relay",
    "only relays whose name, plant reference, description or model contains this text, such as \"Feeder 7\"; "
    "case does not matter"};

inline constexpr SOption kMatchOption{
    EOptionKind::Text, "--match",
    "only events with this text in their texts or cells, or in those of the relay; case does not matter"};

inline constexpr SOption kSiteOption{
    EOptionKind::Text, "--site",
    "name of the site in json and csv (default: the name of the INI file or the folder)", "NAME"};
inline constexpr SOption kClocksOption{
    EOptionKind::Text, "--clocks",
    "what the clocks of the relays show: lines such as \"FD31-* Europe/Berlin\" or \"* UTC\"", "FILE"};

inline constexpr SOption kZoneOption{
    EOptionKind::Text, "--zone",
    "with --clocks: show times in this zone, such as UTC (default), +01:00 or Europe/Berlin", "ZONE"};

/// Sets the zone to that of "--zone". Reports a mistake, also the option without "--clocks", and returns
/// false.
[[nodiscard]] bool ParseZone(const CArguments& arguments, SConsole& console, CZoneRule& zone);
/// The zone as it was given, UTF-8; "UTC" by default; empty without "--clocks".
[[nodiscard]] std::string ZoneName(const CArguments& arguments);
/// Reads the file of "--clocks". Reports a mistake in it and returns false.
[[nodiscard]] bool ReadClocks(const CArguments& arguments, SConsole& console, CRelayClocks& clocks);
/// Gives the files the site of "--site", then the clocks of their relays, which must outlive them.
void CompleteSources(const CArguments& arguments, const CRelayClocks& clocks, SFoundFiles& found);

/// Sets the time to that of the option, as ParseGivenTime returns it; leaves it as it is where the option was
/// not given. Reports an invalid one and returns false.
[[nodiscard]] bool ParseTimeOption(const CArguments& arguments, std::string_view name, std::string& time,
                                   SConsole& console);

/// Fills the filter from these options and from "--match". Reports an invalid time and returns false.
[[nodiscard]] bool ParseFilterOptions(const CArguments& arguments, SConsole& console, SEventFilter& filter);

} // namespace ruvo
