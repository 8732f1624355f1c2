// What an event is about, as far as its words show.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ruvo {

/// In the order in which a page lists them.
enum class EEventKind : std::uint8_t { Trip, Fault, Start, Alarm, Switching, Device, Other, Last = Other };

inline constexpr std::size_t kEventKindCount = static_cast<std::size_t>(EEventKind::Last) + 1;

/// "Trip", "Fault" ...
[[nodiscard]] std::string_view EventKindName(EEventKind kind);

/// The kind that words of the text name; Other when none does. Relays say nothing about an event's kind but
/// in their own words, so this is a help for the eye and no more.
[[nodiscard]] EEventKind EventKindOf(std::string_view utf8);

} // namespace ruvo
