// The options that choose records, the same in every command that reads day files.
#pragma once

#include "tools/command.h"
#include "tools/events/event_filter.h"

namespace ruvo {

inline constexpr SOption kSinceOption{
    EOptionKind::Text, "--since", "events of this date (2026-11-16) or moment (2026-11-16T03:12) and later",
    "TIME"};
inline constexpr SOption kUntilOption{EOptionKind::Text, "--until",
                                      "events of this date or moment and earlier", "TIME"};
inline constexpr SOption kRelayOption{EOptionKind::Text, "--relay",
                                      "relays whose name holds this text, in any letter case"};

/// What the user gave of them, and of "--match". False, with a word about it, when a time is none.
[[nodiscard]] bool TakeFilterOptions(const CArguments& arguments, SConsole& console, SEventFilter& filter);

} // namespace ruvo
