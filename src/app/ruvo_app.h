// The application: start-up, check-only mode or run, tear-down.
#pragma once

#include "app/command_line.h"
#include "app/comms_server.h"
#include "app/program_folder.h"
#include "app/single_instance_app.h"
#include "config/result_code.h"
#include "config/run_context.h"

#include <optional>
#include <span>
#include <string>

namespace ruvo {

/// The whole program as one call. Outcomes reach the user through message boxes and the error log alone: the
/// process exits with status 0 in every case.
class CRuvoApp final : public CSingleInstanceApp {
public:
    /// Starts up, works and tears down. Throws nothing.
    void Run(std::span<const std::string> arguments) noexcept;

private:
    void StartUp(CRunContext& context, std::span<const std::string> arguments);
    bool CheckDependencies() const;
    void ReportOrRun(CRunContext& context, EResultCode result);
    void TearDown(CRunContext& context);

    std::optional<CProgramFolder> m_programFolder; ///< from start-up to tear-down
    SCommandLine m_commandLine;
    CCommsServer m_commsServer;
};

/// The text that a result code is reported with: the message alone, or in check-only mode the version, the
/// INI path as typed and the message.
std::string BuildResultText(EResultCode result, const SCommandLine& commandLine);

} // namespace ruvo
