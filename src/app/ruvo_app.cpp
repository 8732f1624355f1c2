#include "app/ruvo_app.h"

#include "app/call_recording.h"
#include "app/load_and_check.h"
#include "app/rpc_library.h"
#include "app/version.h"
#include "config/result_messages.h"
#include "dayfile/off_file.h"
#include "log/error_log.h"
#include "log/log_reserve.h"
#include "log/run_texts.h"
#include "paths/path_utilities.h"
#include "platform/environment.h"
#include "platform/full_path.h"
#include "platform/message_box.h"
#include "platform/standard_error.h"
#include "run/extraction_run.h"
#include "run/link_control.h"

#include <exception>

namespace ruvo {

namespace {

void LogFailure(const char* kind, const char* what) noexcept {
    WithLogReserve([&] { LogMessage(ExceptionText(kind, what), false); });
}

template <class Action>
void LogFailures(Action action) noexcept {
    try {
        action();
    } catch (const CFileException& exception) {
        LogFailure("Fatal", exception.what());
    } catch (const std::exception& exception) {
        LogFailure("Unhandled", exception.what());
    } catch (...) {
        LogFailure("Unhandled", "of an unknown type");
    }
}

/// A run by hand with a mistyped option would else visit the relays and look like an answer to it.
void ReportArgumentsWithoutEffect(const SCommandLine& commandLine) {
    for (const std::string& argument : commandLine.withoutEffect) {
        WriteStandardError("ruvo: " + argument +
                           ": argument without effect; expected FILE.ini, or -t to check only");
    }
}

} // namespace

std::string BuildResultText(EResultCode result, const SCommandLine& commandLine) {
    const std::string_view message = ResultMessage(result);
    if (!commandLine.checkOnly) {
        return std::string(message);
    }
    return std::string("Ruvo\nVersion Number: ") + ProgramVersion() + "\n\nINI file: " + commandLine.iniPath +
           "\n\n" + std::string(message) + "\n";
}

/// However the start-up or the run ends, the link is closed and the server released.
void CRuvoApp::Run(std::span<const std::string> arguments) noexcept {
    LogFailures([&] {
        CRunContext context;
        LogFailures([&] { StartUp(context, arguments); });
        TearDown(context);
    });
}

void CRuvoApp::StartUp(CRunContext& context, std::span<const std::string> arguments) {
    m_commandLine = ParseCommandLine(arguments);
    if (m_hearsRequests && !m_commandLine.checkOnly) {
        HearRequests();
    }
    if (!CheckDependencies()) {
        return;
    }
    ReportArgumentsWithoutEffect(m_commandLine);
    m_programFolder.emplace();
    EResultCode result = LoadAndCheck(context, m_commandLine.iniPath, m_commandLine.checkOnly);
    if (!m_commandLine.checkOnly && !ClaimSingleInstance()) {
        LogMessage(kAlreadyRunning, false);
        return;
    }
    BeginRecord(context);
    if (!m_commandLine.checkOnly) {
        PlanRecording(context.DestinationRoot());
    }
    if (result == EResultCode::Success && !m_commsServer.Start()) {
        result = EResultCode::CommsServerFailed;
    }
    ReportOrRun(context, result);
}

namespace {

/// A runner that visits some relays of a site once more gives a copy of its INI file, and names the file.
std::string IniPathForRecord(const std::string& iniPath) {
    const std::string named = FullPath(EnvironmentValue("RUVO_INI_NAME").value_or(""));
    return !named.empty() && IsExistingFile(named) ? named : iniPath;
}

} // namespace

/// A run that cannot begin has one, too, if it knows its event root.
void CRuvoApp::BeginRecord(const CRunContext& context) {
    if (!m_commandLine.checkOnly) {
        m_record.emplace(context.DestinationRoot(), IniPathForRecord(m_commandLine.iniPath));
        m_record->Begin();
        m_runEnd.WhenRunAbandoned([this] { EndRecord(); });
    }
}

/// An end that is not known by then was a failure that the log reports; the record then looks like that of a
/// killed run.
void CRuvoApp::EndRecord() {
    if (!m_record) {
        return;
    }
    if (m_runEnd.IsAsked() && m_runEnd.Stage() != CRunEnd::EStage::NotBegun) {
        m_ended.ended = ERunEnd::Signal;
        m_ended.signal = m_runEnd.Name();
        m_ended.notVisited = m_runEnd.NotVisited();
    }
    m_ended.logLines = ErrorLogLines();
    m_record->End(m_ended);
}

/// Where they cannot be heard they end the program at once, and the next run completes what it was doing.
void CRuvoApp::HearRequests() {
    m_requests = HearEndRequests();
    if (m_requests == nullptr) {
        return;
    }
    try {
        m_endWatch.emplace(m_runEnd, *m_requests);
    } catch (const std::exception&) { // no thread for it
        m_requests->Release();
    }
}

bool CRuvoApp::CheckDependencies() const {
    const std::optional<SMissingLibrary> missing = FindMissingLibrary();
    if (missing) {
        ShowMessageBox(EMessageIcon::Error, ApplicationName(), missing->message);
    }
    return !missing;
}

void CRuvoApp::ReportOrRun(CRunContext& context, EResultCode result) {
    const bool good = result == EResultCode::Success;
    const std::string text = BuildResultText(result, m_commandLine);
    if (m_commandLine.checkOnly) {
        ShowMessageBox(good ? EMessageIcon::Information : EMessageIcon::Warning, ApplicationName(), text);
    } else if (good) {
        RunExtraction(context, m_runEnd, m_record ? &*m_record : nullptr);
        m_ended.ended = ERunEnd::Whole;
    } else {
        m_ended.ended = ERunEnd::NotBegun;
        m_ended.result = static_cast<std::uint64_t>(result);
        if (result == EResultCode::IniFileNotOpened) { // the file that would have named the log
            const std::string path = FullPath(m_commandLine.iniPath);
            WriteStandardError("ruvo: " + DisplayPath(path.empty() ? m_commandLine.iniPath : path) +
                               ": the INI file cannot be read; no relay is visited");
        }
        LogMessage(text, false);
    }
}

void CRuvoApp::TearDown(CRunContext& context) {
    context.Config().WipePasswords();
    CloseLink(context);
    m_runEnd.Finish();
    EndRecord();
    m_commsServer.Stop();
    m_programFolder.reset();
}

} // namespace ruvo
