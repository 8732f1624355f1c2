// Turns calls into the entries of a recording.
#pragma once

#include "link/recording/masking.h"
#include "link/recording/recording_file.h"
#include "link/seam/ip32ls.h"

#include <chrono>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

namespace ruvo {

/// Safe for use by several threads. Nothing is thrown, and no call learns what comes of its entries.
class CCallRecorder {
public:
    CCallRecorder() = default;
    CCallRecorder(const CCallRecorder&) = delete;
    CCallRecorder& operator=(const CCallRecorder&) = delete;
    ~CCallRecorder();

    SFileResult Begin(const SRecordingPlan& plan) { return m_file.Make(plan); }
    [[nodiscard]] const std::string& Path() const { return m_file.Path(); }

    /// The call's number, from 1.
    std::uint64_t NoteCall(EOperation operation, CMasking::Inputs inputs) noexcept;
    void NoteReply(std::uint64_t number, EOperation operation, CMasking::Inputs inputs, EComResult result,
                   const Variant& status, CMasking::Outputs outputs) noexcept;
    void NoteEvent(std::uint8_t slot, CMasking::Inputs values) noexcept;

private:
    template <class Fill>
    void Note(ERecordingEntry kind, Fill fill) noexcept;
    std::uint64_t Now() const;
    std::uint64_t ThreadNumber();
    void AppendTimeAndThread();

    std::mutex m_mutex; ///< of all below
    CRecordingFile m_file;
    CMasking m_masking;
    std::uint64_t m_calls = 0;
    std::vector<std::thread::id> m_threads; ///< in the order in which they came
    Variant::Bytes m_body;                  ///< of the entry at hand; its memory is kept
    const std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
};

/// The values of one side of a call, as a recording has them.
void AppendValues(Variant::Bytes& out, const std::vector<SRecordedValue>& values);

} // namespace ruvo
