#include "sim/server/playback.h"

#include "link/recording/call_recorder.h"
#include "link/recording/recording_text.h"
#include "link/seam/link_status.h"
#include "platform/full_path.h"

#include <algorithm>
#include <utility>

namespace ruvo::sim {

namespace {

constexpr std::uint8_t kCompletionSlot = 8;
constexpr std::uint8_t kCompletionSlotToo = 9;

std::string CallNumber(std::uint64_t number) {
    return "call " + std::to_string(number);
}

Variant::Bytes EncodedValues(const std::vector<SRecordedValue>& values) {
    Variant::Bytes bytes;
    AppendValues(bytes, values);
    return bytes;
}

} // namespace

CPlayback::CPlayback(Variant::Bytes bytes, std::function<void(const std::string&)> report)
    : m_bytes(std::move(bytes)), m_report(std::move(report)), m_reader(m_bytes),
      m_thread([this] { PlayReports(); }) {
    const std::lock_guard lock(m_mutex);
    Advance();
    m_changed.notify_all();
}

CPlayback::~CPlayback() {
    {
        const std::lock_guard lock(m_mutex);
        m_isStopping = true;
    }
    m_changed.notify_all();
    m_thread.join();
    std::uint64_t left = 0;
    for (; m_hasNext; Advance()) {
        left += m_next.kind == ERecordingEntry::Call ? 1 : 0;
    }
    // (A connection without a call only tried whether the server starts.)
    if (!m_isBroken && m_made > 0 && left > 0) {
        m_report("the recording has " + std::to_string(left) + " more calls, from " + CallNumber(m_made + 1) +
                 " on");
    }
}

bool CPlayback::Advise(IP32lsSink_v2& sink, std::uint32_t& cookie) {
    cookie = m_sinks.Add(sink);
    return true;
}

/// Goes to the next entry. The end of the recording is none.
void CPlayback::Advance() {
    m_hasNext = m_reader.Next(m_next) && m_next.kind != ERecordingEntry::End;
}

void CPlayback::Break(const std::string& why) {
    if (!m_isBroken) {
        m_isBroken = true;
        m_report(why);
    }
}

bool CPlayback::IsTheSame(const SOperationRow& operation, const Variant::Bytes& made) const {
    return m_next.operation == &operation && EncodedValues(m_next.values) == made;
}

/// Says what was expected in place of the call that was made.
void CPlayback::ExplainDifference(const SOperationRow& operation, const std::vector<SRecordedValue>& made) {
    const std::string call = CallNumber(m_made);
    if (m_hasNext && m_next.kind == ERecordingEntry::Call) {
        Break(call + " differs: recorded " + CallText(*m_next.operation, m_next.values) + "; made " +
              CallText(operation, made));
    } else if (m_hasNext && m_next.kind == ERecordingEntry::Gap) {
        Break(call + " cannot be played: " + std::to_string(m_next.number) +
              " entries of the recording were left out");
    } else if (!m_reader.Error().empty()) {
        Break(call + " cannot be played: " + m_reader.Error());
    } else {
        Break(call + " is not in the recording: " + CallText(operation, made));
    }
}

EComResult CPlayback::Call(EOperation operation, Inputs inputs, Outputs outputs, Variant& status) {
    std::unique_lock lock(m_mutex);
    const SOperationRow& row = OperationRow(operation);
    // Reports come first that were recorded before this call; one out of a report comes in between.
    if (std::this_thread::get_id() != m_thread.get_id()) {
        m_changed.wait(lock, [this] { return m_isBroken || m_inside > 0 || !IsReportDue(); });
    }
    ++m_made;
    const std::vector<SRecordedValue> made = m_masking.MaskInputs(operation, inputs);
    const bool isCall = m_hasNext && m_next.kind == ERecordingEntry::Call;
    if (m_isBroken || !isCall || !IsTheSame(row, EncodedValues(made))) {
        ExplainDifference(row, made);
        m_changed.notify_all();
        return EComResult::Failed;
    }
    const std::uint64_t number = m_next.number;
    Advance();
    ++m_inside;
    const std::uint64_t completed = m_completed;
    const EComResult result = PlayReply(lock, number, outputs, status);
    --m_inside;
    // What is complete before the call has returned is not awaited any more.
    m_isAwaited = m_isAwaited || (row.runsOn && result == EComResult::Ok && status == Variant::FromI4(0) &&
                                  m_completed == completed);
    m_changed.notify_all();
    return result;
}

/// What was recorded up to the reply of the call, in its order.
EComResult CPlayback::PlayReply(std::unique_lock<std::mutex>& lock, std::uint64_t number, Outputs outputs,
                                Variant& status) {
    while (m_hasNext && m_next.kind == ERecordingEntry::Event) {
        PlayReport(lock);
    }
    const bool isReply = m_hasNext && m_next.kind == ERecordingEntry::Reply && m_next.number == number;
    if (!isReply || (m_next.isThrough && m_next.values.size() != outputs.size())) {
        Break(CallNumber(number) + " has no reply in the recording" +
              (m_reader.Error().empty() ? "" : ": " + m_reader.Error()));
        return EComResult::Failed;
    }
    const bool isThrough = m_next.isThrough;
    if (isThrough) {
        status = ToVariant(m_next.status);
        for (std::size_t i = 0; i < outputs.size(); ++i) {
            *outputs.begin()[i] = ToVariant(m_next.values[i]);
        }
    }
    Advance();
    return isThrough ? EComResult::Ok : EComResult::Failed;
}

/// Reports the next entry to the sinks, which may call the server.
void CPlayback::PlayReport(std::unique_lock<std::mutex>& lock) {
    const std::uint8_t slot = m_next.slot;
    Variant values[2];
    for (std::size_t i = 0; i < std::size(values) && i < m_next.values.size(); ++i) {
        values[i] = ToVariant(m_next.values[i]);
    }
    const bool completes = slot == kCompletionSlot || slot == kCompletionSlotToo;
    m_isAwaited = m_isAwaited && !completes;
    m_completed += completes ? 1 : 0;
    Advance();
    lock.unlock();
    m_sinks.Report(slot, values[0], values[1]);
    lock.lock();
}

bool CPlayback::IsReportDue() const {
    return m_isReporting || (m_hasNext && m_next.kind == ERecordingEntry::Event) ||
           (!m_hasNext && m_isAwaited);
}

/// Reports that come while no call is being made come on a thread of their own, as the server's do.
void CPlayback::PlayReports() {
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] {
            return m_isStopping || (m_inside == 0 && !m_isBroken && !m_isReporting && IsReportDue());
        });
        if (m_isStopping) {
            return;
        }
        m_isReporting = true;
        if (m_hasNext) {
            PlayReport(lock);
        } else {
            EndAwaited(lock);
        }
        m_isReporting = false;
        m_changed.notify_all();
    }
}

/// The recording ends while a command runs: the program was killed, and here nothing would ever wake it.
void CPlayback::EndAwaited(std::unique_lock<std::mutex>& lock) {
    m_isAwaited = false;
    Break("the recording ends before what " + CallNumber(m_made) + " started is complete");
    lock.unlock();
    m_sinks.Report(kCompletionSlot, Variant::FromI4(static_cast<std::int32_t>(kLinkComFailure)), {});
    lock.lock();
}

namespace {

/// False when the file does not begin as a recording. The reason is empty when it can be played.
bool ReadPlayed(const std::string& path, Variant::Bytes& bytes, std::string& reason) {
    if (ReadRecordingFile(FullPath(path), bytes) != ERecordingRead::Read) {
        return false;
    }
    const CRecordingReader head(bytes);
    reason = head.Error().empty() ? std::string() : DisplayPath(path) + ": " + head.Error();
    return true;
}

} // namespace

std::unique_ptr<CPlayback> ConnectToRecording(const std::string& path, bool& isRecording, std::string& error,
                                              std::function<void(const std::string&)> report) {
    Variant::Bytes bytes;
    isRecording = ReadPlayed(path, bytes, error);
    if (!isRecording || !error.empty()) {
        return nullptr;
    }
    return std::make_unique<CPlayback>(
        std::move(bytes), [name = DisplayPath(path), report = std::move(report)](const std::string& line) {
            report(name + ": " + line);
        });
}

std::string WhyNotPlayed(const std::string& path, bool& isRecording) {
    Variant::Bytes bytes;
    std::string reason;
    isRecording = ReadPlayed(path, bytes, reason);
    return reason;
}

} // namespace ruvo::sim
