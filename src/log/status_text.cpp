#include "log/status_text.h"

#include "model/status/status_strings.h"

namespace ruvo {

unsigned StatusToStringId(std::uint32_t status) {
    constexpr std::uint32_t kDeviceReply = 0x11;
    const std::uint32_t reply = (status >> 8U) & 0xFFU;
    if ((status & 0xFFU) == kDeviceReply && reply != 0) {
        return ReplyStringId(reply);
    }
    const unsigned id = CommsStatusStringId(status);
    return id != 0 ? id : kStringUndefinedStatus;
}

} // namespace ruvo
