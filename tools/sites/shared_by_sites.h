// What a command that is of many sites asks for at each of them, and reads once.
#pragma once

#include "tools/recover/site_leftovers.h"
#include "tools/sites/shared_logs.h"

namespace ruvo {

struct SSharedBySites {
    CLogUsers logUsers;
    CRootLeftovers leftovers;
};

} // namespace ruvo
