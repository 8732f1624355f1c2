#include "log/status_to_string_id.h"

#include "model/status/status.h"
#include "model/status/status_string_ids.h"

namespace ruvo {

unsigned StatusToStringId(std::uint32_t status) {
    const CStatus word(status);
    if (word.GetKind() == kStatusReply && word.GetCode() != 0) {
        return ReplyStringId(word.GetCode());
    }
    const unsigned id = CommsStatusStringId(status);
    return id != 0 ? id : kStringUndefinedStatus;
}

} // namespace ruvo
