// The application: start-up, check-only mode or run, tear-down.
#pragma once

#include "app/command_line.h"
#include "app/comms_server.h"
#include "app/program_folder.h"
#include "app/single_instance_app.h"
#include "config/result_code.h"
#include "config/run_context.h"
#include "ledger/visit_record.h"
#include "platform/end_requests.h"
#include "run/end_watch.h"
#include "run/run_end.h"

#include <memory>
#include <optional>
#include <span>
#include <string>

namespace ruvo {

/// The whole program as one call. Outcomes reach the user through message boxes and the error log alone: the
/// process exits with status 0 in every case.
class CRuvoApp final : public CSingleInstanceApp {
public:
    enum class EEndRequests : std::uint8_t { Unheard, Heard };

    /// Only a process of its own receives the requests to end: a library leaves them to its host.
    explicit CRuvoApp(EEndRequests requests = EEndRequests::Unheard)
        : m_hearsRequests(requests == EEndRequests::Heard) {}

    /// Starts up, works and tears down. Throws nothing.
    void Run(std::span<const std::string> arguments) noexcept;

private:
    void StartUp(CRunContext& context, std::span<const std::string> arguments);
    void HearRequests();
    void BeginRecord(const CRunContext& context);
    void EndRecord();
    bool CheckDependencies() const;
    void ReportOrRun(CRunContext& context, EResultCode result);
    void TearDown(CRunContext& context);

    std::optional<CProgramFolder> m_programFolder; ///< from start-up to tear-down
    SCommandLine m_commandLine;
    CCommsServer m_commsServer;
    bool m_hearsRequests;
    CRunEnd m_runEnd;
    std::optional<CVisitRecord> m_record;     ///< from start-up on, in a run
    SVisitLine m_ended;                       ///< how it ended
    std::unique_ptr<IEndRequests> m_requests; ///< null where none are heard
    std::optional<CEndWatch> m_endWatch;
};

/// The text that a result code is reported with: the message alone, or in check-only mode the version, the
/// INI path as typed and the message.
std::string BuildResultText(EResultCode result, const SCommandLine& commandLine);

} // namespace ruvo
