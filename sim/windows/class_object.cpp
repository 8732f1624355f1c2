#include "sim/windows/class_object.h"

#include "sim/server/line_file.h"
#include "sim/server/served_connection.h"
#include "sim/windows/error_report.h"
#include "sim/windows/registration.h"
#include "sim/windows/server_object.h"

namespace ruvo::sim {

namespace {

/// COM starts this program where nobody sees what it says, so it stands in a file beside the recording, too.
void ReportPlayback(const std::string& line) {
    ReportError(line);
    CLineFile file;
    if (file.Open(RegisteredSubstation() + ".txt")) {
        file.Append(line);
    }
}

} // namespace

STDMETHODIMP CClassObject::QueryInterface(REFIID id, void** result) {
    if (result == nullptr) {
        return E_POINTER;
    }
    const bool known = id == IID_IUnknown || id == IID_IClassFactory;
    *result = known ? static_cast<IClassFactory*>(this) : nullptr;
    return known ? S_OK : E_NOINTERFACE;
}

STDMETHODIMP CClassObject::CreateInstance(IUnknown* outer, REFIID id, void** result) {
    if (result == nullptr) {
        return E_POINTER;
    }
    *result = nullptr;
    if (outer != nullptr) {
        return CLASS_E_NOAGGREGATION;
    }
    try {
        SServed served = ConnectToServedFile(RegisteredSubstation(), ReportPlayback);
        if (!served.connection) {
            ReportError(served.error);
            return E_FAIL;
        }
        const auto object =
            CComPointer<CServerObject>::Adopt(new CServerObject(std::move(served), m_description));
        return object->QueryInterface(id, result);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

STDMETHODIMP CClassObject::LockServer(BOOL lock) {
    CServerLifetime& lifetime = CServerLifetime::Get();
    lock != FALSE ? lifetime.AddReference() : lifetime.ReleaseReference();
    return S_OK;
}

} // namespace ruvo::sim
