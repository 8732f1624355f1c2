#include "link/windows/kept_stubs.h"

#include <algorithm>

namespace ruvo {

STDMETHODIMP CKeptStubs::CPlaceholder::QueryInterface(REFIID id, void** result) {
    if (result == nullptr) {
        return E_POINTER;
    }
    const bool claimed = id == IID_IUnknown || std::ranges::find(m_interfaces, id) != m_interfaces.end();
    *result = claimed ? this : nullptr;
    return claimed ? S_OK : E_NOINTERFACE;
}

CKeptStubs::CKeptStubs(std::span<const IID> interfaces) : m_object(interfaces) {
    for (const IID& id : interfaces) {
        CComPointer<IStream> stream;
        if (SUCCEEDED(CreateStreamOnHGlobal(nullptr, TRUE, stream.Receive())) &&
            SUCCEEDED(CoMarshalInterface(stream.Get(), id, &m_object, MSHCTX_LOCAL, nullptr,
                                         MSHLFLAGS_TABLESTRONG))) {
            m_streams.push_back(std::move(stream));
        }
    }
}

CKeptStubs::~CKeptStubs() {
    for (const CComPointer<IStream>& stream : m_streams) {
        const LARGE_INTEGER start = {};
        if (SUCCEEDED(stream->Seek(start, STREAM_SEEK_SET, nullptr))) {
            static_cast<void>(CoReleaseMarshalData(stream.Get())); // the runtime is about to end anyway
        }
    }
    static_cast<void>(CoDisconnectObject(&m_object, 0));
}

} // namespace ruvo
