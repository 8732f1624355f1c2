// What all our objects with a dual interface have in common: the counting of references, and late-bound
// calls by the interface's description in the type library.
#pragma once

#include "link/windows/com_owners.h"

#include <atomic>

namespace ruvo {

/// Deletes itself with its last reference; begins with one.
template <class Interface>
class CDualInterface : public Interface {
public:
    CDualInterface(const CDualInterface&) = delete;
    CDualInterface& operator=(const CDualInterface&) = delete;

    STDMETHODIMP_(ULONG) AddRef() override { return ++m_references; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --m_references;
        if (left == 0) {
            delete this;
        }
        return left;
    }

    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (count == nullptr) {
            return E_POINTER;
        }
        *count = m_description ? 1 : 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT index, LCID /*locale*/, ITypeInfo** description) override {
        if (description == nullptr) {
            return E_POINTER;
        }
        *description = nullptr;
        if (index != 0 || !m_description) {
            return DISP_E_BADINDEX;
        }
        m_description->AddRef();
        *description = m_description.Get();
        return S_OK;
    }
    STDMETHODIMP GetIDsOfNames(REFIID /*reserved*/, LPOLESTR* names, UINT count, LCID /*locale*/,
                               DISPID* ids) override {
        return m_description ? DispGetIDsOfNames(m_description.Get(), names, count, ids) : E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID /*reserved*/, LCID /*locale*/, WORD flags, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO* exception, UINT* wrongArgument) override {
        if (!m_description) {
            return E_NOTIMPL;
        }
        return DispInvoke(static_cast<Interface*>(this), m_description.Get(), id, flags, parameters, result,
                          exception, wrongArgument);
    }

protected:
    /// Without a description the object still works through its vtable.
    explicit CDualInterface(CComPointer<ITypeInfo> description) : m_description(std::move(description)) {}
    virtual ~CDualInterface() = default;

    /// QueryInterface for the interface itself and its two bases.
    HRESULT QueryOwn(REFIID id, void** result) {
        if (result == nullptr) {
            return E_POINTER;
        }
        *result = nullptr;
        if (id != IID_IUnknown && id != IID_IDispatch && id != __uuidof(Interface)) {
            return E_NOINTERFACE;
        }
        *result = static_cast<Interface*>(this);
        AddRef();
        return S_OK;
    }

private:
    std::atomic<ULONG> m_references{1};
    CComPointer<ITypeInfo> m_description;
};

} // namespace ruvo
