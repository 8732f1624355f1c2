// A comms server that plays a recording back, call by call.
#pragma once

#include "link/recording/masking.h"
#include "link/recording/recording.h"
#include "link/seam/server_connection.h"
#include "link/seam/uniform_server.h"
#include "sim/server/sink_list.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace ruvo::sim {

/// Answers the recorded calls, in their order, with the recorded replies and reports, as fast as they are
/// asked for. What is masked counts as the same. The first call that differs is reported with its number; it
/// and all that follow fail, as if the server were gone.
class CPlayback final : public IServerConnection, private CUniformServer {
public:
    /// `report` gets a line without the file's name; it is called from any thread.
    CPlayback(Variant::Bytes bytes, std::function<void(const std::string&)> report);
    CPlayback(const CPlayback&) = delete;
    CPlayback& operator=(const CPlayback&) = delete;
    ~CPlayback() override;

    IP32ls& Server() override { return *this; }
    bool Advise(IP32lsSink_v2& sink, std::uint32_t& cookie) override;
    void Unadvise(std::uint32_t cookie) override { m_sinks.Remove(cookie); }

private:
    EComResult Call(EOperation operation, Inputs inputs, Outputs outputs, Variant& status) override;
    bool IsTheSame(const SOperationRow& operation, const Variant::Bytes& made) const;
    void ExplainDifference(const SOperationRow& operation, const std::vector<SRecordedValue>& made);
    EComResult PlayReply(std::unique_lock<std::mutex>& lock, std::uint64_t number, Outputs outputs,
                         Variant& status);
    void PlayReports();
    void PlayReport(std::unique_lock<std::mutex>& lock);
    bool IsReportDue() const;
    void EndAwaited(std::unique_lock<std::mutex>& lock);
    void Advance();
    void Break(const std::string& why);

    const Variant::Bytes m_bytes;
    const std::function<void(const std::string&)> m_report;
    CSinkList m_sinks;
    std::mutex m_mutex; ///< of all below
    std::condition_variable m_changed;
    CRecordingReader m_reader;
    SRecordingEntry m_next; ///< to be played
    bool m_hasNext = false;
    CMasking m_masking;
    std::uint64_t m_made = 0;      ///< calls
    unsigned m_inside = 0;         ///< calls that have not returned
    bool m_isAwaited = false;      ///< a started command has not completed
    std::uint64_t m_completed = 0; ///< commands, as reported
    bool m_isReporting = false;
    bool m_isBroken = false;
    bool m_isStopping = false;
    std::thread m_thread; // last: it uses all of the above
};

/// The playback of a file; null, with a reason, when it cannot be read as a recording. `isRecording` tells
/// whether the file begins as one. `report` gets lines with the file's name; it is called from any thread.
std::unique_ptr<CPlayback> ConnectToRecording(const std::string& path, bool& isRecording, std::string& error,
                                              std::function<void(const std::string&)> report);

/// The same without playing: why the file cannot be played, empty if it can.
std::string WhyNotPlayed(const std::string& path, bool& isRecording);

} // namespace ruvo::sim
