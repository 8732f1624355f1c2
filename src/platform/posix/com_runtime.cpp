#include "platform/com_runtime.h"

namespace ruvo {

bool StartComRuntime() {
    return true;
}

void StopComRuntime() {}

} // namespace ruvo
