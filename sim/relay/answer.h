// What a relay or the server answers to one request.
#pragma once

#include "link/seam/link_status.h"
#include "link/seam/variant.h"

#include <utility>

namespace ruvo::sim {

/// A status and, when it is good, the outputs of the operation.
struct SAnswer {
    LinkStatus status = kLinkGood;
    Variant::List outputs;
    LinkStatus completion = kLinkGood; ///< of an operation that runs on: the status with which it ends
    const char* remark = "";           ///< what the trace adds: why the relay cannot do its part
};

/// A status without outputs.
inline SAnswer StatusAnswer(LinkStatus status) {
    return {status, {}, kLinkGood};
}
/// A good status and the outputs.
inline SAnswer OutputAnswer(Variant::List outputs) {
    return {kLinkGood, std::move(outputs), kLinkGood};
}

} // namespace ruvo::sim
