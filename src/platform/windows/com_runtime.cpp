#include "platform/com_runtime.h"

#include "platform/windows/system.h"

#include <objbase.h>

namespace ruvo {

// The multithreaded apartment: the client blocks in waits that dispatch no messages. In a single-threaded
// apartment the server's events would wait in this thread's message queue for ever; here they arrive on a
// thread of the runtime while the client is blocked.
bool StartComRuntime() {
    return SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED));
}

void StopComRuntime() {
    CoUninitialize();
}

} // namespace ruvo
