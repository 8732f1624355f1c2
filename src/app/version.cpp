#include "app/version.h"

namespace ruvo {

const char* ProgramVersion() {
    return RUVO_VERSION;
}

} // namespace ruvo
