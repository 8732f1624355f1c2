// What every operation of the simulated server goes through: faults, the rule of one command at a time, the
// trace, and the thread that completes the operations that run on.
#pragma once

#include "sim/server/call_trace.h"
#include "sim/server/command_runner.h"
#include "sim/server/event_account.h"
#include "sim/server/event_state.h"
#include "sim/server/fault_table.h"
#include "sim/server/link_state.h"
#include "sim/server/sink_list.h"

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace ruvo::sim {

/// Owns the substation and all that happens to it over one connection. Safe for use by several threads.
class CServerCore {
public:
    using Request = std::function<SAnswer()>;
    using RelayRequest = std::function<SAnswer(CSimulatedRelay&)>;
    using Outputs = std::vector<Variant*>;

    /// The sinks must outlive this.
    CServerCore(std::unique_ptr<SSubstation> substation, CSinkList& sinks);
    CServerCore(const CServerCore&) = delete;
    CServerCore& operator=(const CServerCore&) = delete;
    virtual ~CServerCore() = default;

    /// Opens the files that the substation names; a reason when one cannot be opened, else empty.
    std::string OpenFiles();

    /// Answers a call to the server itself. Every call ends here: tests override it to come in between.
    virtual EComResult Answer(const SCall& call, const Request& request, const Outputs& outputs,
                              Variant& status);
    /// Answers a call to the relay at the call's address. What a relay refuses of an operation that runs on
    /// is reported at its completion, since the server has to ask the relay first.
    EComResult AnswerRelay(const SCall& call, const RelayRequest& request, const Outputs& outputs,
                           Variant& status);

    // For the callables that are handed in above, which run under the lock.
    CLinkState& Link() { return m_link; }
    /// The results of the completed operation, once; data not ready when there are none of that operation.
    SAnswer FetchResults(EOperation start);
    LinkStatus AbortRunning() { return m_runner.Abort(); }

private:
    SAnswer Execute(const SCall& call, const SFault& fault, const Request& request) const;
    SAnswer CallRelay(const SCall& call, const RelayRequest& request);
    SAnswer AskRelay(EOperation operation, CSimulatedRelay& relay, const RelayRequest& request);
    SAnswer AskWithAccount(EOperation operation, CSimulatedRelay& relay, const RelayRequest& request);
    void StartRunning(const SCall& call, const SFault& fault, const SAnswer& answer);
    void Finish(LinkStatus status);
    std::string RelayName(const SCall& call);
    /// A fault's delay, scaled by the substation's clock.
    std::chrono::microseconds DelayOf(const SFault& fault) const;

    const std::unique_ptr<const SSubstation> m_substation;
    CSinkList& m_sinks;
    std::mutex m_lock;
    CEventState m_state;
    CEventAccount m_account;
    CCallTrace m_trace;
    CLinkState m_link;
    CFaultTable m_faults;
    bool m_running = false;
    bool m_alternate = false; ///< which of the two completion methods comes next
    EOperation m_resultsOf = EOperation::OpenPort;
    Variant::List m_results; ///< of the operation above, ready once it no longer runs
    bool m_resultsReady = false;
    CCommandRunner m_runner; // last, so that its thread ends first
};

} // namespace ruvo::sim
