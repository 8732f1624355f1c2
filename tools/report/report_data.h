// What a report page shows, gathered record by record and written in the compact form that the page's script
// unpacks.
#pragma once

#include "base/json_writer.h"
#include "tools/events/event_printer.h"
#include "tools/log_lines.h"
#include "tools/report/text_pool.h"

#include <cstdint>
#include <map>
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
};

class CReportData {
public:
    /// A relay is listed even when none of its records is.
    void AddRelay(const std::string& name);
    /// The date of a day file of a relay, "2026-11-16".
    void AddDay(const std::string& relay, const std::string& day);
    void AddRecord(const SEventSource& source, const SDayFileItem& item);
    void AddDamage(const SEventSource& source, const SDayFileDamage& damage);
    void AddFailure(const std::string& what) { m_failures.push_back(what); }
    /// The lines of one log after those of another, each in their order.
    void AddProblem(SLogLine line, std::size_t log) { m_problems.push_back({std::move(line), log}); }

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
        std::int64_t time = 0; ///< milliseconds since 1970 as the relay's clock counts; without a time, the
                               ///< text that holds its bytes
        Index file = 0;
        Index shape = 0; ///< all that is the same in every event of one sort from one relay
        Index value = 0;
        Index lines = 0; ///< labels and values of what else the record holds, one after the other
        std::uint64_t offset = 0;
        std::uint32_t id = 0;
    };
    struct SProblem {
        SLogLine line;
        std::size_t log = 0; ///< its index in the head
    };
    struct SDamage {
        Index file = 0;
        SDayFileDamage range;
    };

    Index FileIndex(const SEventSource& source);
    Index RelayText(const std::string& cp1252);
    Index ShapeOf(const SDayFileItem& item);
    Indexes LinesOf(const CEventRecord& record);
    void SetTime(SEvent& event, const CParlaneIEC870& time);

    void WriteEvents(CJsonWriter& json) const;
    void SortProblems();
    void WriteProblems(CJsonWriter& json) const;

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
};

} // namespace ruvo
