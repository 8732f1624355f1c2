#include "model/status/status_string_ids.h"

namespace ruvo {

namespace {

/// Statuses first to last have the texts from firstId on, or (no step) all have that one.
struct SStatusRange {
    std::uint32_t first;
    std::uint32_t last;
    unsigned firstId;
    unsigned step;
};

constexpr SStatusRange kRanges[] = {
    {0, 1, kStringUndefinedStatus, 0},
    {2, 54, 139, 1},
    {55, 55, 184, 0},
    {56, 61, 193, 1},
    {62, 67, 195, 0},
    {68, 71, 205, 1},
    {250, 250, 213, 0},
    {251, 253, 210, 1},
};

constexpr unsigned kFirstReplyString = 129;

} // namespace

unsigned ReplyStringId(std::uint32_t replyCode) {
    return replyCode >= 1 && replyCode <= 9 ? kFirstReplyString + (replyCode - 1) : kStringUnspecifiedReply;
}

unsigned CommsStatusStringId(std::uint32_t status) {
    for (const SStatusRange& range : kRanges) {
        if (status >= range.first && status <= range.last) {
            return range.firstId + (status - range.first) * range.step;
        }
    }
    return 0;
}

} // namespace ruvo
