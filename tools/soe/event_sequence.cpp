#include "tools/soe/event_sequence.h"

#include "tools/events/event_fields.h"
#include "tools/events/event_values.h"

#include <algorithm>
#include <utility>

namespace ruvo {

namespace {

/// The filter without its bounds, which are compared with another time.
SEventFilter TextsOf(const SEventFilter& filter) {
    SEventFilter texts = filter;
    texts.since.reset();
    texts.until.reset();
    return texts;
}

} // namespace

std::string SSequenceEvent::Marks() const {
    std::string marks = relayTime.IsInvalid() ? "?" : "";
    marks += isDoubtful ? "~" : "";
    return marks + (shownTime.IsSummerTime() ? "s" : "");
}

CEventSequence::CEventSequence(SSequenceQuestion question) : m_question(std::move(question)) {
    m_choice.match = m_question.zeroText;
}

void CEventSequence::SetMoment(SSequenceEvent& event) const {
    event.shownTime = event.relayTime;
    event.hasTime = IsRealTime(event.relayTime);
    if (!event.hasTime) {
        return;
    }
    event.moment = MillisecondsOf(event.relayTime);
    if (!m_question.hasClocks) {
        return;
    }
    event.isDoubtful = event.source.clock == nullptr;
    if (event.source.clock != nullptr) {
        const SMoment moment = event.source.clock->ToUtc(event.moment, event.relayTime.IsSummerTime());
        event.moment = moment.utc;
        event.isDoubtful = moment.isDoubtful;
    }
    const SShownTime shown = m_question.zone.FromUtc(event.moment);
    event.shownTime = StampOf(shown.milliseconds);
    event.shownTime.SetSummerTime(shown.isSummerTime);
}

bool CEventSequence::IsWithin(const SSequenceEvent& event) const {
    const TimeKey key = TimeKeyOf(event.shownTime);
    const SEventFilter& filter = m_question.filter;
    return (!filter.since || key >= *filter.since) && (!filter.until || key <= *filter.until);
}

void CEventSequence::Add(const SEventSource& source, const SDayFileItem& item) {
    const CEventRecord& record = *item.record;
    if (record.GetTimeStamp().IsSummerTime()) {
        m_flagging.emplace(source.site, source.relay);
    }
    if (!TextsOf(m_question.filter).MatchesRecord(record)) {
        return;
    }
    SSequenceEvent event;
    event.source = source;
    event.offset = item.offset;
    event.relayTime = record.GetTimeStamp();
    SetMoment(event);
    if (!IsWithin(event)) {
        return;
    }
    event.plant = record.GetAuxText1();
    event.event = EventLine(record);
    event.value = MeasuredValueOf(record);
    event.isChoice = !m_choice.match.empty() && m_choice.MatchesRecord(record);
    m_events.push_back(std::move(event));
}

void CEventSequence::SettleDoubts() {
    for (SSequenceEvent& event : m_events) {
        const bool isUnflagged = event.source.clock != nullptr && !event.relayTime.IsSummerTime();
        event.isDoubtful = event.isDoubtful &&
                           !(isUnflagged && m_flagging.contains({event.source.site, event.source.relay}));
    }
}

bool CEventSequence::FindZero() {
    if (m_question.zeroTime) {
        const std::int64_t shown = MillisecondsOf(FieldsOf(*m_question.zeroTime));
        m_zero = m_question.hasClocks ? m_question.zone.ToUtc(shown, false).utc : shown;
        return true;
    }
    if (m_question.zeroText.empty()) {
        return true;
    }
    const auto chosen = std::ranges::find_if(
        m_events, [](const SSequenceEvent& event) { return event.isChoice && event.hasTime; });
    if (chosen == m_events.end()) {
        return false;
    }
    m_zero = chosen->moment;
    m_isZeroDoubted = chosen->IsDoubted();
    return true;
}

bool CEventSequence::Finish() {
    std::ranges::stable_sort(m_events, [](const SSequenceEvent& a, const SSequenceEvent& b) {
        return a.hasTime != b.hasTime ? a.hasTime : a.hasTime && a.moment < b.moment;
    });
    SettleDoubts();
    if (!FindZero()) {
        return false;
    }
    const SSequenceEvent* last = nullptr;
    for (SSequenceEvent& event : m_events) {
        if (!event.hasTime) {
            break;
        }
        if (last != nullptr) {
            event.sinceLast = event.moment - last->moment;
        }
        if (m_zero) {
            event.fromZero = event.moment - *m_zero;
        }
        last = &event;
    }
    return true;
}

} // namespace ruvo
