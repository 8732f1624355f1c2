// ruvoctl check: the extractor's check-only mode, for people and scripts.
#include "app/comms_server.h"
#include "app/load_and_check.h"
#include "app/program_folder.h"
#include "app/rpc_library.h"
#include "config/configuration.h"
#include "config/result_messages.h"
#include "link/seam/server_failure.h"
#include "log/error_log.h"
#include "platform/file_trust.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/ini_text.h"
#include "platform/text_file.h"
#include "tools/command.h"
#include "tools/ini/diagnostics.h"
#include "tools/ini/ini_document.h"
#include "tools/ini/path_limits.h"
#include "tools/ini/place_warnings.h"
#include "tools/ini/site_environment.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace ruvo {

namespace {

constexpr std::array kOptions{
    SOption{EOptionKind::Positional, "INI",
            "INI file; a relative path is resolved against the current folder"},
};

constexpr std::string_view kNotes =
    R"(Performs the steps of a run up to the first relay: loads the RPC library, reads the INI file, verifies
that the event folder and the error log are writable, applies the rules and starts the comms server, with
the environment that run-site reads from the .env file next to the INI file. As in a run, relative paths
in the INI file are resolved against the program's folder. Prints the result message, the lines that
caused it, and warnings, which also name a full disk, a file system without locks, a state folder that
cannot be used, and events that are in no day file yet (see ruvoctl recover).
Exit status: the result code; 0 on success; 39 if the RPC library cannot be loaded, in which case a run
does not start.

Example:
  ruvoctl check site.ini)";

/// A run reports this in a message box and has no result code for it; scripts know this number.
constexpr int kLibraryMissing = 39;
static_assert(kResultMessages.size() <= kLibraryMissing || kResultMessages[kLibraryMissing].empty(),
              "no result code has the number");

/// The result of the check and its causes.
struct SOutcome {
    int status = 0;
    std::string message;
    std::vector<SDiagnostic> causes;
    std::vector<SDiagnostic> places; ///< warnings about paths that a run writes
};

EResultCode TryCommsServer(std::vector<SDiagnostic>& causes) {
    CCommsServer server;
    if (server.Start()) {
        return EResultCode::Success;
    }
    if (server.HasRuntime()) {
        causes.push_back({0, ExplainServerFailure()});
    }
    return EResultCode::CommsServerFailed;
}

/// Warns about the places that a run writes. Where no folder can be created, its links are not checked.
std::vector<SDiagnostic> FindTroubledPlaces(const std::string& eventRoot, const std::string& iniPath,
                                            EResultCode code) {
    std::vector<SDiagnostic> places;
    const auto add = [&](const std::vector<SDiagnostic>& found) {
        places.insert(places.end(), found.begin(), found.end());
    };
    if (code != EResultCode::EventRootInvalid && code != EResultCode::RegistryDestinationInvalid) {
        add(FindUnwritablePlaces(eventRoot));
        add(FindUnusableStateFolder(eventRoot));
        add(FindMissingLocks(eventRoot));
    }
    add(FindFullDisks(eventRoot, ErrorLogPath()));
    add(FindLeftoverEvents(eventRoot, iniPath));
    return places;
}

/// Some systems make a folder or a file where others have a device.
EResultCode RefuseDevices(EResultCode code, const std::string& eventRoot, std::vector<SDiagnostic>& causes) {
    struct SPlaceRow {
        std::string path;
        EResultCode refusal;
        std::string_view key;
    };
    for (const SPlaceRow& place :
         {SPlaceRow{eventRoot, EResultCode::EventRootInvalid, "EventRootDir"},
          SPlaceRow{ErrorLogPath(), EResultCode::LogFileNotWritable, "ErrorLogPathname"}}) {
        if (NamesDevice(place.path) && (code == EResultCode::Success || code == place.refusal)) {
            causes.push_back({0, std::string(place.key) + ": " + WhyNoRunOpens(place.path)});
            return place.refusal;
        }
    }
    return code;
}

/// Why a run cannot read the file.
std::string WhyNotOpened(const std::string& fullPath, const CIniText& ini) {
    if (std::string why = WhyNoRunOpens(fullPath); !why.empty()) {
        return why;
    }
    if (fullPath.empty()) {
        return "expected a path whose absolute form is shorter than " + std::to_string(kMaxPath) +
               " characters";
    }
    CFile file;
    std::uint64_t length = 0;
    SFileResult result = file.Open(fullPath, {.read = true});
    if (result.Good()) {
        result = file.GetLength(length);
    }
    if (!result.Good()) {
        return SystemErrorText(result.systemCode);
    }
    std::string bytes;
    if (length > kLargestTextFile || !ReadTextFileBytes(fullPath, bytes)) {
        return std::to_string(length) + " bytes, but a run reads at most " + std::to_string(kLargestTextFile);
    }
    const std::string_view why = WhyNotReadable(bytes);
    return !why.empty()                ? std::string(why)
           : ini.Sections().size() < 2 ? "the file has no section header"
                                       : "the file could not be read";
}

SOutcome CheckFile(const std::string& fullPath, const CIniText& ini) {
    if (const auto missing = FindMissingLibrary()) {
        return {kLibraryMissing, missing->message, {{0, missing->reason}}, {}};
    }
    std::vector<SDiagnostic> causes;
    std::vector<SDiagnostic> places;
    EResultCode code = EResultCode::IniFileNotOpened;
    if (!fullPath.empty() && WhyNoRunOpens(fullPath).empty()) {
        const CProgramFolder inProgramFolder;
        CRunContext context;
        code = LoadAndCheck(context, fullPath, true);
        if (!context.DestinationRoot().empty()) {
            places = FindTroubledPlaces(FullPath(context.DestinationRoot()), fullPath, code);
        }
        code = RefuseDevices(code, context.DestinationRoot(), causes);
        code = code == EResultCode::Success ? TryCommsServer(causes) : code;
    }
    if (code == EResultCode::IniFileNotOpened) {
        causes.push_back({0, WhyNotOpened(fullPath, ini)});
    }
    std::vector<SDiagnostic> lines = ExplainResultCode(code, ini);
    lines.insert(lines.end(), causes.begin(), causes.end());
    return {static_cast<int>(code), std::string(ResultMessage(code)), std::move(lines), std::move(places)};
}

/// Warns if every user can read the passwords in the file.
std::vector<SDiagnostic> FindOpenPasswords(const std::string& fullPath, const CIniText& ini) {
    const auto holdsText = [](const SIniEntry& entry) {
        return !entry.IsComment() && entry.value && !entry.value->empty();
    };
    const bool holdsPasswords = std::ranges::any_of(ini.Sections(), [&](const SIniSection& section) {
        return EqualIniNames(section.name, kPasswordsSection) &&
               std::ranges::any_of(section.entries, holdsText);
    });
    if (!holdsPasswords || !IsReadableByEveryone(fullPath).value_or(false)) {
        return {};
    }
    return {{0, std::string("every user of this machine can read the passwords in this file; ") +
                    HowToRestrict()}};
}

int RunCheck(const CArguments& arguments, SConsole& console) {
    const std::string typed = arguments.Get("INI");
    const std::string fullPath = FullPath(typed);
    const SSiteEnvironment environment = ApplySiteEnvironment(typed);
    std::string text;
    if (!ReadTextFile(fullPath, text)) {
        text.clear(); // then the file itself is the only location
    }
    const CIniText ini = CIniText::Parse(text);
    const SOutcome outcome = CheckFile(fullPath, ini);
    console.out.Write(outcome.message + "\n");
    PrintDiagnostics(console.out, typed, "", outcome.causes);
    PrintDiagnostics(console.out, typed, "warning: ", FindWarnings(ini));
    PrintDiagnostics(console.out, typed, "warning: ", FindOpenPasswords(fullPath, ini));
    PrintDiagnostics(console.out, typed, "warning: ", outcome.places);
    PrintDiagnostics(console.out, environment.path, "warning: ", environment.diagnostics);
    return outcome.status;
}

} // namespace

SCommand CheckCommand() {
    return {"check", "Check an INI file as a run does", kNotes, kOptions, RunCheck};
}

} // namespace ruvo
