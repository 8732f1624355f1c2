#include "run/end_watch.h"

#include "link/channel/channel.h"
#include "log/log_reserve.h"
#include "platform/standard_error.h"

#include <memory>
#include <string>
#include <utility>

namespace ruvo {

namespace {

std::uint64_t ServerReturns() {
    const std::shared_ptr<CChannel> channel = HoldChannel();
    return channel == nullptr ? 0 : channel->Stay().Returns();
}

} // namespace

CEndWatch::CEndWatch(CRunEnd& end, IEndRequests& requests, const STimes& times,
                     std::function<void()> endProcess)
    : m_end(end), m_requests(requests), m_times(times), m_endProcess(std::move(endProcess)),
      m_thread([this] { Listen(); }) {}

CEndWatch::~CEndWatch() {
    m_requests.Stop();
    m_thread.join();
}

void CEndWatch::Listen() {
    using enum IEndRequests::EWake;
    const char* name = nullptr;
    if (m_requests.Wait(IEndRequests::kForever, name) != Request) {
        return;
    }
    m_end.Ask(name);
    // A terminal that is closed, or a manager that asks a whole group, lets one request arrive twice.
    bool isHurried = false;
    IEndRequests::EWake wake = m_requests.Skip(m_times.sameRequest) ? Timeout : Stopped;
    while (wake != Stopped) {
        const std::uint64_t before = ServerReturns();
        wake = m_requests.Wait(isHurried ? m_times.hurried : m_times.patience, name);
        const bool isSecond = wake == Request && !std::exchange(isHurried, true);
        if (wake != Stopped && !isSecond && ServerReturns() == before) {
            EndWhatIsStuck();
        }
    }
}

void CEndWatch::EndWhatIsStuck() {
    const std::shared_ptr<CChannel> channel = HoldChannel();
    const CRunEnd::EStage stage = m_end.Stage();
    if (stage == CRunEnd::EStage::Visiting) {
        if (channel == nullptr || channel->CutShort() || !channel->Stay().Keep()) {
            return; // it has a chance now to end by itself, or is busy with its own files
        }
        m_end.Abandon();
    } else if (stage == CRunEnd::EStage::NotBegun) { // the log is not known for certain
        WithLogReserve([&] {
            WriteStandardError("ruvo: ended by " + std::string(m_end.Name()) + "; no relay was visited");
        });
    } else {
        m_end.WriteEndLine();
    }
    m_endProcess();
}

} // namespace ruvo
