// What all login flows share: attempts until one is accepted, and what the application is told of each
// answer. Included by the files that implement CP32Wrap, by nobody else.
#pragma once

#include "link/channel/request_pattern.h"

#include <optional>
#include <span>

namespace ruvo {

/// What is read after an answer, to tell the application more about it.
enum class ELoginFollowUp : std::uint8_t { None, AttemptsLeft, AttemptsLeftOrBlocked, BlockingTime };

/// How one answer of the relay is reported.
struct SLoginReplyRow {
    LinkStatus status;
    const char* outcome; ///< for the trace
    EGetPasswordCode code;
    ELoginFollowUp followUp;
};

/// A flow's name in traces and the answers that it tells apart; any other answer is an unknown error.
struct SLoginFlow {
    const char* name;
    std::span<const SLoginReplyRow> replies;
};
extern const SLoginFlow kPlainLogin;
extern const SLoginFlow kEncipheredLogin;
extern const SLoginFlow kUserLogin;
extern const SLoginFlow kSecondEditionLogin;

/// What the next call of a callback tells of the attempt before it.
struct SLoginReport {
    int code = GETPASSWORD_PASS_REQUEST;
    std::int32_t extra = -1;
};

/// One password entry by one of the flows. Callbacks and reads run without the command lock.
class CP32Wrap::CLogin {
public:
    /// Borrows the client for its own life. The cells about attempts and blocking are in `securityColumn`.
    CLogin(CP32Wrap& link, const SLoginFlow& flow, std::uint8_t securityColumn)
        : m_link(link), m_flow(flow), m_column(securityColumn) {}

    /// Attempts until one is accepted: its status, or what an attempt gives up with. `attempt` takes the
    /// report and returns the relay's answer, or none to give up.
    template <class Attempt>
    LinkStatus Run(bool passwordEntered, Attempt attempt) {
        SLoginReport report;
        report.code = passwordEntered ? GETPASSWORD_PASS_LEVEL_ERR : GETPASSWORD_PASS_REQUEST;
        while (!m_link.IsEntryAborted()) {
            const std::optional<LinkStatus> status = attempt(report);
            if (!status || IsWriteGood(*status)) {
                return status.value_or(m_givenUp);
            }
            if (!m_link.IsEntryAborted()) {
                report = Judge(*status);
            }
        }
        return kLinkAborted;
    }

    /// Asks the application for a password of at most `length` characters and lets `send` send it: what
    /// `send` returns, or none when the application declines.
    template <class Send>
    std::optional<LinkStatus> Attempt(const SPasswordRequest& request, std::uint32_t length,
                                      const SLoginReport& report, Send send) const;

    /// Gives up because a callback is missing or declined.
    std::nullopt_t Cancel() const;
    /// Gives up because of a fault, which is traced; the entry then ends with `status`.
    std::nullopt_t Fail(const char* fault, LinkStatus status = kLinkAborted);

private:
    SLoginReport Judge(LinkStatus status);
    void AddAttemptsLeft(SLoginReport& report, bool noneMeansBlocked);
    void AddBlockingTime(SLoginReport& report);
    void TraceOutcome(const char* outcome) const;
    void TraceNumber(const char* what, std::int32_t number) const;

    CP32Wrap& m_link;
    const SLoginFlow& m_flow;
    std::uint8_t m_column;
    LinkStatus m_givenUp = kLinkAborted; ///< how an entry ends whose attempt gives up
};

} // namespace ruvo
