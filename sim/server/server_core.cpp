#include "sim/server/server_core.h"

#include "platform/full_path.h"

#include <thread>

namespace ruvo::sim {
namespace {

void ReturnOutputs(const SFault& fault, SAnswer answer, const CServerCore::Outputs& outputs,
                   Variant& status) {
    answer.outputs.resize(outputs.size());
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        *outputs[i] = std::move(answer.outputs[i]);
    }
    status = Variant::FromI4(static_cast<std::int32_t>(answer.status));
    if (fault.wrongType == 0) {
        status = Variant::Other();
    }
}

} // namespace

CServerCore::CServerCore(std::unique_ptr<SSubstation> substation, CSinkList& sinks)
    : m_substation(std::move(substation)), m_sinks(sinks), m_link(*m_substation),
      m_faults(m_substation->faults),
      m_runner([this] { m_sinks.NotifyProgress(0, 2); }, [this](LinkStatus status) { Finish(status); }) {}

std::string CServerCore::OpenFiles() {
    if (!m_state.Open(m_substation->stateFile)) {
        return "state: cannot open " + DisplayPath(m_substation->stateFile);
    }
    if (!m_account.Open(m_substation->accountFile)) {
        return "account: cannot open " + DisplayPath(m_substation->accountFile);
    }
    if (!m_trace.Open(m_substation->traceFile)) {
        return "trace: cannot open " + DisplayPath(m_substation->traceFile);
    }
    m_link.ForEachRelay(
        [this](CSimulatedRelay& relay) { relay.SkipEvents(m_state.HandedOver(relay.Model().name)); });
    return {};
}

std::string CServerCore::RelayName(const SCall& call) {
    const CSimulatedRelay* relay = call.address ? m_link.Find(*call.address) : nullptr;
    return relay == nullptr ? std::string() : relay->Model().name;
}

std::chrono::microseconds CServerCore::DelayOf(const SFault& fault) const {
    return std::chrono::microseconds(std::chrono::milliseconds(fault.delay)) / m_substation->speed;
}

EComResult CServerCore::Answer(const SCall& call, const Request& request, const Outputs& outputs,
                               Variant& status) {
    std::unique_lock lock(m_lock);
    const SFault fault = m_faults.Match(call, RelayName(call));
    const bool runsOn = OperationRow(call.operation).runsOn;
    if (fault.delay != 0 && !runsOn) {
        // The caller waits, the server does not: an abort from another thread must get through.
        lock.unlock();
        std::this_thread::sleep_for(DelayOf(fault));
        lock.lock();
    }
    if (fault.comFailure) {
        m_trace.WriteComFailure(call);
        return EComResult::Failed;
    }
    SAnswer answer = Execute(call, fault, request);
    DamageOutputs(fault, answer.outputs);
    // Before the command starts, so that its completion cannot come first in the trace.
    m_trace.Write(call, answer.status, answer.remark);
    if (runsOn && answer.status == kLinkGood) {
        StartRunning(call, fault, answer);
    }
    ReturnOutputs(fault, std::move(answer), outputs, status);
    return EComResult::Ok;
}

EComResult CServerCore::AnswerRelay(const SCall& call, const RelayRequest& request, const Outputs& outputs,
                                    Variant& status) {
    return Answer(
        call, [&] { return CallRelay(call, request); }, outputs, status);
}

SAnswer CServerCore::Execute(const SCall& call, const SFault& fault, const Request& request) const {
    SAnswer answer;
    // An ill-formed call is refused even while a command runs; a fault's status replaces only what the
    // request itself would have answered.
    if (!call.wellFormed) {
        answer.status = kLinkWrongParameters;
    } else if (m_running && call.operation != EOperation::Abort) {
        answer.status = kLinkBusy;
    } else if (fault.status) {
        answer.status = *fault.status;
    } else {
        answer = request();
    }
    return answer;
}

SAnswer CServerCore::CallRelay(const SCall& call, const RelayRequest& request) {
    SAnswer answer;
    if (!m_link.IsOpen()) {
        answer.status = kLinkNoPortOpen;
        return answer;
    }
    CSimulatedRelay* relay = m_link.Find(*call.address);
    if (relay == nullptr) {
        answer.status = kLinkNotResponding;
    } else {
        relay->CountRequest();
        answer = AskRelay(call.operation, *relay, request);
    }
    if (OperationRow(call.operation).runsOn) {
        answer.completion = answer.status;
        answer.status = kLinkGood;
    }
    return answer;
}

SAnswer CServerCore::AskRelay(EOperation operation, CSimulatedRelay& relay, const RelayRequest& request) {
    const bool isOfEvents = operation == EOperation::GetEvent || operation == EOperation::GetDeviceStatus;
    if (isOfEvents && m_account.IsKept()) {
        return AskWithAccount(operation, relay, request);
    }
    SAnswer answer = request(relay);
    // Remembered even when a fault damages the answer: the relay has deleted the event.
    if (operation == EOperation::GetEvent && answer.status == kLinkGood) {
        m_state.AddHandedOver(relay.Model().name);
    }
    return answer;
}

/// Other programs may have taken events meanwhile. What cannot be noted is not handed over.
SAnswer CServerCore::AskWithAccount(EOperation operation, CSimulatedRelay& relay,
                                    const RelayRequest& request) {
    SAnswer answer;
    answer.status = kLinkNotResponding;
    const std::string& name = relay.Model().name;
    if (const std::optional<std::size_t> count = m_account.Begin(name)) {
        relay.SkipEvents(*count);
        SAnswer asked = request(relay);
        const bool isTaken = operation == EOperation::GetEvent && asked.status == kLinkGood;
        if (!isTaken || m_account.Add(name)) {
            answer = std::move(asked);
        }
    }
    m_account.End();
    return answer;
}

void CServerCore::StartRunning(const SCall& call, const SFault& fault, const SAnswer& answer) {
    m_results = answer.outputs; // first, since there may be no memory for them
    m_running = true;
    m_resultsReady = false;
    m_resultsOf = call.operation;
    SRunPlan plan;
    plan.status = fault.completion.value_or(answer.completion);
    plan.delay = DelayOf(fault);
    plan.hangs = fault.hangs;
    m_runner.Start(plan);
}

void CServerCore::Finish(LinkStatus status) {
    bool alternate = false;
    {
        const std::lock_guard lock(m_lock);
        m_running = false;
        // An aborted or failed command leaves nothing to fetch.
        m_resultsReady = status == kLinkGood;
        if (status != kLinkGood && m_resultsOf == EOperation::ModemConnect) {
            m_link.DropCall();
        }
        alternate = m_alternate;
        m_alternate = !m_alternate;
        m_trace.WriteCompletion(alternate ? "OnCommandCompleteAlt" : "OnCommandComplete", status);
    }
    // Without the lock: a sink may call the server.
    m_sinks.NotifyProgress(2, 2);
    m_sinks.NotifyComplete(status, alternate);
}

SAnswer CServerCore::FetchResults(EOperation start) {
    SAnswer answer;
    if (!m_resultsReady || m_resultsOf != start) {
        answer.status = kLinkDataNotReady;
        return answer;
    }
    m_resultsReady = false;
    answer.outputs = std::move(m_results);
    return answer;
}

} // namespace ruvo::sim
