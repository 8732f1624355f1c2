#include "link/windows/com_sink.h"

#include "link/windows/variant_conversion.h"

#include <algorithm>

namespace ruvo {

namespace {

CComPointer<ITypeInfo> SinkDescription() {
    CComPointer<ITypeLib> library;
    CComPointer<ITypeInfo> description;
    if (FAILED(LoadRegTypeLib(LIBID_P32LSLib, 1, 0, LOCALE_NEUTRAL, library.Receive())) ||
        FAILED(library->GetTypeInfoOfGuid(__uuidof(::IP32lsSink_v2), description.Receive()))) {
        return {};
    }
    return description;
}

} // namespace

bool CCallGate::Enter() {
    const std::lock_guard lock(m_mutex);
    if (!m_closed) {
        m_inside.push_back(std::this_thread::get_id());
    }
    return !m_closed;
}

void CCallGate::Leave() {
    {
        const std::lock_guard lock(m_mutex);
        m_inside.erase(std::ranges::find(m_inside, std::this_thread::get_id()));
    }
    m_left.notify_all();
}

void CCallGate::Close() {
    std::unique_lock lock(m_mutex);
    m_closed = true;
    const auto self = std::this_thread::get_id();
    m_left.wait(lock, [&] {
        return std::ranges::all_of(m_inside, [&](std::thread::id thread) { return thread == self; });
    });
}

CComSink::CComSink(Target& target) : CDualInterface(SinkDescription()), m_target(target) {}

/// The server gets S_OK whatever happens here: it cannot do anything about it.
template <class Method, class... Values>
HRESULT CComSink::Forward(Method method, const Values&... values) noexcept {
    try {
        if (m_gate.Enter()) {
            struct SLeave {
                CCallGate& gate;
                ~SLeave() { gate.Leave(); }
            } const leave{m_gate};
            (m_target.*method)(FromVariant(values)...);
        }
    } catch (...) { // out of memory: this one event is lost
    }
    return S_OK;
}

STDMETHODIMP CComSink::OnProgress(VARIANT done, VARIANT total) {
    return Forward(&Target::OnProgress, done, total);
}

STDMETHODIMP CComSink::OnCommandComplete(VARIANT status) {
    return Forward(&Target::OnCommandComplete, status);
}

STDMETHODIMP CComSink::OnCommandCompleteAlt(VARIANT status) {
    return Forward(&Target::OnCommandCompleteAlt, status);
}

STDMETHODIMP CComSink::OnLineStatus(VARIANT status) {
    return Forward(&Target::OnLineStatus, status);
}

STDMETHODIMP CComSink::OnTransferProgress(VARIANT value) {
    return Forward(&Target::OnTransferProgress, value);
}

} // namespace ruvo
