#include "tools/visit/after_visit.h"

#include "base/text.h"
#include "platform/environment.h"
#include "platform/file_trust.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/sites_folder.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <set>

namespace ruvo {

namespace {

bool IsProgramName(std::string_view name) {
    constexpr std::string_view kLeftByPackages = ".dpkg-";
    const auto isUsual = [](char c) { return IsLetter(c) || IsDigit(c) || c == '-' || c == '_' || c == '.'; };
    return !name.starts_with('.') && std::ranges::all_of(name, isUsual) &&
           name.find(kLeftByPackages) == std::string_view::npos;
}

std::string Shown(const std::string& path) {
    return SystemTextToUtf8(DisplayPath(path));
}

std::vector<std::string> EnvironmentFor(const SAfterVisit& visit) {
    std::vector<std::string> environment = WholeEnvironment();
    for (const auto& [name, value] : visit.variables) {
        std::erase_if(environment, [start = name + "="](const std::string& variable) {
            return variable.starts_with(start);
        });
        environment.push_back(name + "=" + value);
    }
    return environment;
}

void RunProgram(const SChildProgram& program, CVisitControl& control, CVisitOutput& output,
                std::chrono::milliseconds most) {
    CLines lines;
    const auto say = [&output](std::string_view line) { output.Say(EPriority::Notice, line); };
    CChildProgram::SWatch watch;
    watch.take = [&](std::string_view piece) { lines.Add(piece, say); };
    watch.most = most;
    const CVisitControl::SProgramEnd ended = control.Run(program, watch);
    lines.Finish(say);
    const std::string what = "after the visit: " + Shown(program.path) + ": ";
    if (!ended.failure.empty()) {
        output.Complain(what + ended.failure, EPriority::Warning);
    } else if (ended.end.hasTimedOut) {
        output.Complain(what + "took too long and was killed", EPriority::Warning);
    } else if (ended.end.status != 0) {
        output.Complain(what + "ended with status " + std::to_string(ended.end.status), EPriority::Warning);
    }
}

} // namespace

SVisitCounts CountVisit(const std::vector<SRunOutcome>& attempts, const SSitePlaces& places) {
    SVisitCounts counts;
    counts.relays = places.relays.size();
    std::set<std::string> reached;
    for (const SRunOutcome& attempt : attempts) {
        for (const SVisitEntry& entry :
             attempt.record ? attempt.record->line.entries : std::vector<SVisitEntry>()) {
            if (entry.isReached) {
                reached.insert(entry.key);
            }
            counts.taken += entry.taken;
            counts.stored += entry.stored;
            counts.lost += entry.lost;
            counts.setAside += entry.setAside;
            counts.waiting += entry.waiting;
        }
    }
    counts.reached = reached.size();
    return counts;
}

std::string ProgramsFolder() {
    const auto named = EnvironmentValue("RUVO_AFTER_VISIT_DIR");
    return named ? FullPath(*named) : AfterVisitFolder();
}

SAfterPrograms FindAfterPrograms(const std::string& folder) {
    constexpr std::uint32_t kRoot = 0;
    SAfterPrograms programs;
    std::vector<SFolderEntry> entries;
    if (folder.empty() || !ListFolder(folder, entries)) {
        return programs; // there is none
    }
    for (const SFolderEntry& entry : entries) {
        const std::string path = folder + "\\" + entry.name;
        if (!entry.isFolder && IsProgramName(entry.name) && IsProgram(path)) {
            (IsGuarded(path, kRoot) ? programs.paths : programs.refused).push_back(path);
        }
    }
    std::ranges::sort(programs.paths);
    std::ranges::sort(programs.refused);
    return programs;
}

void RunAfterVisit(const SAfterPrograms& programs, const SAfterVisit& visit, CVisitControl& control,
                   CVisitOutput& output, std::chrono::milliseconds most) {
    for (const std::string& path : programs.refused) {
        output.Complain("after the visit: " + Shown(path) + ": not started, because users other than " +
                            TrustedUsers() + " can write, replace or redirect it",
                        EPriority::Warning);
    }
    const std::vector<std::string> environment = EnvironmentFor(visit);
    for (const std::string& path : programs.paths) {
        if (control.Asked() == nullptr) {
            RunProgram({.path = path,
                        .arguments = {},
                        .environment = environment,
                        .input = visit.digest,
                        .isGroup = true},
                       control, output, most);
        }
    }
}

} // namespace ruvo
