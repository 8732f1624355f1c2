#include "link/seam/server_failure.h"

#include "link/seam/class_id.h"
#include "link/windows/com_owners.h"
#include "platform/files.h"

#include <array>
#include <cstdio>

namespace ruvo {

std::string ExplainServerFailure() {
    constexpr DWORD kAnyServer =
        CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;
    CComPointer<IUnknown> object;
    const HRESULT result = CoCreateInstance(CLSID_P32LS, nullptr, kAnyServer, IID_IUnknown,
                                            reinterpret_cast<void**>(object.Receive()));
    if (SUCCEEDED(result)) {
        return "the registered comms server was created, but it refused to start";
    }
    std::array<char, 16> code{};
    std::snprintf(code.data(), code.size(), "%08lX", static_cast<unsigned long>(result));
    return "class " + std::string(kServerClassId) + " cannot be created: " + SystemErrorText(result) + " (" +
           code.data() + ")";
}

} // namespace ruvo
