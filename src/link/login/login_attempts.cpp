#include "link/login/login_attempts.h"

#include "link/seam/known_cells.h"
#include "platform/trace.h"

#include <algorithm>

namespace ruvo {

namespace {

constexpr SLoginReplyRow kPlainReplies[] = {
    {kReplyRejected, "incorrect", GETPASSWORD_PASS_INVALID_ERR, ELoginFollowUp::None},
};
constexpr SLoginReplyRow kEncipheredReplies[] = {
    {kReplyRejected, "incorrect", GETPASSWORD_PASS_CS_INVALID_ERR, ELoginFollowUp::AttemptsLeft},
    {kReplyBlocked, "blocked", GETPASSWORD_PASS_BLOCKED_TEMP_ERR, ELoginFollowUp::BlockingTime},
};
// The second edition knows one answer more, the last; the first edition's table ends before it.
constexpr SLoginReplyRow kUserReplies[] = {
    {kReplyRejected, "incorrect", GETPASSWORD_PASS_CS_INVALID_ERR, ELoginFollowUp::AttemptsLeftOrBlocked},
    {kReplyNotSettable, "Target cell is not settable", GETPASSWORD_PASS_NOT_SETTABLE_ERR,
     ELoginFollowUp::None},
    {kReplyUnknownUser, "invalid username", GETPASSWORD_PASS_USERNAME_ERR, ELoginFollowUp::None},
};
constexpr std::span<const SLoginReplyRow> kAllUserReplies(kUserReplies);

constexpr SLoginReplyRow kAnyOtherReply = {kLinkComFailure, "error", GETPASSWORD_PASS_UNKNOWN_ERR,
                                           ELoginFollowUp::None};

} // namespace

const SLoginFlow kPlainLogin{"EnterNonCyberSecurityPassword", kPlainReplies};
const SLoginFlow kEncipheredLogin{"EnterCyberSecurityPassword", kEncipheredReplies};
const SLoginFlow kUserLogin{"EnterCyberSecurityBrickIntegratedLoginAndPassword",
                            kAllUserReplies.first(kAllUserReplies.size() - 1)};
const SLoginFlow kSecondEditionLogin{"EnterCyberSecurityBrickIntegratedLoginAndPasswordCSEd3",
                                     kAllUserReplies};

LinkStatus CLoginAttempts::Run(bool passwordEntered, const Attempt& attempt) {
    SLoginReport report;
    report.code = passwordEntered ? GETPASSWORD_PASS_LEVEL_ERR : GETPASSWORD_PASS_REQUEST;
    while (!m_parts.channel.IsEntryAborted()) {
        const std::optional<LinkStatus> status = attempt(report);
        if (!status || IsWriteGood(*status)) {
            return status.value_or(m_givenUp);
        }
        if (!m_parts.channel.IsEntryAborted()) {
            report = MakeReport(*status);
        }
    }
    return kLinkAborted;
}

std::nullopt_t CLoginAttempts::Cancel() const {
    if (const LoginCancelledFunction cancelled = LinkCallbacks().loginCancelled) {
        cancelled();
    }
    return std::nullopt;
}

std::nullopt_t CLoginAttempts::Fail(const char* fault, LinkStatus status) {
    m_givenUp = status;
    TraceError("CP32Wrap::%s : %s", m_flow.name, fault);
    return std::nullopt;
}

SLoginReport CLoginAttempts::MakeReport(LinkStatus status) {
    const auto found = std::ranges::find(m_flow.replies, status, &SLoginReplyRow::status);
    const SLoginReplyRow& reply = found == m_flow.replies.end() ? kAnyOtherReply : *found;
    TraceOutcome(reply.outcome);
    SLoginReport report;
    report.code = reply.code;
    switch (reply.followUp) {
    case ELoginFollowUp::None:
        break;
    case ELoginFollowUp::AttemptsLeft:
    case ELoginFollowUp::AttemptsLeftOrBlocked:
        AddAttemptsLeft(report, reply.followUp == ELoginFollowUp::AttemptsLeftOrBlocked);
        break;
    case ELoginFollowUp::BlockingTime:
        AddBlockingTime(report);
        break;
    }
    return report;
}

void CLoginAttempts::AddAttemptsLeft(SLoginReport& report, bool noneMeansBlocked) {
    LinkStatus status = kLinkGood;
    const auto left = m_parts.cells.ReadNumber(MakeCellAddress(m_column, rows::kAttemptsLeft), status);
    if (left && *left == 0 && noneMeansBlocked) {
        report.code = GETPASSWORD_PASS_BLOCKED_TEMP_ERR;
        TraceOutcome("blocked");
        AddBlockingTime(report);
    } else if (left) {
        report.extra = static_cast<std::int32_t>(*left);
        TraceNumber("Attempts remaining", report.extra);
    }
}

/// A relay that has no blocking time at all has blocked its password for good.
void CLoginAttempts::AddBlockingTime(SLoginReport& report) {
    LinkStatus status = kLinkGood;
    const auto left = m_parts.cells.ReadNumber(MakeCellAddress(m_column, rows::kBlockingTime), status);
    if (left) {
        report.extra = static_cast<std::int32_t>(*left);
        TraceNumber("Blocked timer left", report.extra);
    } else if (status == kReplyNoSuchCell) {
        report.code = GETPASSWORD_PASS_BLOCKED_PERM_ERR;
    }
}

void CLoginAttempts::TraceOutcome(const char* outcome) const {
    TraceError("CP32Wrap::%s : Password dialog : Password : %s", m_flow.name, outcome);
}

void CLoginAttempts::TraceNumber(const char* what, std::int32_t number) const {
    TraceError("CP32Wrap::%s : Password dialog : Password : %s : %d", m_flow.name, what, number);
}

} // namespace ruvo
