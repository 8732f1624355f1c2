#include "link/recording/recorded_connection.h"

#include "link/recording/call_recorder.h"
#include "link/recording/server_calls.h"
#include "link/seam/uniform_server.h"
#include "platform/full_path.h"
#include "platform/standard_error.h"

#include <exception>
#include <vector>

namespace ruvo {

namespace {

/// Passes the server's reports on, once they are noted.
class CRecordedSink final : public IP32lsSink_v2 {
public:
    CRecordedSink(CCallRecorder& recorder, IP32lsSink_v2& target) : m_recorder(recorder), m_target(target) {}

    void OnProgress(const Variant& done, const Variant& total) noexcept override {
        m_recorder.NoteEvent(kFirstSinkSlot, {&done, &total});
        m_target.OnProgress(done, total);
    }
    void OnCommandComplete(const Variant& status) noexcept override {
        m_recorder.NoteEvent(kFirstSinkSlot + 1, {&status});
        m_target.OnCommandComplete(status);
    }
    void OnCommandCompleteAlt(const Variant& status) noexcept override {
        m_recorder.NoteEvent(kFirstSinkSlot + 2, {&status});
        m_target.OnCommandCompleteAlt(status);
    }
    void OnLineStatus(const Variant& status) noexcept override {
        m_recorder.NoteEvent(kFirstSinkSlot + 3, {&status});
        m_target.OnLineStatus(status);
    }
    void OnTransferProgress(const Variant& value) noexcept override {
        m_recorder.NoteEvent(kFirstSinkSlot + 4, {&value});
        m_target.OnTransferProgress(value);
    }

private:
    CCallRecorder& m_recorder;
    IP32lsSink_v2& m_target;
};

class CRecordedServer final : public CUniformServer {
public:
    CRecordedServer(CCallRecorder& recorder, IP32ls& server) : m_recorder(recorder), m_server(server) {}

    EComResult Call(EOperation operation, Inputs inputs, Outputs outputs, Variant& status) override {
        const std::uint64_t number = m_recorder.NoteCall(operation, inputs);
        EComResult result = EComResult::Failed;
        try {
            result = CallOperation(m_server, operation, inputs, outputs, status);
        } catch (...) {
            m_recorder.NoteReply(number, operation, inputs, EComResult::Failed, status, outputs);
            throw;
        }
        m_recorder.NoteReply(number, operation, inputs, result, status, outputs);
        return result;
    }

private:
    CCallRecorder& m_recorder;
    IP32ls& m_server;
};

class CRecordedConnection final : public IServerConnection {
public:
    explicit CRecordedConnection(std::unique_ptr<IServerConnection> inner)
        : m_inner(std::move(inner)), m_server(m_recorder, m_inner->Server()) {}

    SFileResult Begin(const SRecordingPlan& plan) { return m_recorder.Begin(plan); }
    /// What it was made of; nothing is called through this one any more.
    std::unique_ptr<IServerConnection> Release() { return std::move(m_inner); }

    IP32ls& Server() override { return m_server; }
    bool Advise(IP32lsSink_v2& sink, std::uint32_t& cookie) override {
        auto advised = std::make_unique<SAdvised>(m_recorder, sink);
        if (!m_inner->Advise(advised->sink, cookie)) {
            return false;
        }
        advised->cookie = cookie;
        m_advised.push_back(std::move(advised));
        return true;
    }
    void Unadvise(std::uint32_t cookie) override {
        m_inner->Unadvise(cookie);
        std::erase_if(m_advised, [cookie](const auto& advised) { return advised->cookie == cookie; });
    }

private:
    struct SAdvised {
        SAdvised(CCallRecorder& recorder, IP32lsSink_v2& target) : sink(recorder, target) {}
        CRecordedSink sink;
        std::uint32_t cookie = 0;
    };

    CCallRecorder m_recorder; // before the server, whose threads may report until it is gone
    std::vector<std::unique_ptr<SAdvised>> m_advised;
    std::unique_ptr<IServerConnection> m_inner;
    CRecordedServer m_server;
};

} // namespace

SRecordingPlan& PlannedRecording() {
    static SRecordingPlan plan;
    return plan;
}

/// Whatever fails: the visit goes on with the connection as it is.
std::unique_ptr<IServerConnection> RecordedAsPlanned(std::unique_ptr<IServerConnection> connection) {
    const SRecordingPlan& plan = PlannedRecording();
    if (connection == nullptr || plan.path.empty()) {
        return connection;
    }
    std::unique_ptr<CRecordedConnection> recorded;
    try {
        recorded = std::make_unique<CRecordedConnection>(std::move(connection));
        const SFileResult made = recorded->Begin(plan);
        if (made.Good()) {
            return recorded;
        }
        WriteStandardError("ruvo: " + DisplayPath(plan.path) +
                           ": the recording cannot be made: " + SystemErrorText(made.systemCode));
    } catch (const std::exception&) {
        WriteStandardError("ruvo: the recording cannot be made: no memory for it");
    }
    return recorded == nullptr ? std::move(connection) : recorded->Release();
}

} // namespace ruvo
