#include "model/status/status.h"

#include "model/status/status_string_ids.h"
#include "platform/debug_output.h"

#include <array>

namespace ruvo {

namespace {

constexpr int kTolerantLevel = 6;

constexpr std::uint32_t Replies(std::initializer_list<unsigned> codes) {
    std::uint32_t set = 0;
    for (const unsigned code : codes) {
        set |= std::uint32_t{1} << code;
    }
    return set;
}

/// The device replies that a level accepts, as a bit set of codes below 32.
constexpr std::array<std::uint32_t, 8> kAcceptedReplies{
    0, Replies({9}), Replies({2, 3, 5}), Replies({1, 2, 6}), Replies({12}), 0xFFFFFFFF, 0, Replies({5, 14}),
};
constexpr int kAnyReplyLevel = 5;

bool AcceptsReply(int level, std::uint8_t code) {
    if (level < 0 || level >= static_cast<int>(kAcceptedReplies.size())) {
        return false;
    }
    return level == kAnyReplyLevel ||
           (code < 32 && (kAcceptedReplies[static_cast<std::size_t>(level)] >> code & 1U) != 0);
}

/// What level 6 does not accept.
bool IsGrave(std::uint16_t value) {
    return value == kStatusBusyOverflow || value == kStatusNotResponding || value == kStatusNoPortOpen ||
           value == kStatusAborted;
}

bool Accepts(CStatus status, int level) {
    const std::uint8_t kind = status.GetKind();
    if (kind == kStatusSuccess || kind == kStatusReplyEight) {
        return true;
    }
    if (level == kTolerantLevel) {
        return !IsGrave(status.GetValue());
    }
    return kind == kStatusReply && AcceptsReply(level, status.GetCode());
}

void ThrowIfAborted(CStatus status, int level) {
    if (status.GetValue() == kStatusAborted && level != kTolerantLevel) {
        throw status; // NOLINT(misc-throw-by-value-catch-by-reference): the status is the exception
    }
}

void TraceFailure(const IError& error) {
    std::string text;
    WriteDebugOutput(" *** [ PARLANE STATUS   ] Error\n");
    error.GetMessageText(text);
    WriteDebugOutput(" *** [ PARLANE STATUS   ] Error message: " + text + "\n");
    error.GetLogText(text);
    WriteDebugOutput(" *** [ PARLANE STATUS   ] Error log    : " + text + "\n");
}

} // namespace

CStatus CStatus::FromReplyCode(std::uint8_t replyCode) {
    if (replyCode == 0) {
        return CStatus();
    }
    const std::uint32_t kind = replyCode == 8 ? kStatusReplyEight : kStatusReply;
    return CStatus(replyCode * 256U + kind);
}

unsigned CStatus::GetMessageId() const {
    // 10 to 14 have numbers of their own here; 10 to 13 read like an unspecified reply all the same.
    constexpr unsigned kFirstLateReply = 102;
    constexpr std::uint8_t kFirstPlainKind = 72;
    constexpr std::uint8_t kUnexpectedDisconnection = 69;
    constexpr unsigned kCallTimedOut = 205;
    if (GetKind() == kStatusReply) {
        const std::uint8_t code = GetCode();
        return code >= 10 && code <= 14 ? kFirstLateReply + (code - 10U) : ReplyStringId(code);
    }
    if (GetKind() == kUnexpectedDisconnection) {
        return kCallTimedOut;
    }
    // Only below that kind does the kind alone decide; beyond it the whole value must match.
    const unsigned id = CommsStatusStringId(GetKind() < kFirstPlainKind ? GetKind() : m_value);
    return id != 0 ? id : kStringUnspecifiedReply;
}

bool IsAcceptable(CStatus status, int level) {
    ThrowIfAborted(status, level);
    return Accepts(status, level);
}

bool CheckStatus(CStatus status, int level, unsigned messageId, unsigned prefixId, std::uint32_t code,
                 CErrorList& errors) {
    if (Accepts(status, level)) {
        return true;
    }
    auto error =
        std::make_unique<CRelayError>(messageId, prefixId, code, status.GetMessageId(), status.GetValue());
    const CRelayError& recorded = *error;
    AddError(errors, std::move(error));
    TraceFailure(recorded);
    ThrowIfAborted(status, level);
    return false;
}

} // namespace ruvo
