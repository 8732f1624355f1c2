#include "link/recording/call_recorder.h"

#include <algorithm>

namespace ruvo {

namespace {

/// A status, or what an event reports, is a number; anything else counts as none, whatever it is.
SRecordedValue NumberOrOther(const Variant& value) {
    std::int32_t number = 0;
    if (value.AsText() == nullptr) {
        return value.ToI4(number) ? RecordedValue(value) : RecordedValue(Variant::Other());
    }
    return RecordedValue(value.ToI4(number) ? Variant::FromI4(number) : Variant::Other());
}

} // namespace

void AppendValues(Variant::Bytes& out, const std::vector<SRecordedValue>& values) {
    AppendNumber(out, values.size());
    for (const SRecordedValue& value : values) {
        AppendValue(out, value);
    }
}

CCallRecorder::~CCallRecorder() {
    const std::lock_guard lock(m_mutex);
    m_file.End(ERecordingEnd::Closed);
}

std::uint64_t CCallRecorder::Now() const {
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - m_begin)
            .count());
}

std::uint64_t CCallRecorder::ThreadNumber() {
    const auto self = std::this_thread::get_id();
    const auto found = std::ranges::find(m_threads, self);
    const auto number = static_cast<std::uint64_t>(found - m_threads.begin()) + 1;
    if (found == m_threads.end()) {
        m_threads.push_back(self);
    }
    return number;
}

void CCallRecorder::AppendTimeAndThread() {
    AppendNumber(m_body, Now());
    AppendNumber(m_body, ThreadNumber());
}

template <class Fill>
void CCallRecorder::Note(ERecordingEntry kind, Fill fill) noexcept {
    try {
        m_body.clear();
        fill();
        m_file.Append(kind, m_body);
    } catch (...) { // NOLINT(bugprone-empty-catch): no memory for the entry; the call goes on
    }
}

std::uint64_t CCallRecorder::NoteCall(EOperation operation, CMasking::Inputs inputs) noexcept {
    const std::lock_guard lock(m_mutex);
    const std::uint64_t number = ++m_calls;
    Note(ERecordingEntry::Call, [&] {
        AppendNumber(m_body, number);
        AppendTimeAndThread();
        m_body.push_back(OperationRow(operation).slot);
        AppendValues(m_body, m_masking.MaskInputs(operation, inputs));
    });
    return number;
}

void CCallRecorder::NoteReply(std::uint64_t number, EOperation operation, CMasking::Inputs inputs,
                              EComResult result, const Variant& status, CMasking::Outputs outputs) noexcept {
    const std::lock_guard lock(m_mutex);
    Note(ERecordingEntry::Reply, [&] {
        const bool isThrough = result == EComResult::Ok;
        AppendNumber(m_body, number);
        AppendTimeAndThread();
        m_body.push_back(isThrough ? 1 : 0);
        if (isThrough) {
            AppendValue(m_body, NumberOrOther(status));
            AppendValues(m_body, m_masking.MaskOutputs(operation, inputs, outputs));
        }
    });
}

void CCallRecorder::NoteEvent(std::uint8_t slot, CMasking::Inputs values) noexcept {
    const std::lock_guard lock(m_mutex);
    Note(ERecordingEntry::Event, [&] {
        AppendTimeAndThread();
        m_body.push_back(slot);
        std::vector<SRecordedValue> recorded;
        for (const Variant* value : values) {
            recorded.push_back(NumberOrOther(*value));
        }
        AppendValues(m_body, recorded);
    });
}

} // namespace ruvo
