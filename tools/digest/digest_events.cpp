#include "tools/digest/digest_events.h"

#include "tools/events/day_file_walk.h"
#include "tools/events/event_fields.h"
#include "tools/events/event_filter.h"
#include "tools/events/event_values.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <map>

namespace ruvo {

namespace {

std::string TimeText(const CParlaneIEC870& time) {
    std::string text;
    if (IsRealTime(time)) {
        AppendTime(text, time, ' ');
    } else {
        text = "no time";
    }
    return text + (time.IsInvalid() ? "?" : time.IsSummerTime() ? "s" : "");
}

/// "Fault current 1.25 kA; set: Start, Trip" of an extended record.
std::string DetailsOf(const CEventRecord& record) {
    const auto* const extended = AsExtended(record);
    if (extended == nullptr) {
        return {};
    }
    const CCell* const valueCell = ValueCell(record);
    std::string text;
    const auto add = [&text](const std::string& part) {
        text += (text.empty() || part.empty() ? "" : "; ") + part;
    };
    for (const auto& cell : extended->GetCells()) {
        if (cell.get() != valueCell) {
            const SCellTexts texts = CellTexts(*cell);
            add(ReadableRelayLine(texts.label + ' ' + texts.value));
        }
        if (const std::string bits = SetBitsText(*cell); !bits.empty()) {
            add("set: " + ReadableRelayLine(bits));
        }
    }
    return text;
}

/// Whether an event of that time can have come in on that day. Memories of relays are not read for years, and
/// no clock is more than a day ahead of UTC.
bool IsPossible(const CParlaneIEC870& time, const std::string& day) {
    constexpr std::int64_t kLongestWait = 366;
    constexpr std::int64_t kFarthestZone = 1;
    const auto came = DayNumber(day);
    if (!came || !IsRealTime(time)) {
        return true; // or there is nothing to say of it
    }
    std::string text;
    AppendTime(text, time, 'T');
    const auto was = DayNumber(text.substr(0, text.find('T')));
    return !was || (*was >= *came - kLongestWait && *was <= *came + kFarthestZone);
}

class CBays {
public:
    explicit CBays(const SSiteVisits& visits) : m_visits(visits) {}

    /// `day` is that of the day file.
    void AddRecord(const std::string& relay, const std::string& day, const CEventRecord& record) {
        SBay& bay = Of(relay);
        if (!IsPossible(record.GetTimeStamp(), day) && bay.bay.oddTimes++ == 0) {
            bay.bay.oddTime = TimeText(record.GetTimeStamp());
        }
        const std::string event = ReadableRelayLine(EventLine(record));
        const EEventKind kind = EventKindOf(event);
        ++bay.bay.counts[static_cast<std::size_t>(kind)];
        bay.plant = bay.plant.empty() ? ReadableRelayLine(record.GetAuxText1()) : bay.plant;
        bay.description = bay.description.empty() ? ReadableRelayLine(record.GetAuxText2()) : bay.description;
        if ((kind == EEventKind::Trip || kind == EEventKind::Fault) &&
            bay.events.size() < SDigestBay::kMostEvents) {
            bay.events.emplace_back(TimeKeyOf(record.GetTimeStamp()),
                                    SDigestEvent{TimeText(record.GetTimeStamp()), kind, event,
                                                 ReadableRelayLine(EventValueText(record)),
                                                 DetailsOf(record)});
        }
    }
    void AddDamage(const std::string& relay) { ++Of(relay).bay.damaged; }

    std::vector<SDigestBay> Take() {
        std::vector<SDigestBay> bays;
        for (auto& [relay, bay] : m_bays) {
            std::ranges::stable_sort(bay.events, {}, &std::pair<TimeKey, SDigestEvent>::first);
            for (auto& [key, event] : bay.events) {
                bay.bay.events.push_back(std::move(event));
            }
            bay.bay.label = !bay.plant.empty()         ? bay.plant
                            : !bay.description.empty() ? bay.description
                                                       : relay;
            bays.push_back(std::move(bay.bay));
        }
        std::ranges::stable_sort(bays, [](const SDigestBay& a, const SDigestBay& b) {
            return std::pair(a.Grave(), a.damaged) > std::pair(b.Grave(), b.damaged);
        });
        return bays;
    }

private:
    struct SBay {
        SDigestBay bay;
        std::string plant;
        std::string description;
        std::vector<std::pair<TimeKey, SDigestEvent>> events;
    };

    SBay& Of(const std::string& relay) {
        const auto [at, isNew] = m_bays.try_emplace(relay);
        if (isNew) {
            const auto known = std::ranges::find_if(
                m_visits.relays, [&relay](const SRelayVisit& visit) { return visit.HasFilesOf(relay); });
            at->second.bay.name = EscapeControls(relay);
            if (known != m_visits.relays.end()) {
                at->second.bay.key = known->key;
                at->second.plant = EscapeControls(known->plant);
            }
        }
        return at->second;
    }

    const SSiteVisits& m_visits;
    std::map<std::string, SBay> m_bays; ///< by name
};

} // namespace

void ReadDigestEvents(const SFoundFiles& found, const SSiteVisits& visits, SSiteDigest& digest,
                      SConsole& console) {
    CBays bays(visits);
    CDayFileWalk walk(console);
    walk.Read(found, [&](const SEventSource& source, const SDayFileItem& item, CProgress& /*progress*/) {
        if (item.record != nullptr) {
            bays.AddRecord(source.relay,
                           DayOfFileName(source.file.substr(source.file.find_last_of("/\\") + 1)),
                           *item.record);
        }
        if (item.damage && item.damage->fault == EDayFileFault::ReadFailed) {
            digest.failures.push_back(EscapeControls(source.file) + ": could not be read to the end");
        } else if (item.damage) {
            bays.AddDamage(source.relay);
        }
    });
    digest.failures.insert(digest.failures.end(), walk.Failures().begin(), walk.Failures().end());
    digest.bays = bays.Take();
}

} // namespace ruvo
