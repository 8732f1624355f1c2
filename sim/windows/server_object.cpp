#include "sim/windows/server_object.h"

namespace ruvo::sim {

STDMETHODIMP CSinkPoint::QueryInterface(REFIID id, void** result) {
    if (result == nullptr) {
        return E_POINTER;
    }
    *result = nullptr;
    if (id != IID_IUnknown && id != IID_IConnectionPoint) {
        return E_NOINTERFACE;
    }
    *result = static_cast<IConnectionPoint*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP CSinkPoint::GetConnectionInterface(IID* id) {
    if (id == nullptr) {
        return E_POINTER;
    }
    *id = __uuidof(::IP32lsSink_v2);
    return S_OK;
}

STDMETHODIMP CSinkPoint::GetConnectionPointContainer(IConnectionPointContainer** container) {
    if (container == nullptr) {
        return E_POINTER;
    }
    *container = &m_owner;
    m_owner.AddRef();
    return S_OK;
}

STDMETHODIMP CSinkPoint::Advise(IUnknown* sink, DWORD* cookie) {
    if (sink == nullptr || cookie == nullptr) {
        return E_POINTER;
    }
    *cookie = 0;
    CSinkFanOut::Sink asked;
    if (FAILED(sink->QueryInterface(__uuidof(::IP32lsSink_v2), reinterpret_cast<void**>(asked.Receive())))) {
        return CONNECT_E_CANNOTCONNECT;
    }
    try {
        *cookie = m_sinks.Add(std::move(asked));
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

STDMETHODIMP CSinkPoint::Unadvise(DWORD cookie) {
    return m_sinks.Remove(cookie) ? S_OK : CONNECT_E_NOCONNECTION;
}

CServerObject::CServerObject(SServed served, CComPointer<ITypeInfo> description)
    : CDualInterface(std::move(description)), m_point(*this, m_sinks),
      m_codePage(served.isRecording ? CP_ACP : CP_UTF8), m_connection(std::move(served.connection)) {
    std::uint32_t cookie = 0;
    m_connection->Advise(m_sinks, cookie); // for good: the sinks outlive the connection
    CServerLifetime::Get().AddSinks(m_sinks);
}

STDMETHODIMP CServerObject::QueryInterface(REFIID id, void** result) {
    if (result != nullptr && id == IID_IConnectionPointContainer) {
        *result = static_cast<IConnectionPointContainer*>(this);
        AddRef();
        return S_OK;
    }
    return QueryOwn(id, result);
}

STDMETHODIMP CServerObject::FindConnectionPoint(REFIID id, IConnectionPoint** point) {
    if (point == nullptr) {
        return E_POINTER;
    }
    *point = nullptr;
    if (id != __uuidof(::IP32lsSink_v2)) {
        return CONNECT_E_NOCONNECTION;
    }
    *point = &m_point;
    m_point.AddRef();
    return S_OK;
}

} // namespace ruvo::sim
