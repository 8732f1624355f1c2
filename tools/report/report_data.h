// What a report page shows, gathered record by record and written in the compact form that the page's script
// unpacks.
#pragma once

#include "base/json_writer.h"
#include "tools/clocks/shown_time.h"
#include "tools/events/event_printer.h"
#include "tools/log_lines.h"
#include "tools/report/text_pool.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ruvo {

/// What is shown above everything else. UTF-8.
struct SReportHead {
    std::string title;
    std::string made;  ///< "2026-11-16T23:30Z"
    std::string since; ///< as given; empty for all
    std::string until;
    std::string relay;             ///< part of the relays' names or texts; empty for all
    std::string match;             ///< part of the events' texts; empty for all
    std::vector<std::string> logs; ///< paths of the error logs
    unsigned silentDays = 0;       ///< a relay without a new day file for more days counts as silent
    std::string zone; ///< in which all times are shown; empty where they are as the clocks show them
};

/// A relay that is muted: what is known to be wrong with it alarms nobody. UTF-8.
struct SReportMute {
    std::function<bool(const std::string&)> isOf; ///< whether a relay of that name is meant
    std::string label;
    std::string until; ///< local time
    std::string why;
};

class CReportData {
public:
    /// With a zone, times are UTC, by what the relays' clocks show, and the page shows them in the zone.
    explicit CReportData(const CZoneRule* zone = nullptr) : m_zone(zone) {}

    /// A relay is listed even when none of its records is.
    void AddRelay(const std::string& name);
    /// The date of a day file of a relay, "2026-11-16".
    void AddDay(const std::string& relay, const std::string& day);
    /// Takes every record of the relays that are shown.
    void NoteRecord(const SEventSource& source, const CEventRecord& record) {
        m_flagging.Note(source, record.GetTimeStamp());
    }
    void AddRecord(const SEventSource& source, const SDayFileItem& item, const SShownStamp& stamp);
    void AddDamage(const SEventSource& source, const SDayFileDamage& damage);
    void AddFailure(const std::string& what) { m_failures.push_back(what); }
    /// The lines of one log after those of another, each in their order.
    void AddProblem(SLogLine line, std::size_t log, std::optional<std::size_t> mute = std::nullopt) {
        m_problems.push_back({std::move(line), log, mute});
    }
    void AddMute(SReportMute mute) { m_mutes.push_back(std::move(mute)); }

    [[nodiscard]] std::size_t MuteCount() const { return m_mutes.size(); }
    [[nodiscard]] std::size_t EventCount() const { return m_events.size(); }
    [[nodiscard]] std::size_t RelayCount() const { return m_relays.size(); }
    [[nodiscard]] std::size_t DamageCount() const { return m_damage.size(); }
    [[nodiscard]] std::size_t ProblemCount() const { return m_problems.size(); }

    /// Appends all as one JSON object; sorts the events by time.
    void WriteJson(std::string& out, const SReportHead& head);

private:
    using Index = CTextPool::Index;
    using Indexes = std::vector<Index>;

    /// An event; what many have in common is kept once and referred to by index.
    struct SEvent {
        bool hasTime = true;
        bool isDoubtful = false;
        bool isFlagged = false; ///< as summer time, by the relay
        std::int64_t time = 0;  ///< milliseconds since 1970: with a zone UTC, else as the relay's clock
                                ///< counts; without a time, the text that holds its bytes
        std::int64_t ahead = 0; ///< what the relay's clock showed more than that
        Index file = 0;
        Index shape = 0; ///< all that is the same in every event of one sort from one relay
        Index value = 0;
        Index lines = 0; ///< labels and values of what else the record holds, one after the other
        std::uint64_t offset = 0;
        std::uint32_t id = 0;
    };
    struct SProblem {
        SLogLine line;
        std::size_t log = 0;               ///< its index in the head
        std::optional<std::size_t> mute{}; ///< the one that it falls under
    };
    struct SDamage {
        Index file = 0;
        SDayFileDamage range;
    };

    Index FileIndex(const SEventSource& source);
    Index RelayText(const std::string& cp1252);
    Index ShapeOf(const SDayFileItem& item, const SShownStamp& stamp);
    Indexes LinesOf(const CEventRecord& record);
    void SetTime(SEvent& event, const CParlaneIEC870& relayTime, const SShownStamp& stamp);

    void WriteEvents(CJsonWriter& json) const;
    void SortProblems();
    void WriteProblems(CJsonWriter& json) const;
    void WriteMutes(CJsonWriter& json) const;
    /// What the zone's clock is ahead of UTC, from which moment on.
    void WriteZone(CJsonWriter& json, const std::string& name) const;
    [[nodiscard]] bool IsDoubtful(const SEvent& event) const;

    const CZoneRule* m_zone;
    CFlaggingRelays m_flagging;
    CTextPool m_texts;
    std::map<std::string, Index> m_relays;
    std::map<std::string, std::string> m_lastDays; ///< by relay, listed or not
    std::vector<SEventSource> m_files;
    CListPool m_shapes;
    CListPool m_lines;
    std::vector<SEvent> m_events;
    std::vector<SDamage> m_damage;
    std::vector<std::string> m_failures;
    std::vector<SProblem> m_problems;
    std::vector<SReportMute> m_mutes;
};

} // namespace ruvo
