#include "tools/report/report_data.h"

#include "tools/events/event_fields.h"
#include "tools/events/event_values.h"
#include "tools/report/event_kind.h"
#include "tools/text_encoding.h"

#include <algorithm>

namespace ruvo {

namespace {

enum EShapeFlags : std::uint32_t { kExtended = 1, kClockDoubted = 2, kSummerTime = 4, kRecordDoubted = 8 };

std::uint32_t FlagsOf(const SDayFileItem& item, const SShownStamp& stamp) {
    return (item.isExtended ? kExtended : 0U) |
           (item.record->GetTimeStamp().IsInvalid() ? kClockDoubted : 0U) |
           (stamp.time.IsSummerTime() ? kSummerTime : 0U) | (item.record->IsValid() ? 0U : kRecordDoubted);
}

/// What the event's flags are called, when they have names: they say more than ones and zeros.
std::string NamedFlags(const CEventRecord& record) {
    const CCell* const cell = ValueCell(record);
    return cell != nullptr ? SetBitsText(*cell) : std::string();
}

/// The words that show the kind: the event's own, else those of its flags.
EEventKind KindOf(const CEventRecord& record) {
    const EEventKind kind = EventKindOf(ReadableRelayLine(EventLine(record)));
    return kind != EEventKind::Other ? kind : EventKindOf(ReadableRelayLine(NamedFlags(record)));
}

template <class TItems, class TWrite>
void WriteList(CJsonWriter& json, std::string_view key, const TItems& items, const TWrite& write) {
    json.Key(key).Open('[');
    for (const auto& item : items) {
        write(item);
    }
    json.Close(']');
}

template <class TLists>
void WriteLists(CJsonWriter& json, std::string_view key, const TLists& lists) {
    WriteList(json, key, lists, [&json](const auto* list) {
        json.Open('[');
        for (const std::uint32_t number : *list) {
            json.Number(number);
        }
        json.Close(']');
    });
}

} // namespace

void CReportData::AddRelay(const std::string& name) {
    m_relays.try_emplace(name, static_cast<Index>(m_relays.size()));
}

void CReportData::AddDay(const std::string& relay, const std::string& day) {
    std::string& last = m_lastDays[relay];
    last = std::max(last, day);
}

CReportData::Index CReportData::FileIndex(const SEventSource& source) {
    if (m_files.empty() || m_files.back().file != source.file) { // files come one after the other
        m_files.push_back(source);
        AddRelay(source.relay);
    }
    return static_cast<Index>(m_files.size() - 1);
}

CReportData::Index CReportData::RelayText(const std::string& cp1252) {
    return m_texts.Add(ReadableRelayLine(cp1252));
}

CReportData::Index CReportData::ShapeOf(const SDayFileItem& item, const SShownStamp& stamp) {
    const CEventRecord& record = *item.record;
    std::string location;
    AppendLocation(location, record.GetEventLocation());
    return m_shapes.Add({RelayText(EventLine(record)), static_cast<Index>(KindOf(record)),
                         m_texts.Add(std::move(location)), RelayText(record.GetAuxText1()),
                         RelayText(record.GetAuxText2()), RelayText(record.GetAuxText3()),
                         record.GetEventCode(), FlagsOf(item, stamp)});
}

CReportData::Indexes CReportData::LinesOf(const CEventRecord& record) {
    Indexes lines;
    const Index none = m_texts.Add({});
    if (const auto* const simple = AsSimple(record)) {
        for (const std::string& line : SplitLines(simple->GetText())) {
            lines.insert(lines.end(), {none, RelayText(line)});
        }
        return lines;
    }
    const CCell* const valueCell = ValueCell(record);
    for (const auto& cell : AsExtended(record)->GetCells()) {
        const std::string bits = SetBitsText(*cell);
        if (cell.get() != valueCell || !bits.empty()) {
            const SCellTexts texts = CellTexts(*cell);
            const std::string value = texts.value + (bits.empty() ? "" : "  (" + bits + ")");
            lines.insert(lines.end(), {RelayText(texts.label), RelayText(value)});
        }
    }
    return lines;
}

void CReportData::SetTime(SEvent& event, const CParlaneIEC870& relayTime, const SShownStamp& stamp) {
    event.hasTime = stamp.hasTime;
    event.isDoubtful = stamp.isDoubtful;
    event.isFlagged = relayTime.IsSummerTime();
    if (event.hasTime) {
        event.time = stamp.moment;
        event.ahead = MillisecondsOf(relayTime) - stamp.moment;
        return;
    }
    std::string bytes;
    AppendHex(bytes, relayTime.GetOctets());
    event.time = m_texts.Add(std::move(bytes));
}

void CReportData::AddRecord(const SEventSource& source, const SDayFileItem& item, const SShownStamp& stamp) {
    const CEventRecord& record = *item.record;
    SEvent event;
    SetTime(event, record.GetTimeStamp(), stamp);
    event.file = FileIndex(source);
    event.shape = ShapeOf(item, stamp);
    const std::string flags = NamedFlags(record);
    event.value = RelayText(flags.empty() ? EventValueText(record) : flags);
    event.lines = m_lines.Add(LinesOf(record));
    event.offset = item.offset;
    event.id = record.GetUniqueId();
    m_events.push_back(event);
}

void CReportData::AddDamage(const SEventSource& source, const SDayFileDamage& damage) {
    m_damage.push_back({FileIndex(source), damage});
}

// Column by column, and numbers as the difference to the one before: that makes a small page which a browser
// unpacks quickly.
void CReportData::WriteEvents(CJsonWriter& json) const {
    const auto column = [&](std::string_view key, auto member) {
        WriteList(json, key, m_events, [&](const SEvent& event) { json.Number(event.*member); });
    };
    const auto deltas = [&](std::string_view key, auto member) { // within each file
        std::vector<std::int64_t> last(m_files.size());
        WriteList(json, key, m_events, [&](const SEvent& event) {
            const auto number = static_cast<std::int64_t>(event.*member);
            json.Signed(number - std::exchange(last[event.file], number));
        });
    };
    std::int64_t lastTime = 0;
    json.Key("events").Open('{');
    json.Key("timed").Number(
        static_cast<std::uint64_t>(std::ranges::count(m_events, true, &SEvent::hasTime)));
    WriteList(json, "time", m_events, [&](const SEvent& event) {
        json.Signed(event.hasTime ? event.time - std::exchange(lastTime, event.time) : event.time);
    });
    column("file", &SEvent::file);
    column("shape", &SEvent::shape);
    column("value", &SEvent::value);
    column("lines", &SEvent::lines);
    deltas("offset", &SEvent::offset);
    deltas("id", &SEvent::id);
    if (m_zone != nullptr) {
        WriteList(json, "ahead", m_events, [&](const SEvent& event) { json.Signed(event.ahead); });
        WriteList(json, "doubtful", m_events,
                  [&](const SEvent& event) { json.Number(IsDoubtful(event) ? 1U : 0U); });
    }
    json.Close('}');
}

/// By time, where there are several logs; a line without a time stays behind the one before it.
void CReportData::SortProblems() {
    std::vector<std::pair<std::string, std::size_t>> order; // time and place
    order.reserve(m_problems.size());
    std::size_t log = 0;
    for (std::size_t at = 0; at < m_problems.size(); ++at) {
        const bool hasBefore = at > 0 && m_problems[at].log == log;
        const std::string& time = m_problems[at].line.time;
        log = m_problems[at].log;
        order.emplace_back(time.empty() && hasBefore ? order.back().first : time, at);
    }
    if (log > 0) {
        std::ranges::sort(order);
        std::vector<SProblem> sorted;
        for (const auto& [time, at] : order) {
            sorted.push_back(std::move(m_problems[at]));
        }
        m_problems = std::move(sorted);
    }
}

void CReportData::WriteProblems(CJsonWriter& json) const {
    WriteList(json, "problems", m_problems, [&json](const SProblem& problem) {
        const SLogLine& line = problem.line;
        json.Open('[');
        for (const std::string& text :
             {line.time, line.message, ShortConnectionName(line.connection), line.status}) {
            json.Text(EscapeControls(text));
        }
        json.Number(problem.log);
        json.Signed(problem.mute ? static_cast<std::int64_t>(*problem.mute) : -1);
        json.Close(']');
    });
}

void CReportData::WriteMutes(CJsonWriter& json) const {
    WriteList(json, "mutes", m_mutes, [&](const SReportMute& mute) {
        const auto relay =
            std::ranges::find_if(m_relays, [&mute](const auto& entry) { return mute.isOf(entry.first); });
        json.Open('[');
        json.Signed(relay == m_relays.end() ? -1 : static_cast<std::int64_t>(relay->second));
        for (const std::string& text : {mute.label, mute.until, mute.why}) {
            json.Text(EscapeControls(text));
        }
        json.Close(']');
    });
}

bool CReportData::IsDoubtful(const SEvent& event) const {
    return event.isDoubtful && !m_flagging.Decide(m_files[event.file], event.isFlagged);
}

void CReportData::WriteZone(CJsonWriter& json, const std::string& name) const {
    constexpr std::int64_t kDay = std::int64_t{86'400} * 1000;
    constexpr std::int64_t kFirst = kDay * 365 * 10; // stamps have years from 1980 to 2099
    constexpr std::int64_t kLast = kDay * 366 * 130;
    json.Key("zone").Text(EscapeControls(name));
    json.Key("zone_ahead").Open('[');
    const auto ahead = [this](std::int64_t moment) { return m_zone->FromUtc(moment).milliseconds - moment; };
    std::optional<std::int64_t> last;
    for (std::int64_t day = kFirst; m_zone != nullptr && day < kLast; day += kDay) {
        if (last == ahead(day)) {
            continue;
        }
        std::int64_t before = day - kDay;
        std::int64_t from = day;
        while (last && from - before > 1) { // to the millisecond of the change
            const std::int64_t middle = before + (from - before) / 2;
            (ahead(middle) == *last ? before : from) = middle;
        }
        last = ahead(from);
        json.Open('[');
        json.Signed(from);
        json.Signed(*last);
        json.Close(']');
    }
    json.Close(']');
}

namespace {

/// What was asked for, in words.
void WriteHead(CJsonWriter& json, const SReportHead& head) {
    for (const auto& [key, text] : {std::pair<std::string_view, const std::string&>{"title", head.title},
                                    {"made", head.made},
                                    {"since", head.since},
                                    {"until", head.until},
                                    {"relay", head.relay},
                                    {"match", head.match}}) {
        json.Key(key).Text(EscapeControls(text));
    }
    WriteList(json, "logs", head.logs, [&json](std::string_view log) { json.Text(EscapeControls(log)); });
    json.Key("silent").Number(head.silentDays);
    json.Key("kinds").Open('[');
    for (std::size_t kind = 0; kind < kEventKindCount; ++kind) {
        json.Text(EventKindName(static_cast<EEventKind>(kind)));
    }
    json.Close(']');
}

} // namespace

void CReportData::WriteJson(std::string& out, const SReportHead& head) {
    std::ranges::stable_sort(m_events, [](const SEvent& a, const SEvent& b) {
        return a.hasTime != b.hasTime ? a.hasTime : a.hasTime && a.time < b.time;
    });
    SortProblems();
    std::vector<std::string_view> relays(m_relays.size());
    for (const auto& [name, index] : m_relays) {
        relays[index] = name;
    }
    CJsonWriter json(out);
    const auto writeText = [&json](std::string_view text) { json.Text(EscapeControls(text)); };
    json.Open('{');
    WriteHead(json, head);
    WriteList(json, "relays", relays, writeText);
    WriteList(json, "last_days", relays, [&](std::string_view relay) {
        const auto day = m_lastDays.find(std::string(relay));
        writeText(day == m_lastDays.end() ? std::string() : day->second);
    });
    WriteList(json, "files", m_files, [&](const SEventSource& source) {
        json.Open('[');
        json.Number(m_relays.at(source.relay));
        writeText(source.file);
        json.Close(']');
    });
    WriteList(json, "texts", m_texts.Items(), [&json](const std::string* text) { json.Text(*text); });
    WriteLists(json, "shapes", m_shapes.Items());
    WriteLists(json, "lists", m_lines.Items());
    WriteEvents(json);
    WriteList(json, "damage", m_damage, [&json](const SDamage& damage) {
        json.Open('[');
        json.Number(damage.file);
        json.Number(damage.range.offset);
        json.Number(damage.range.length);
        json.Text(DayFileFaultText(damage.range.fault));
        json.Close(']');
    });
    WriteList(json, "failures", m_failures, writeText);
    WriteProblems(json);
    WriteMutes(json);
    WriteZone(json, head.zone);
    json.Close('}');
}

} // namespace ruvo
