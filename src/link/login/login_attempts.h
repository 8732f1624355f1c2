// What all logins share: attempts until one is accepted, and what is reported to the application of each
// answer.
#pragma once

#include "link/callbacks.h"
#include "link/login/security_cells.h"
#include "link/requests/writes.h"

#include <functional>
#include <optional>
#include <span>

namespace ruvo {

/// What a login is made with.
struct SLoginParts {
    CChannel& channel;
    CWrites& writes;
    CSecurityCells& cells;
};

/// What is read after an answer, to report more about it to the application.
enum class ELoginFollowUp : std::uint8_t { None, AttemptsLeft, AttemptsLeftOrBlocked, BlockingTime };

/// How one answer of the relay is reported.
struct SLoginReplyRow {
    LinkStatus status;
    const char* outcome; ///< for the trace
    EGetPasswordCode code;
    ELoginFollowUp followUp;
};

/// A flow's name in traces and the answers that it distinguishes; any other answer is an unknown error.
struct SLoginFlow {
    const char* name;
    std::span<const SLoginReplyRow> replies;
};
extern const SLoginFlow kPlainLogin;
extern const SLoginFlow kEncipheredLogin;
extern const SLoginFlow kUserLogin;
extern const SLoginFlow kSecondEditionLogin;

/// What the next call of a callback reports of the attempt before it.
struct SLoginReport {
    int code = GETPASSWORD_PASS_REQUEST;
    std::int32_t extra = -1;
};

/// The attempts of one login by one of the flows. Callbacks and reads run without the command lock.
class CLoginAttempts {
public:
    /// One attempt, given the result of the one before: the relay's answer, or none to give up.
    using Attempt = std::function<std::optional<LinkStatus>(const SLoginReport& report)>;

    /// The parts are borrowed. The cells about attempts and blocking are in `securityColumn`.
    CLoginAttempts(const SLoginParts& parts, const SLoginFlow& flow, std::uint8_t securityColumn)
        : m_parts(parts), m_flow(flow), m_column(securityColumn) {}

    /// Attempts until one is accepted: its status, or that of the attempt that ended them.
    LinkStatus Run(bool passwordEntered, const Attempt& attempt);

    /// Gives up because a callback is missing or declined.
    std::nullopt_t Cancel() const;
    /// Gives up because of a fault, which is traced; the login then ends with `status`.
    std::nullopt_t Fail(const char* fault, LinkStatus status = kLinkAborted);

private:
    SLoginReport MakeReport(LinkStatus status);
    void AddAttemptsLeft(SLoginReport& report, bool noneMeansBlocked);
    void AddBlockingTime(SLoginReport& report);
    void TraceOutcome(const char* outcome) const;
    void TraceNumber(const char* what, std::int32_t number) const;

    SLoginParts m_parts;
    const SLoginFlow& m_flow;
    std::uint8_t m_column;
    LinkStatus m_givenUp = kLinkAborted; ///< how a login ends that an attempt abandons
};

} // namespace ruvo
