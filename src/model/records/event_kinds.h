// The kinds of events, and the elements of the data that a relay delivers for one. Numbers of the relay's
// protocol: never renumber.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ruvo {

/// Positions of the elements that every event has.
enum EEventElement : std::size_t {
    kLocationElement, ///< the menu location of the cell that the event is about
    kTimeElement,
    kTextElement,
    kValueElement,
    kCommonElements, ///< how many there are; here begins what depends on the kind
};

/// What follows the common elements, in the order of the members.
struct SEventKind {
    bool hasId = false;     ///< the relay's own number of the event
    bool hasRecord = false; ///< the record's column, and the number by which it is selected; nothing follows
    bool hasFormatText = false; ///< a format text; the values that it consumes follow
    bool hasFormatCell = false; ///< the cell that holds the format text; the values follow

    [[nodiscard]] constexpr std::size_t RecordColumnElement() const {
        return kCommonElements + (hasId ? 1U : 0U);
    }
    [[nodiscard]] constexpr std::size_t RecordNumberElement() const { return RecordColumnElement() + 1; }
    /// Elements that an event has at least.
    [[nodiscard]] constexpr std::size_t MinimumElements() const {
        return kCommonElements + (hasId ? 1U : 0U) + (hasRecord ? 2U : 0U) + (hasFormatText ? 1U : 0U) +
               (hasFormatCell ? 1U : 0U);
    }
};

inline constexpr std::size_t kIdElement = kCommonElements;
inline constexpr std::size_t kFormatElement = kCommonElements;
inline constexpr std::size_t kFirstFormatValue = kFormatElement + 1;

/// Indexed by the kind's number.
inline constexpr std::array<SEventKind, 6> kEventKinds{{
    {},
    {.hasFormatText = true},
    {.hasFormatCell = true},
    {.hasRecord = true},
    {.hasId = true},
    {.hasId = true, .hasRecord = true},
}};

/// Null for an unknown kind.
[[nodiscard]] constexpr const SEventKind* FindEventKind(std::uint8_t kind) {
    return kind < kEventKinds.size() ? &kEventKinds[kind] : nullptr;
}

} // namespace ruvo
