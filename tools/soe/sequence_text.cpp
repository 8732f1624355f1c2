// A sequence of events for reading: a line for the day, and below it the events with the time of day.
#include "tools/events/event_fields.h"
#include "tools/soe/sequence_output.h"
#include "tools/text_columns.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace ruvo {

namespace {

constexpr std::size_t kDateSize = 10; // "2026-11-16"
constexpr std::size_t kWidestRelay = 24;
constexpr std::size_t kWidestSite = 12;
constexpr std::size_t kNarrowest = 8; ///< of the event's and the value's column

struct SMark {
    char mark;
    std::string_view meaning;
};
constexpr std::array kMarks{
    SMark{'?', "the relay reports its clock as unreliable"},
    SMark{'~',
          "the moment in UTC may be wrong: an hour that the clock shows twice or skips, or an unknown zone"},
    SMark{'s', "summer time"},
};

using RelayKey = std::pair<std::string, std::string>; // site and name

/// What people call the relays: their plant, with the name where two have the same.
std::map<RelayKey, std::string> LabelsOf(const std::vector<SSequenceEvent>& events) {
    std::map<RelayKey, std::string> labels;
    for (const SSequenceEvent& event : events) {
        std::string plant = ReadableRelayLine(event.plant);
        std::string& label = labels[{event.source.site, event.source.relay}];
        label = plant.empty() ? std::move(label) : std::move(plant);
    }
    std::map<RelayKey, std::size_t> uses; // of a label in a site
    for (const auto& [relay, label] : labels) {
        ++uses[{relay.first, label}];
    }
    for (auto& [relay, label] : labels) {
        const std::string name = EscapeControls(relay.second);
        label = label.empty() ? name : uses[{relay.first, label}] > 1 ? label + " " + name : label;
    }
    return labels;
}

class CSequenceText {
public:
    CSequenceText(const CEventSequence& sequence, std::size_t width)
        : m_sequence(sequence), m_labels(LabelsOf(sequence.Events())) {
        std::set<std::string> sites;
        std::size_t relay = 0;
        for (const auto& [key, label] : m_labels) {
            sites.insert(EscapeControls(key.first));
            relay = std::max(relay, ColumnsOf(label));
        }
        m_hasSites = sites.size() > 1;
        for (const std::string& site : sites) {
            m_site = std::max(m_site, ColumnsOf(site));
        }
        m_site = std::min(m_site, kWidestSite);
        m_relay = std::clamp(relay, std::string_view("relay").size(), kWidestRelay);
        MeasureDeltas();
        const std::size_t taken = kTime + 2 + m_delta + 2 + (m_sequence.HasZero() ? m_zero + 2 : 0) +
                                  (m_hasSites ? m_site + 2 : 0) + m_relay + 2 + 2;
        const std::size_t rest = std::max(width > taken ? width - taken : 0, 2 * kNarrowest);
        m_value = std::max(rest * 2 / 5, kNarrowest);
        m_event = rest - m_value;
    }

    void PrintHead(std::string& out) const {
        Print(out, {"time", "delta", "from zero", "site", "relay", "event", "value"});
    }

    void PrintEvent(std::string& out, const SSequenceEvent& event) {
        const bool isDoubted = event.IsDoubted();
        SRow row;
        row.time = TimeOfDay(event) + event.Marks();
        row.delta = event.sinceLast ? DeltaText(*event.sinceLast) + Doubt(isDoubted || m_wasDoubted) : "";
        row.zero =
            event.fromZero ? DeltaText(*event.fromZero) + Doubt(isDoubted || m_sequence.IsZeroDoubted()) : "";
        row.site = EscapeControls(event.source.site);
        row.relay = m_labels.at({event.source.site, event.source.relay});
        row.event = ReadableRelayLine(event.event);
        row.value = ReadableRelayLine(event.value.set.empty() ? event.value.text : event.value.set);
        m_wasDoubted = isDoubted;
        Print(out, row);
    }

private:
    struct SRow {
        std::string time;
        std::string delta;
        std::string zero;
        std::string site;
        std::string relay;
        std::string event;
        std::string value;
    };
    static constexpr std::size_t kTime = std::string_view("03:12:45.123?~s").size();

    /// As wide without a doubt, so that the digits align.
    static const char* Doubt(bool isDoubted) { return isDoubted ? "?" : " "; }

    static std::string TimeOfDay(const SSequenceEvent& event) {
        std::string text;
        if (!event.hasTime) {
            AppendHex(text, event.relayTime.GetOctets());
            return text;
        }
        AppendTime(text, event.shownTime, ' ');
        return text.substr(kDateSize + 1);
    }

    void MeasureDeltas() {
        for (const SSequenceEvent& event : m_sequence.Events()) {
            if (event.sinceLast) {
                m_delta = std::max(m_delta, DeltaText(*event.sinceLast).size() + 1);
            }
            if (event.fromZero) {
                m_zero = std::max(m_zero, DeltaText(*event.fromZero).size() + 1);
            }
        }
    }

    void Print(std::string& out, const SRow& row) const {
        std::vector<STextColumn> columns{{row.time, kTime}, {row.delta, m_delta, true}};
        if (m_sequence.HasZero()) {
            columns.push_back({row.zero, m_zero, true});
        }
        if (m_hasSites) {
            columns.push_back({row.site, m_site});
        }
        columns.push_back({row.relay, m_relay});
        columns.push_back({row.event, m_event});
        columns.push_back({row.value, m_value});
        AppendColumns(out, columns);
    }

    const CEventSequence& m_sequence;
    std::map<RelayKey, std::string> m_labels;
    bool m_hasSites = false;
    std::size_t m_delta = std::string_view("delta").size();
    std::size_t m_zero = std::string_view("from zero").size();
    std::size_t m_site = std::string_view("site").size();
    std::size_t m_relay = 0;
    std::size_t m_event = 0;
    std::size_t m_value = 0;
    bool m_wasDoubted = false;
};

std::string DayOf(const SSequenceEvent& event) {
    if (!event.hasTime) {
        return "no time";
    }
    std::string text;
    AppendTime(text, event.shownTime, ' ');
    return text.substr(0, kDateSize);
}

/// What the marks mean that occur.
void PrintLegend(CTextOutput& out, const std::vector<SSequenceEvent>& events) {
    std::string used;
    for (const SSequenceEvent& event : events) {
        for (const char mark : event.Marks()) {
            used += used.find(mark) == std::string::npos ? std::string(1, mark) : "";
        }
    }
    out.Write(used.empty() ? "" : "\n");
    for (const SMark& mark : kMarks) {
        if (used.find(mark.mark) != std::string::npos) {
            out.Write(std::string(1, mark.mark) + "  " + std::string(mark.meaning) + "\n");
        }
    }
}

} // namespace

std::string DeltaText(std::int64_t delta) {
    constexpr std::int64_t kSecond = 1000;
    constexpr std::int64_t kMinute = 60 * kSecond;
    constexpr std::int64_t kHour = 60 * kMinute;
    constexpr std::int64_t kDay = 24 * kHour;
    const char* const sign = delta < 0 ? "-" : "+";
    const std::int64_t length = delta < 0 ? -delta : delta;
    const auto part = [length](std::int64_t unit, std::int64_t whole) {
        return static_cast<int>(length % whole / unit);
    };
    std::array<char, 48> text{};
    const auto print = [&text](const char* form, auto... numbers) {
        std::snprintf(text.data(), text.size(), form, numbers...);
        return std::string(text.data());
    };
    const int milliseconds = part(1, kSecond);
    const int seconds = part(kSecond, kMinute);
    const int minutes = part(kMinute, kHour);
    const int hours = part(kHour, kDay);
    if (length < kMinute) {
        return print("%s%d.%03d", sign, seconds, milliseconds);
    }
    if (length < kHour) {
        return print("%s%d:%02d.%03d", sign, minutes, seconds, milliseconds);
    }
    if (length < kDay) {
        return print("%s%d:%02d:%02d.%03d", sign, hours, minutes, seconds, milliseconds);
    }
    return print("%s%dd %02d:%02d:%02d.%03d", sign, static_cast<int>(length / kDay), hours, minutes, seconds,
                 milliseconds);
}

void PrintSequenceAsText(CTextOutput& out, const CEventSequence& sequence, std::string_view zone,
                         std::size_t width) {
    CSequenceText text(sequence, width);
    out.Write(zone.empty() ? "Times as the relays' clocks show them.\n"
                           : "Times in " + EscapeControls(zone) + ".\n");
    text.PrintHead(out.Text());
    std::string day;
    for (const SSequenceEvent& event : sequence.Events()) {
        if (const std::string next = DayOf(event); next != day) {
            day = next;
            out.Write(day + "\n");
        }
        text.PrintEvent(out.Text(), event);
        out.FlushIfFull();
    }
    PrintLegend(out, sequence.Events());
}

} // namespace ruvo
