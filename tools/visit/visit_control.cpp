#include "tools/visit/visit_control.h"

#include <system_error>

namespace ruvo {

CVisitControl::CVisitControl() : m_requests(HearEndRequests()) {
    if (m_requests == nullptr) {
        return;
    }
    try {
        m_thread = std::thread([this] { Listen(); });
    } catch (const std::system_error&) { // none to be had
        m_requests->Release();
    }
}

CVisitControl::~CVisitControl() {
    if (m_thread.joinable()) {
        m_requests->Stop();
        m_thread.join();
    }
}

void CVisitControl::Listen() {
    const char* name = nullptr;
    while (m_requests->Wait(IEndRequests::kForever, name) == IEndRequests::EWake::Request) {
        const std::lock_guard lock(m_mutex);
        m_asked = name;
        if (m_program != nullptr) {
            m_program->AskToEnd(name);
        }
        m_hasAsked.notify_all();
    }
}

CVisitControl::SProgramEnd CVisitControl::Run(const SChildProgram& program, CChildProgram::SWatch watch,
                                              const std::function<void(std::uint64_t process)>& started) {
    CChildProgram child;
    SProgramEnd ended;
    ended.failure = child.Start(program);
    if (!ended.failure.empty()) {
        return ended;
    }
    ended.process = child.Number();
    {
        const std::lock_guard lock(m_mutex);
        m_program = &child;
        if (m_asked != nullptr) { // before it could be passed on
            child.AskToEnd(m_asked);
        }
    }
    if (started) {
        started(ended.process);
    }
    ended.end = child.Await(watch);
    const std::lock_guard lock(m_mutex);
    m_program = nullptr;
    return ended;
}

bool CVisitControl::Pause(std::chrono::milliseconds time) {
    std::unique_lock lock(m_mutex);
    return !m_hasAsked.wait_for(lock, time, [this] { return m_asked != nullptr; });
}

} // namespace ruvo
