#include "tools/recording/whole_calls.h"

#include <utility>

namespace ruvo {

namespace {

constexpr std::uint8_t kCompletionSlot = 8;
constexpr std::uint8_t kCompletionSlotToo = 9;

std::optional<LinkStatus> StatusOf(const SRecordedValue& value) {
    const bool isNumber =
        value.kind == EValueKind::UI1 || value.kind == EValueKind::I2 || value.kind == EValueKind::I4;
    if (!isNumber && value.kind != EValueKind::Empty) {
        return std::nullopt;
    }
    return static_cast<LinkStatus>(value.number);
}

} // namespace

std::optional<std::int32_t> SWholeCall::NumberAt(std::size_t input, EValueKind kind) const {
    return input < inputs.size() && inputs[input].kind == kind ? std::optional(inputs[input].number)
                                                               : std::nullopt;
}

bool CWholeCalls::Next(SWholeCall& call) {
    for (SRecordingEntry entry; m_reader.Next(entry);) {
        if (entry.kind == ERecordingEntry::Call) {
            SWholeCall& open = m_open[entry.number];
            open.operation = entry.operation;
            open.inputs = std::move(entry.values);
            if (entry.operation->runsOn) {
                m_running.reset();
            }
        } else if (entry.kind == ERecordingEntry::Gap) {
            m_leftOut += entry.number;
        } else if ((entry.kind == ERecordingEntry::Reply && TakeReply(entry, call)) ||
                   (entry.kind == ERecordingEntry::Event && TakeEvent(entry, call))) {
            return true;
        }
    }
    return false;
}

/// True when that completes a call.
bool CWholeCalls::TakeReply(const SRecordingEntry& entry, SWholeCall& call) {
    auto node = m_open.extract(entry.number);
    if (node.empty()) {
        return false;
    }
    SWholeCall answered = std::move(node.mapped());
    const std::optional<LinkStatus> status = entry.isThrough ? StatusOf(entry.status) : std::nullopt;
    if (answered.operation->name.starts_with("Fetch")) {
        if (m_running && m_running->operation != nullptr) {
            call = *std::exchange(m_running, std::nullopt);
            call.fetchStatus = status.value_or(kLinkComFailure);
            call.outputs = entry.values;
            return true;
        }
        return false;
    }
    answered.status = status;
    answered.outputs = entry.values;
    if (answered.operation->runsOn && status == kLinkGood) {
        // The report may have come before the reply.
        const bool isEnded = m_running && m_running->operation == nullptr;
        answered.completion = isEnded ? m_running->completion : std::nullopt;
        m_running = std::move(answered);
        if (m_running->completion && (*m_running->completion != kLinkGood ||
                                      m_running->operation->operation == EOperation::ModemConnect)) {
            call = *std::exchange(m_running, std::nullopt);
            return true;
        }
        return false;
    }
    call = std::move(answered);
    return true;
}

/// The same of a report: one of a command's end completes it when there is nothing to fetch.
bool CWholeCalls::TakeEvent(const SRecordingEntry& entry, SWholeCall& call) {
    if ((entry.slot != kCompletionSlot && entry.slot != kCompletionSlotToo) || entry.values.empty()) {
        return false;
    }
    const LinkStatus status = StatusOf(entry.values.front()).value_or(kLinkComFailure);
    if (!m_running || m_running->completion) {
        m_running.emplace().completion = status; // of a call that has not come back yet
        return false;
    }
    m_running->completion = status;
    if (status != kLinkGood || m_running->operation->operation == EOperation::ModemConnect) {
        call = *std::exchange(m_running, std::nullopt);
        return true;
    }
    return false;
}

} // namespace ruvo
