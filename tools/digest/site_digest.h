// What came in at a site, and what went wrong there: what a person wants to know in the morning. All texts
// are UTF-8 without control characters.
#pragma once

#include "tools/given_time.h"
#include "tools/lines/line_table.h"
#include "tools/marks.h"
#include "tools/report/event_kind.h"
#include "tools/sites/shared_by_sites.h"
#include "tools/sites/site_visits.h"
#include "tools/text_output.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ruvo {

/// From one visit to the next, or to now, where nights lie between them; UTC.
struct SVisitGap {
    std::string from;
    std::string to;
};

/// What a digest is of. With a mark or a visit, it is the runs that decide, else the time.
struct SDigestQuestion {
    SPeriod period;
    std::optional<SMark> after;         ///< the runs after this one
    std::optional<std::uint64_t> visit; ///< the run of this number alone
    bool ofMark = false;                ///< a mark decides: `after`, or the period where there is none yet
};

/// A trip or a fault.
struct SDigestEvent {
    std::string time; ///< as the relay's clock shows it; "?" and "s" as in ruvoctl events
    EEventKind kind = EEventKind::Trip;
    std::string event;
    std::string value;
    std::string details; ///< of a fault record: its cells
};

/// What came in from one relay.
struct SDigestBay {
    static constexpr std::size_t kMostEvents = 1000;

    std::string label; ///< plant text, else description, else the name
    std::string name;  ///< MODEL-SERIAL
    std::string key;   ///< of the INI file; empty for a relay that is not in it
    std::array<std::uint64_t, kEventKindCount> counts{};
    std::vector<SDigestEvent> events; ///< trips and faults by time, at most kMostEvents
    std::uint64_t damaged = 0;        ///< places in what came in
    std::uint64_t oddTimes = 0;       ///< events whose time cannot be right
    std::string oddTime;              ///< of the first of them

    [[nodiscard]] std::uint64_t Count(EEventKind kind) const {
        return counts[static_cast<std::size_t>(kind)];
    }
    /// Trips and faults.
    [[nodiscard]] std::uint64_t Grave() const { return Count(EEventKind::Trip) + Count(EEventKind::Fault); }
    [[nodiscard]] std::uint64_t Total() const;
};

/// Lines of the error log that mean the same of the same relay.
struct SDigestProblem {
    ESeverity severity = ESeverity::Warning;
    EConcern concern = EConcern::Run;
    std::string where; ///< the relay, else its connection; empty without one
    std::string key;   ///< of the relay; empty without one
    std::string ip;    ///< likewise
    std::string happened;
    std::string todo; ///< with KEY and "the address in the line"; empty for a line that no run writes
    std::uint64_t count = 0;
    std::string lastTime;   ///< local
    bool isOver = false;    ///< the last visit of the relay was later, and had nothing to log
    bool isMuted = false;   ///< it is about the link to a muted relay
    bool mayBeEcho = false; ///< it says no more than a line about the password, if there is one

    [[nodiscard]] bool IsAlarm() const { return severity != ESeverity::Notice && !isOver; }
};

struct SMissedRelay {
    std::string label;
    std::string key;
    std::string since;       ///< "not reached since 2026-10-19, 2 nights"
    std::string mute;        ///< "muted until ...", of a muted one
    std::string lastReached; ///< UTC; empty for never
    std::string status;      ///< of the comms server
};

struct SSilentRelay {
    std::string label;
    std::string lastDay; ///< of its newest day file; empty without one
    std::int64_t days = 0;
};

struct SSiteDigest {
    std::string name;
    std::string ini;
    std::vector<SVisitLine> visits; ///< that it is of, the earliest first, without their entries
    std::string lastVisit;          ///< when the latest one began that is known; UTC
    bool lacksVisit = false;        ///< none was made, though a day has passed
    std::vector<SVisitGap> gaps;    ///< nights without a visit before one that it is of
    std::size_t reached = 0;        ///< relays of the INI file, in the end
    std::size_t relays = 0;         ///< that were visited
    std::size_t notVisited = 0;     ///< that a visit which ended early has left out
    std::vector<SMissedRelay> missed;
    std::vector<SMissedRelay> muted; ///< missed, too, as was to be expected
    std::vector<SDigestBay> bays;    ///< trips and faults first
    std::vector<SDigestProblem> problems;
    std::vector<SSilentRelay> silent;
    std::uint64_t lost = 0; ///< events, as the records count them
    std::uint64_t setAside = 0;
    std::uint64_t waiting = 0; ///< now, where that can be known and the digest reaches until now
    std::uint64_t recovered = 0;
    std::vector<std::string> lostOf; ///< relays
    std::vector<std::string> recoveredOf;
    std::vector<std::string> notes;    ///< on what is counted
    std::vector<std::string> failures; ///< what could not be read
    std::optional<SMark> mark;         ///< where a mark goes next; none to leave it

    [[nodiscard]] std::uint64_t Total() const;
    [[nodiscard]] std::uint64_t Grave() const;
    [[nodiscard]] std::uint64_t Damaged() const;
    /// Whether none of several relays was reached, as the same has kept from all of them.
    [[nodiscard]] bool IsCutOff() const;
    /// 0 for trips, faults and trouble, 1 for other events, 2 for a quiet site.
    [[nodiscard]] int Rank() const;
};

/// From this many days without an event on, a relay that answers is called silent.
inline constexpr std::int64_t kSilentDays = 14;

[[nodiscard]] SSiteDigest ReadSiteDigest(const std::string& fullIniPath, const SDigestQuestion& question,
                                         SSharedBySites& shared, SConsole& console);

} // namespace ruvo
