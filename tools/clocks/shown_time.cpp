#include "tools/clocks/shown_time.h"

#include "tools/events/event_fields.h"

namespace ruvo {

SShownStamp ShowStamp(const CParlaneIEC870& relayTime, const CZoneRule* clock, const CZoneRule* zone) {
    SShownStamp shown;
    shown.time = relayTime;
    shown.hasTime = IsRealTime(relayTime);
    if (!shown.hasTime) {
        return shown;
    }
    shown.moment = MillisecondsOf(relayTime);
    if (zone == nullptr) {
        return shown;
    }
    shown.isDoubtful = clock == nullptr;
    if (clock != nullptr) {
        const SMoment moment = clock->ToUtc(shown.moment, relayTime.IsSummerTime());
        shown.moment = moment.utc;
        shown.isDoubtful = moment.isDoubtful;
    }
    const SShownTime time = zone->FromUtc(shown.moment);
    shown.time = StampOf(time.milliseconds);
    shown.time.SetSummerTime(time.isSummerTime);
    return shown;
}

bool IsWithin(const SEventFilter& filter, const CParlaneIEC870& shown) {
    const TimeKey key = TimeKeyOf(shown);
    return (!filter.since || key >= *filter.since) && (!filter.until || key <= *filter.until);
}

SEventFilter TextsOf(const SEventFilter& filter) {
    SEventFilter texts = filter;
    texts.since.reset();
    texts.until.reset();
    return texts;
}

void CFlaggingRelays::Note(const SEventSource& source, const CParlaneIEC870& relayTime) {
    if (relayTime.IsSummerTime()) {
        m_relays.emplace(source.site, source.relay);
    }
}

bool CFlaggingRelays::Decide(const SEventSource& source, bool isFlagged) const {
    return source.clock != nullptr && !isFlagged && m_relays.contains({source.site, source.relay});
}

} // namespace ruvo
