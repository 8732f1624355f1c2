#include "tools/soe/event_sequence.h"

#include "tools/events/event_fields.h"
#include "tools/events/event_values.h"

#include <algorithm>
#include <utility>

namespace ruvo {

std::string SSequenceEvent::Marks() const {
    std::string marks = relayTime.IsInvalid() ? "?" : "";
    marks += isDoubtful ? "~" : "";
    return marks + (shownTime.IsSummerTime() ? "s" : "");
}

CEventSequence::CEventSequence(SSequenceQuestion question) : m_question(std::move(question)) {
    m_choice.match = m_question.zeroText;
}

void CEventSequence::Add(const SEventSource& source, const SDayFileItem& item) {
    const CEventRecord& record = *item.record;
    m_flagging.Note(source, record.GetTimeStamp());
    if (!TextsOf(m_question.filter).MatchesRecord(record)) {
        return;
    }
    SSequenceEvent event;
    event.source = source;
    event.offset = item.offset;
    event.relayTime = record.GetTimeStamp();
    const SShownStamp shown =
        ShowStamp(event.relayTime, source.clock, m_question.hasClocks ? &m_question.zone : nullptr);
    if (!IsWithin(m_question.filter, shown.time)) {
        return;
    }
    event.hasTime = shown.hasTime;
    event.moment = shown.moment;
    event.isDoubtful = shown.isDoubtful;
    event.shownTime = shown.time;
    event.plant = record.GetAuxText1();
    event.event = EventLine(record);
    event.value = MeasuredValueOf(record);
    event.isChoice = !m_choice.match.empty() && m_choice.MatchesRecord(record);
    m_events.push_back(std::move(event));
}

void CEventSequence::SettleDoubts() {
    for (SSequenceEvent& event : m_events) {
        event.isDoubtful =
            event.isDoubtful && !m_flagging.Decide(event.source, event.relayTime.IsSummerTime());
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
