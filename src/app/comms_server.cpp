#include "app/comms_server.h"

#include "link/client.h"
#include "platform/com_runtime.h"

namespace ruvo {

CCommsServer::~CCommsServer() {
    try {
        Stop();
    } catch (...) { // out of memory: the client stays, and the next start finds it
    }
}

bool CCommsServer::Start() {
    m_hasRuntime = m_hasRuntime || StartComRuntime();
    return m_hasRuntime && CP32Wrap::CreateInstance() == kLinkGood;
}

void CCommsServer::Stop() {
    struct SRuntimeEnd {
        ~SRuntimeEnd() { StopComRuntime(); }
    };
    if (m_hasRuntime) {
        m_hasRuntime = false;
        const SRuntimeEnd afterTheClient;
        CP32Wrap::DestroyInstance();
    }
}

} // namespace ruvo
