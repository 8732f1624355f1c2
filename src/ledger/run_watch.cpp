#include "ledger/run_watch.h"

#include "ledger/root_folder.h"
#include "ledger/visit_files.h"
#include "ledger/visit_record.h"

#include <algorithm>

namespace ruvo {

namespace {

std::optional<SSeenRun> ReadRun(const std::string& path) {
    CFile file;
    SRunFile run;
    if (!file.Open(path, {.read = true, .removable = true}).Good() || !ReadRunFile(file, run)) {
        return std::nullopt;
    }
    const auto line = ReadVisitLine(LineAsJson(run.begin, run.entries, run.end));
    if (!line) {
        return std::nullopt;
    }
    const bool isRunning = run.end.empty() && file.IsLocked().value_or(false);
    return SSeenRun{*line, isRunning ? ERunState::Running : ERunState::Ended};
}

/// None where they cannot be read either.
std::vector<std::uint64_t> NumbersIn(const std::string& folder) {
    return RunFilesIn(folder).value_or(std::vector<std::uint64_t>());
}

} // namespace

CRunWatch::CRunWatch(const std::string& eventRoot) : m_folder(FolderOfJournals(eventRoot)) {
    const auto files = RunFilesIn(m_folder);
    if (files && !m_folder.empty()) {
        m_before = LargestVisitNumber(m_folder);
        m_before = m_before && !files->empty() ? std::max(*m_before, files->back()) : m_before;
    }
}

std::optional<SSeenRun> CRunWatch::Find(std::uint64_t process) const {
    if (m_folder.empty() || !m_before) {
        return std::nullopt;
    }
    for (const std::uint64_t number : NumbersIn(m_folder)) {
        auto run = number > *m_before ? ReadRun(RunFilePath(m_folder, number)) : std::nullopt;
        if (run && run->line.process == process) {
            return run;
        }
    }
    std::optional<SSeenRun> found;
    static_cast<void>(ForEachVisit(m_folder, [&](std::string_view json) {
        const bool isNew = NumberOf(json).value_or(0) > *m_before;
        const auto head = isNew ? ReadVisitLine(json, false) : std::nullopt;
        if (head && head->process == process && !found) { // the first of two with one number counts
            const auto line = ReadVisitLine(json);
            found = line ? std::optional(SSeenRun{*line, ERunState::Ended}) : std::nullopt;
        }
    }));
    return found;
}

std::optional<SVisitLine> FindRunningVisit(const std::string& eventRoot, const std::string& iniPath) {
    const std::string folder = FolderOfJournals(eventRoot);
    const std::string wanted = RecordedIniPath(iniPath);
    for (const std::uint64_t number : NumbersIn(folder)) {
        auto run = ReadRun(RunFilePath(folder, number));
        if (run && run->state == ERunState::Running && run->line.kind == ERunKind::Visit &&
            run->line.iniPath == wanted) {
            return std::move(run->line);
        }
    }
    return std::nullopt;
}

} // namespace ruvo
