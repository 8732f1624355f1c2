#include "tools/visit/visit.h"

#include "base/text.h"
#include "paths/path_utilities.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/ini_text.h"
#include "platform/modules.h"
#include "platform/state_folder.h"
#include "platform/users.h"
#include "tools/given_time.h"
#include "tools/ini/site_environment.h"
#include "tools/sites/muted_lines.h"
#include "tools/sites/site_visits.h"
#include "tools/text_encoding.h"
#include "tools/visit/after_visit.h"
#include "tools/visit/log_growth.h"
#include "tools/visit/relay_progress.h"
#include "tools/visit/retry_file.h"

#include <algorithm>

namespace ruvo {

namespace {

std::string Shown(const std::string& path) {
    return SystemTextToUtf8(DisplayPath(path));
}

/// As the folder has it, because the single instance goes by the name; letter case may not matter there.
std::string ExtractorPath() {
    const SPathParts self = SplitPath(ProgramPath());
    const std::string folder = ParentFolder(ProgramPath());
    const std::string wanted = "ruvo" + self.extension;
    std::vector<SFolderEntry> entries;
    static_cast<void>(ListFolder(folder, entries));
    const auto found = std::ranges::find_if(
        entries, [&](const SFolderEntry& entry) { return EqualIniNames(entry.name, wanted); });
    return folder + "\\" + (found == entries.end() ? wanted : found->name);
}

} // namespace

SChildProgram ExtractorFor(const std::string& iniPath) {
    return {.path = ExtractorPath(),
            .arguments = {DisplayPath(iniPath)},
            .environment = WholeEnvironment(),
            .input = {}};
}

SChildProgram CompanionFor(std::vector<std::string> arguments) {
    return {.path = ProgramPath(),
            .arguments = std::move(arguments),
            .environment = WholeEnvironment(),
            .input = {}};
}

CVisit::CVisit(std::string iniPath, CVisitOutput& output) : m_iniPath(std::move(iniPath)), m_output(output) {
    SetEnvironment();
    m_places = ReadSitePlaces(m_iniPath);
}

void CVisit::SetEnvironment() {
    constexpr const char* kServicesUser = "ruvo";
    constexpr const char* kUsersRegistry = "RUVO_REGISTRY_USER";
    constexpr const char* kSite = "RUVO_SITE";
    const auto complain = [this](const std::string& text) {
        m_output.Complain(text);
        m_status = static_cast<int>(EVisitStatus::Refused);
    };
    // The services' user can write its home, so a registry there must not choose which module is loaded.
    if (CurrentUser().name == kServicesUser && !EnvironmentValue(kUsersRegistry)) {
        SetEnvironmentValue(kUsersRegistry, "/dev/null");
    }
    ClearEnvironmentValue(kSite); // an outer visit's
    const SSiteEnvironment environment = ApplySiteEnvironment(m_iniPath, EEnvironmentOf::ItsChildren);
    for (const SDiagnostic& diagnostic : environment.diagnostics) {
        complain(Shown(environment.path) + ": " +
                 (diagnostic.line > 0 ? "line " + std::to_string(diagnostic.line) + ": " : "") +
                 diagnostic.text);
    }
    // Several sites can be visited at the same time, but no site twice.
    SetEnvironmentValue(kSite, SplitPath(m_iniPath).name);
    if (const auto named = EnvironmentValue("RUVO_LOCK_DIR")) {
        const std::string folder = FullPath(*named);
        static_cast<void>(MakePrivateFolder(folder)); // one that is there may be another's
        if (GetPathKind(folder) != EPathKind::Folder) {
            complain(Shown(folder) + ": the folder for the locks cannot be created");
        }
    }
}

int CVisit::RunCompanion(std::vector<std::string> arguments, std::string& printed) {
    CChildProgram::SWatch watch;
    watch.take = [&printed](std::string_view piece) { printed += piece; };
    const CVisitControl::SProgramEnd ended = m_control.Run(CompanionFor(std::move(arguments)), watch);
    if (!ended.failure.empty()) {
        m_output.Complain(Shown(ProgramPath()) + ": " + ended.failure);
        return static_cast<int>(EVisitStatus::Refused);
    }
    return static_cast<int>(ended.end.status);
}

/// Reports what is wrong even if the error log cannot be written.
bool CVisit::IsConfigurationGood(bool isShown) {
    std::string printed;
    const bool isGood = RunCompanion({"check", DisplayPath(m_iniPath)}, printed) == 0;
    if (m_control.Asked() == nullptr && (isShown || !isGood || m_status != 0)) {
        m_output.Say(isGood ? EPriority::Warning : EPriority::Error, printed);
    }
    return isGood;
}

int CVisit::Check() {
    if (!IsConfigurationGood(true)) {
        m_status = static_cast<int>(EVisitStatus::Refused);
    }
    return m_status;
}

int CVisit::Test(const std::string& key) {
    std::string printed;
    const int status = RunCompanion({"test", DisplayPath(m_iniPath), key}, printed);
    m_output.Say(status == 0 ? EPriority::Notice : EPriority::Error, printed);
    return status;
}

int CVisit::Run(const SRetry& retry) {
    if (const auto other = m_places ? FindRunningVisit(m_places->events, m_iniPath) : std::nullopt) {
        return SayIsVisited(*other);
    }
    if (!IsConfigurationGood(false)) {
        m_status = static_cast<int>(EVisitStatus::Refused);
    }
    if (m_control.Asked() != nullptr) {
        return SayIsEnded();
    }
    CRetryFile().Remove(); // what a killed visit of this site has left
    m_attempts.push_back(RunExtractor(ExtractorFor(m_iniPath), m_places.value_or(SSitePlaces())));
    for (unsigned attempt = 0; attempt < retry.most; ++attempt) {
        const std::vector<std::string> keys = RelaysWithoutAnswer(m_attempts.back());
        if (keys.empty() || !TryAgain(keys, retry.after)) {
            break;
        }
    }
    const int status = Status();
    if (status != static_cast<int>(EVisitStatus::IsVisited)) {
        RunProgramsAfter(status);
    }
    return status;
}

std::string CVisit::Reached() const {
    if (!m_places || m_attempts.empty() || !m_attempts.front().record) {
        return {};
    }
    const SVisitCounts counts = CountVisit(m_attempts, *m_places);
    return std::to_string(counts.reached) + " of " + Counted(counts.relays, "relay") + " reached, " +
           Counted(counts.stored, "event") + " stored";
}

std::string CVisit::Digest() {
    std::string digest;
    for (const SRunOutcome& attempt : m_attempts) {
        if (attempt.record) { // its status is that of what it tells of
            static_cast<void>(
                RunCompanion({"digest", "--visit=" + std::to_string(attempt.record->line.number), "--",
                              DisplayPath(m_iniPath)},
                             digest));
        }
    }
    return digest.empty() ? "There is no record of this visit; the error log has what it wrote there.\n"
                          : digest;
}

void CVisit::RunProgramsAfter(int status) {
    const SAfterPrograms programs = FindAfterPrograms(ProgramsFolder());
    if (!m_places || (programs.paths.empty() && programs.refused.empty())) {
        return;
    }
    for (const char* const name : {"RUVO_ATTEMPT", "RUVO_INI_NAME"}) { // of the last attempt alone
        ClearEnvironmentValue(name);
    }
    const SVisitCounts counts = CountVisit(m_attempts, *m_places);
    std::string runs;
    for (const SRunOutcome& attempt : m_attempts) {
        runs += attempt.record ? (runs.empty() ? "" : " ") + std::to_string(attempt.record->line.number) : "";
    }
    const SAfterVisit visit{.variables = {{"RUVO_INI", DisplayPath(m_iniPath)},
                                          {"RUVO_EVENT_ROOT", DisplayPath(m_places->events)},
                                          {"RUVO_LOG", DisplayPath(m_places->log)},
                                          {"RUVO_STATUS", std::to_string(status)},
                                          {"RUVO_RUNS", runs},
                                          {"RUVO_RELAYS", std::to_string(counts.relays)},
                                          {"RUVO_REACHED", std::to_string(counts.reached)},
                                          {"RUVO_TAKEN", std::to_string(counts.taken)},
                                          {"RUVO_STORED", std::to_string(counts.stored)},
                                          {"RUVO_LOST", std::to_string(counts.lost)},
                                          {"RUVO_SET_ASIDE", std::to_string(counts.setAside)},
                                          {"RUVO_WAITING", std::to_string(counts.waiting)}},
                            .digest = Digest()};
    RunAfterVisit(programs, visit, m_control, m_output);
}

bool CVisit::TryAgain(const std::vector<std::string>& keys, std::chrono::seconds after) {
    const std::string relays = Counted(keys.size(), "relay") + " without an answer";
    if (m_output.IsJournal() || m_output.IsForPerson()) {
        m_output.Say(EPriority::Notice, relays + "; next attempt in " + LengthForPeople(after.count()));
    }
    if (!m_control.Pause(after)) {
        m_output.Complain("ended by " + std::string(m_control.Asked()) + "; no further attempt for " +
                          relays);
        m_status = WorseStatus(m_status, static_cast<int>(EVisitStatus::Ended));
        return false;
    }
    CRetryFile file;
    if (const std::string why = file.Make(m_iniPath, *m_places, keys); !why.empty()) {
        m_output.Complain("no further attempt for " + relays + ": " + why);
        m_status = WorseStatus(m_status, static_cast<int>(EVisitStatus::Refused));
        return false;
    }
    SSitePlaces places = *m_places;
    std::erase_if(places.relays, [&keys](const SVisitedRelay& relay) {
        return std::ranges::find(keys, relay.key) == keys.end();
    });
    SetEnvironmentValue("RUVO_ATTEMPT", std::to_string(m_attempts.back().record->line.attempt + 1));
    SetEnvironmentValue("RUVO_INI_NAME", DisplayPath(m_iniPath));
    SRunOutcome outcome = RunExtractor(ExtractorFor(file.Path()), places);
    if (!outcome.record && outcome.otherVisit) {
        SayIsVisited(*outcome.otherVisit);
        return false;
    }
    m_attempts.push_back(std::move(outcome));
    return true;
}

SRunOutcome CVisit::RunExtractor(const SChildProgram& program, const SSitePlaces& places) {
    const CLogGrowth log(places.log);
    const CRunWatch records(places.events);
    SRunOutcome outcome;
    const auto show = [&](std::string_view line) {
        outcome.hasPrinted = true;
        m_output.Say(EPriority::Error, SystemTextToUtf8(line));
    };
    CLines printed;
    CChildProgram::SWatch watch;
    watch.take = [&](std::string_view piece) { printed.Add(piece, show); };
    const bool isWatched = m_places && (m_output.IsForPerson() || m_output.IsJournal());
    const CRelayNames names = isWatched ? CRelayNames(m_iniPath, places) : CRelayNames();
    CRelayProgress progress(records, places, names, m_output);
    std::uint64_t process = 0;
    if (isWatched) {
        watch.every = CRelayProgress::kPause;
        watch.look = [&] { progress.Look(process); };
    }
    const CVisitControl::SProgramEnd ended =
        m_control.Run(program, watch, [&process](std::uint64_t number) { process = number; });
    printed.Finish(show);
    if (!ended.failure.empty()) {
        show(Shown(program.path) + ": " + ended.failure);
    }
    outcome.end = ended.end;
    outcome.record = records.Find(ended.process);
    if (isWatched && outcome.record) {
        progress.Finish(*outcome.record);
    }
    outcome.logged = log.Added();
    m_output.Say(EPriority::Warning, SystemTextToUtf8(outcome.logged));
    if (m_places && !outcome.logged.empty()) {
        outcome.mutedLines = CountMutedLines(ReadSiteVisits(m_iniPath, places, NowSeconds()), outcome.logged);
    }
    if (!outcome.record && m_places) {
        outcome.otherVisit = FindRunningVisit(places.events, m_iniPath);
    }
    return outcome;
}

int CVisit::Status() {
    const SRunOutcome& last = m_attempts.back();
    if (m_control.Asked() != nullptr && last.end.signal == m_control.Asked()) { // before it could hear it
        return SayIsEnded();
    }
    const int status = WorseStatus(m_status, StatusOfAttempts(m_attempts));
    return status == static_cast<int>(EVisitStatus::IsVisited) ? SayIsVisited(*last.otherVisit) : status;
}

int CVisit::SayIsVisited(const SVisitLine& other) {
    m_output.Complain(Shown(m_iniPath) + ": process " + std::to_string(other.process) +
                      " has been visiting this site since " + RecordTimeForPeople(other.begin) +
                      "; no relay was visited");
    return static_cast<int>(EVisitStatus::IsVisited);
}

int CVisit::SayIsEnded() {
    m_output.Complain("ended by " + std::string(m_control.Asked()) + "; no relay was visited");
    return static_cast<int>(EVisitStatus::Ended);
}

} // namespace ruvo
