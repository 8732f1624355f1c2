// The class object, which makes a server object for each client.
#pragma once

#include "link/windows/com_owners.h"

namespace ruvo::sim {

/// Lives as long as the process.
class CClassObject final : public IClassFactory {
public:
    /// The description of the server's interface, from the library inside the program.
    explicit CClassObject(CComPointer<ITypeInfo> description) : m_description(std::move(description)) {}

    STDMETHODIMP QueryInterface(REFIID id, void** result) override;
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID id, void** result) override;
    STDMETHODIMP LockServer(BOOL lock) override;

private:
    CComPointer<ITypeInfo> m_description;
};

} // namespace ruvo::sim
