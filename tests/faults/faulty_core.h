// The simulated comms server with one call that goes wrong, and a note of what the client asked.
#pragma once

#include "link/seam/known_cells.h"
#include "memory_disk.h"
#include "support/failing_memory.h"

#include "link/client.h"
#include "sim/server/server_core.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <thread>

namespace ruvo::test {

inline constexpr std::string_view kSecret = "SECRET78"; ///< every password

enum class EServerFault : std::uint8_t {
    None,
    RequestLost,   ///< the call fails and nothing happened
    ReplyLost,     ///< the call fails and yet it was done
    WrongType,     ///< done, but the output of number `detail` is useless, 0 being the status
    Status,        ///< not done; answers the status `detail`
    AbortedInside, ///< done, with an abort from another thread while it runs
    NeverEnds,     ///< starts and never completes; another thread aborts, which is answered as `detail` says
};
enum EAbortAnswer : std::uint8_t { kAbortAccepted, kAbortRefused, kAbortLost };

struct SServerFault {
    std::size_t call = 0; ///< counted from 1
    EServerFault kind = EServerFault::None;
    int detail = 0;
};

struct SNotedCall {
    EOperation operation;
    int address; ///< 0 for a call to the link
    std::size_t outputs;
};

struct SServerNotes {
    std::vector<SNotedCall> calls;
    std::size_t taken = 0;  ///< events that the relays handed over, even those that never arrived
    std::size_t given = 0;  ///< those of them whose answer had status 0
    bool sentPlain = false; ///< a password was written as it is
    std::function<void(int address)> onEvent{};
    Variant guard; ///< cell BF.03 of the first relay, at the end
};

class CFaultyCore final : public sim::CServerCore {
public:
    CFaultyCore(const sim::SSubstation& substation, sim::CSinkList& sinks, SServerFault fault,
                SServerNotes& notes)
        : CServerCore(std::make_unique<sim::SSubstation>(substation), sinks), m_sinks(sinks), m_fault(fault),
          m_notes(notes) {}
    ~CFaultyCore() override {
        const CFailingMemory::SExempt exempt;
        for (std::thread& thread : m_threads)
            thread.join();
        Link().ForEachRelay([this](sim::CSimulatedRelay& relay) {
            if (const sim::SAnswer answer = relay.Value(cells::kPasswordGuard); answer.status == 0)
                m_notes.guard = answer.outputs.back();
        });
    }

    EComResult Answer(const sim::SCall& call, const Request& request, const Outputs& outputs,
                      Variant& status) override {
        using enum EServerFault;
        if (g_disk.HasEnded())
            return EComResult::Failed; // nobody asks any more
        Note(call, outputs.size());
        const EServerFault kind = m_notes.calls.size() == m_fault.call ? m_fault.kind : None;
        if (kind == RequestLost)
            return EComResult::Failed;
        if (kind == AbortedInside)
            std::thread(RequestAbort).join();
        if (kind == NeverEnds)
            m_threads.emplace_back(RequestAbort);
        if (kind == Status || kind == NeverEnds) {
            status = Variant::FromI4(kind == Status ? m_fault.detail : 0);
            return EComResult::Ok;
        }
        const bool isAbort = call.operation == EOperation::Abort && m_fault.kind == NeverEnds;
        const EComResult result =
            isAbort ? AnswerAbort(status) : CServerCore::Answer(call, request, outputs, status);
        if (call.operation == EOperation::GetEvent && status == Variant::FromI4(0)) {
            ++m_notes.taken;
            if (m_notes.onEvent)
                m_notes.onEvent(*call.address);
        }
        if (kind == WrongType)
            *(m_fault.detail == 0 ? &status : outputs[static_cast<std::size_t>(m_fault.detail) - 1]) =
                Variant::Other();
        if (call.operation == EOperation::GetEvent && kind != ReplyLost && status == Variant::FromI4(0))
            ++m_notes.given;
        if (kind == ReplyLost || kind == WrongType)
            AwaitIdle();
        return kind == ReplyLost ? EComResult::Failed : result;
    }

private:
    static void RequestAbort() { CP32Wrap::GetInstance()->RequestAbort(); }

    /// A command that the client does not know of keeps the server busy, which is nobody's fault here.
    void AwaitIdle() {
        const sim::SCall harmless{
            .operation = EOperation::ClosePort, .address = {}, .cell = {}, .detail = {}};
        for (Variant status = Variant::FromI4(7); status == Variant::FromI4(7); std::this_thread::yield())
            static_cast<void>(CServerCore::Answer(
                harmless, [] { return sim::SAnswer{}; }, {}, status));
    }

    /// An accepted abort completes the command on another thread, as every command of the server does.
    EComResult AnswerAbort(Variant& status) {
        status = Variant::FromI4(m_fault.detail == kAbortRefused ? 29 : 0);
        if (m_fault.detail == kAbortAccepted)
            m_threads.emplace_back([this] { m_sinks.NotifyComplete(18, false); });
        return m_fault.detail == kAbortLost ? EComResult::Failed : EComResult::Ok;
    }

    void Note(const sim::SCall& call, std::size_t outputs) {
        const CFailingMemory::SExempt exempt;
        const bool fetches = OperationRow(call.operation).name.starts_with("Fetch");
        const int address = fetches ? m_notes.calls.back().address : call.address.value_or(0);
        m_notes.calls.push_back({call.operation, address, outputs});
        if (call.bytes != nullptr && std::search(call.bytes->begin(), call.bytes->end(), kSecret.begin(),
                                                 kSecret.end()) != call.bytes->end())
            m_notes.sentPlain = true;
    }

    sim::CSinkList& m_sinks;
    SServerFault m_fault;
    SServerNotes& m_notes;
    std::vector<std::thread> m_threads;
};

} // namespace ruvo::test
