#include "ledger/visit_history.h"

#include "ledger/root_folder.h"
#include "ledger/visit_files.h"
#include "ledger/visit_record.h"
#include "platform/full_path.h"
#include "platform/state_folder.h"

#include <algorithm>
#include <set>

namespace ruvo {

namespace {

/// A run without a line of its own yet.
struct SOpenRun {
    std::string json;
    ERunState state = ERunState::Ended;
};

/// Adds it, unless its making was ended. False when it cannot be read.
bool ReadOpenRun(const std::string& path, std::vector<SOpenRun>& open) {
    CFile file;
    SRunFile run;
    if (!file.Open(path, {.read = true, .removable = true}).Good() || !ReadRunFile(file, run)) {
        return false;
    }
    std::string json = LineAsJson(run.begin, run.entries, run.end);
    if (!json.empty()) {
        const bool isRunning = run.end.empty() && file.IsLocked().value_or(false);
        open.push_back({std::move(json), isRunning ? ERunState::Running : ERunState::Ended});
    }
    return true;
}

/// Those that have become lines meanwhile do not count.
bool AreGone(const std::vector<std::uint64_t>& unread, const std::string& folder) {
    const auto left = unread.empty() ? std::nullopt : RunFilesIn(folder);
    return unread.empty() || (left && std::ranges::none_of(unread, [&left](std::uint64_t number) {
                                  return std::ranges::binary_search(*left, number);
                              }));
}

void Learn(SKnownRelay& relay, const SVisitEntry& entry, const std::string& begin) {
    constexpr std::size_t kDate = 10;
    relay.name = entry.name.empty() ? relay.name : entry.name;
    relay.plant = entry.plant.empty() ? relay.plant : entry.plant;
    relay.lastReached = entry.lastReached.empty() ? relay.lastReached : entry.lastReached;
    if (entry.isReached) {
        relay.missedSince.clear();
        relay.missedLast.clear();
        relay.nights = 0;
        return;
    }
    relay.missedSince = relay.missedSince.empty() ? begin : relay.missedSince;
    relay.nights += relay.missedLast.substr(0, kDate) == begin.substr(0, kDate) ? 0 : 1;
    relay.missedLast = begin;
}

/// What a repeated attempt says of a relay takes the place of what the one before it said.
void Join(SVisitLine& visit, SVisitLine attempt) {
    for (SVisitEntry& entry : visit.entries) {
        const auto again = std::ranges::find_if(attempt.entries, [&entry](const SVisitEntry& other) {
            return other.key == entry.key && other.address == entry.address && !entry.address.empty();
        });
        if (again == attempt.entries.end()) {
            attempt.entries.push_back(std::move(entry));
        }
    }
    attempt.begin = visit.begin;
    attempt.logLines += visit.logLines;
    visit = std::move(attempt);
}

void AddRun(SVisitSummary& summary, const SVisitLine& line, ERunState state) {
    const bool isVisit = line.kind == ERunKind::Visit;
    for (const SVisitEntry& entry : line.entries) {
        summary.hasEvents = summary.hasEvents || entry.stored > 0 || entry.recovered > 0;
        if (isVisit && !entry.address.empty()) {
            Learn(summary.relays[{entry.key, entry.address}], entry, line.begin);
        }
    }
    if (!isVisit) {
        return;
    }
    summary.since = summary.since.empty() ? line.begin : summary.since;
    if (state == ERunState::Running) {
        summary.running = line;
    } else if (summary.last && line.attempt > 1 && line.attempt == summary.last->attempt + 1) {
        Join(*summary.last, line);
    } else {
        summary.last = line;
    }
}

} // namespace

CVisitHistory::CVisitHistory(const std::string& eventRoot) {
    for (const std::string& state : StateFoldersToRead()) {
        const std::string folder = FolderOfRoot(state, eventRoot);
        const EHistory found = folder.empty() ? EHistory::None : LookIn(state, folder);
        const std::string shown = DisplayPath(folder.empty() ? state : folder);
        if (found == EHistory::Found) {
            m_found = found;
            m_folder = folder;
            m_folders = {shown};
            return;
        }
        if (found == EHistory::NotReadable) {
            m_found = found;
        }
        m_folders.push_back(shown);
    }
}

EHistory CVisitHistory::LookIn(const std::string& state, const std::string& folder) const {
    std::vector<SFolderEntry> entries;
    if (ListFolder(folder, entries)) {
        const bool isThere = std::ranges::any_of(entries, [](const SFolderEntry& entry) {
            return entry.name == kVisitsName || entry.name == kEarlierVisitsName ||
                   entry.name.ends_with(kRunEnding);
        });
        return isThere ? EHistory::Found : EHistory::None;
    }
    return IsAbsent(folder) && (IsAbsent(state) || ListFolder(state, entries)) ? EHistory::None
                                                                               : EHistory::NotReadable;
}

bool CVisitHistory::ForEach(const Take& take) const {
    return ForEachOf({}, take);
}

bool CVisitHistory::ForEachOf(const std::string& iniPath, const Take& take) const {
    if (m_found != EHistory::Found) {
        return m_found == EHistory::None;
    }
    const std::string wanted = iniPath.empty() ? iniPath : RecordedIniPath(iniPath);
    std::set<std::uint64_t> taken;
    const auto takeLine = [&](std::string_view json, ERunState state) {
        const auto line = ReadWantedLine(json, [&](const SVisitLine& head) {
            return (wanted.empty() || head.iniPath == wanted) && taken.insert(head.number).second;
        });
        if (line) {
            take(*line, state);
        }
    };
    // Read first: a run that ends meanwhile is in the file of visits then, under the same number.
    std::vector<SOpenRun> open;
    const auto numbers = RunFilesIn(m_folder);
    std::vector<std::uint64_t> unread;
    for (const std::uint64_t number : numbers.value_or(std::vector<std::uint64_t>())) {
        if (!ReadOpenRun(RunFilePath(m_folder, number), open)) {
            unread.push_back(number);
        }
    }
    const bool isKnown = numbers && AreGone(unread, m_folder); // if so, their lines are there
    const bool isRead =
        ForEachVisit(m_folder, [&](std::string_view json) { takeLine(json, ERunState::Ended); });
    for (const SOpenRun& run : open) {
        takeLine(run.json, run.state);
    }
    return isRead && isKnown;
}

SVisitSummary SummariseVisits(const std::string& eventRoot, const std::string& iniPath,
                              const CVisitHistory::Take& also) {
    const std::string own = RecordedIniPath(iniPath);
    const CVisitHistory history(eventRoot);
    SVisitSummary summary;
    summary.history = history.Found();
    summary.folders = history.Folders();
    summary.isWhole =
        history.ForEachOf(also ? std::string() : iniPath, [&](const SVisitLine& line, ERunState state) {
            if (line.iniPath == own) {
                AddRun(summary, line, state);
            }
            if (also) {
                also(line, state);
            }
        });
    return summary;
}

} // namespace ruvo
