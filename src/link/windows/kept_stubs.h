// Interfaces that stay known to the runtime between two clients.
#pragma once

#include "link/windows/com_owners.h"

#include <span>
#include <vector>

namespace ruvo {

/// Keeps one stub of each of the interfaces, on an object that is never called. When the last stub of an
/// interface goes, the runtime waits for the calls through it to end; Wine's can miss the end of a call that
/// is just returning, and then waits for ever. A process that serves one client after the other, in
/// connections of a few milliseconds, would meet that sooner or later. Harmless elsewhere.
class CKeptStubs {
public:
    /// Interfaces that cannot be kept are left alone.
    explicit CKeptStubs(std::span<const IID> interfaces);
    CKeptStubs(const CKeptStubs&) = delete;
    CKeptStubs& operator=(const CKeptStubs&) = delete;
    /// Before the runtime ends.
    ~CKeptStubs();

private:
    /// Claims to have the interfaces; never called through them.
    class CPlaceholder final : public IUnknown {
    public:
        explicit CPlaceholder(std::span<const IID> interfaces)
            : m_interfaces(interfaces.begin(), interfaces.end()) {}
        STDMETHODIMP QueryInterface(REFIID id, void** result) override;
        STDMETHODIMP_(ULONG) AddRef() override { return 2; } // lives as long as its owner
        STDMETHODIMP_(ULONG) Release() override { return 1; }

    private:
        std::vector<IID> m_interfaces;
    };

    CPlaceholder m_object;
    std::vector<CComPointer<IStream>> m_streams;
};

} // namespace ruvo
