// The kinds of events by what follows the four elements that every event has: location, time, text and value.
#pragma once

#include <array>

namespace ruvo::sim {

/// Elements come in the order of the members; the last two are followed by further values.
struct SEventKindRow {
    bool id = false;       ///< the relay's own number of the event
    bool record = false;   ///< column and number of a record
    bool format = false;   ///< a format text
    bool textCell = false; ///< the cell that holds the format text
};

/// Indexed by kind.
inline constexpr std::array<SEventKindRow, 6> kEventKinds{{
    {},
    {.format = true},
    {.textCell = true},
    {.record = true},
    {.id = true},
    {.id = true, .record = true},
}};

} // namespace ruvo::sim
