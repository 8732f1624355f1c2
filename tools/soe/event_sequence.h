// The events of many relays in one order, with the time between them.
#pragma once

#include "tools/clocks/shown_time.h"
#include "tools/events/event_filter.h"
#include "tools/events/event_printer.h"
#include "tools/events/measured_value.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ruvo {

/// An event, with what its relay says of the time.
struct SSequenceEvent {
    SEventSource source;
    std::uint64_t offset = 0;
    CParlaneIEC870 relayTime;
    bool hasTime = false;     ///< else it names no real time, and has no place in the order
    std::int64_t moment = 0;  ///< milliseconds since 1970: UTC, or what the relay's clock shows
    bool isDoubtful = false;  ///< the moment may be an hour off, or the clock's zone is unknown
    CParlaneIEC870 shownTime; ///< with the flag of summer time
    std::string plant;        ///< these are the relay's, in code page 1252
    std::string event;
    SMeasuredValue value;
    bool isChoice = false; ///< it holds the text that chooses the event to count from
    std::optional<std::int64_t> sinceLast;
    std::optional<std::int64_t> fromZero;

    /// The relay itself, or the knowledge of its zone, leaves a doubt about the time.
    [[nodiscard]] bool IsDoubted() const { return relayTime.IsInvalid() || isDoubtful; }
    /// "?" for a clock that its relay does not trust, "~" for a doubtful moment, "s" for summer time.
    [[nodiscard]] std::string Marks() const;
};

/// What is to be shown, and how.
struct SSequenceQuestion {
    SEventFilter filter;             ///< its bounds apply to the time that is shown
    bool hasClocks = false;          ///< else all times are compared as they are
    CZoneRule zone;                  ///< with clocks: in which times are shown
    std::string zeroText;            ///< the first event with it is counted from; empty for none
    std::optional<TimeKey> zeroTime; ///< or this moment, as it is shown
};

class CEventSequence {
public:
    explicit CEventSequence(SSequenceQuestion question);

    /// Takes a record that the filter matches.
    void Add(const SEventSource& source, const SDayFileItem& item);
    /// Puts all in order and counts. False when no event has the text to count from.
    [[nodiscard]] bool Finish();

    [[nodiscard]] const std::vector<SSequenceEvent>& Events() const { return m_events; }
    [[nodiscard]] const SSequenceQuestion& Question() const { return m_question; }
    [[nodiscard]] bool HasZero() const { return m_zero.has_value(); }
    /// Events that raise a doubt about the difference to the zero.
    [[nodiscard]] bool IsZeroDoubted() const { return m_isZeroDoubted; }

private:
    /// Takes back the doubts that the relay's use of the flag decides.
    void SettleDoubts();
    [[nodiscard]] bool FindZero();

    SSequenceQuestion m_question;
    SEventFilter m_choice;
    std::vector<SSequenceEvent> m_events;
    CFlaggingRelays m_flagging;
    std::optional<std::int64_t> m_zero;
    bool m_isZeroDoubted = false;
};

} // namespace ruvo
