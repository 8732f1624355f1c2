// What a relay or the server answers to one request.
#pragma once

#include "link/seam/variant.h"
#include "sim/relay/statuses.h"

#include <utility>

namespace ruvo::sim {

/// A status and, when it is good, the outputs of the operation.
struct SAnswer {
    Status status = kGood;
    Variant::List outputs;
    Status completion = kGood; ///< of an operation that runs on: the status with which it ends
    const char* remark = "";   ///< what the trace adds: why the relay cannot do its part
};

/// A status without outputs.
inline SAnswer StatusAnswer(Status status) {
    return {status, {}, kGood};
}
/// A good status and the outputs.
inline SAnswer OutputAnswer(Variant::List outputs) {
    return {kGood, std::move(outputs), kGood};
}

} // namespace ruvo::sim
