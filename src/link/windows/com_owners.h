// Owners of what COM hands out: each reference and each variant is given back on every path.
#pragma once

#include "link/windows/com_headers.h"

#include <utility>

namespace ruvo {

/// One counted reference, or none.
template <class Interface>
class CComPointer {
public:
    CComPointer() = default;
    /// Adds a reference of its own.
    explicit CComPointer(Interface* borrowed) : m_pointer(borrowed) {
        if (m_pointer != nullptr) {
            m_pointer->AddRef();
        }
    }
    CComPointer(const CComPointer& other) : CComPointer(other.m_pointer) {}
    CComPointer(CComPointer&& other) noexcept : m_pointer(std::exchange(other.m_pointer, nullptr)) {}
    CComPointer& operator=(CComPointer other) noexcept {
        std::swap(m_pointer, other.m_pointer);
        return *this;
    }
    ~CComPointer() { Reset(); }

    /// Takes over a reference that the caller has.
    static CComPointer Adopt(Interface* owned) {
        CComPointer pointer;
        pointer.m_pointer = owned;
        return pointer;
    }

    void Reset() {
        if (Interface* const pointer = std::exchange(m_pointer, nullptr)) {
            pointer->Release();
        }
    }
    /// Where a function puts a reference that is ours from then on.
    Interface** Receive() {
        Reset();
        return &m_pointer;
    }
    template <class Other>
    HRESULT Query(CComPointer<Other>& other) const {
        return m_pointer->QueryInterface(__uuidof(Other), reinterpret_cast<void**>(other.Receive()));
    }

    Interface* Get() const { return m_pointer; }
    Interface* operator->() const { return m_pointer; }
    explicit operator bool() const { return m_pointer != nullptr; }

private:
    Interface* m_pointer = nullptr;
};

/// A variant with what hangs on it: a text, an array.
class COwnedVariant {
public:
    COwnedVariant() { VariantInit(&m_value); }
    COwnedVariant(const COwnedVariant&) = delete;
    COwnedVariant& operator=(const COwnedVariant&) = delete;
    ~COwnedVariant() { Reset(); }

    const VARIANT& Get() const { return m_value; }
    /// Where a function puts a value that is ours from then on.
    VARIANT* Receive() {
        Reset();
        return &m_value;
    }
    /// The value, which is the caller's from then on.
    VARIANT Release() {
        const VARIANT value = m_value;
        VariantInit(&m_value);
        return value;
    }

private:
    // Clearing fails for a locked array alone; nothing of ours stays locked.
    void Reset() { static_cast<void>(VariantClear(&m_value)); }

    VARIANT m_value;
};

} // namespace ruvo
