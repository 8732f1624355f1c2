#include "tools/digest/site_digest.h"

#include "base/text.h"
#include "ledger/visit_record.h"
#include "paths/path_utilities.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "tools/digest/digest_events.h"
#include "tools/digest/digest_problems.h"
#include "tools/digest/digest_words.h"
#include "tools/events/day_file_walk.h"
#include "tools/events/event_values.h"
#include "tools/recover/site_leftovers.h"
#include "tools/sites/site.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <numeric>
#include <span>

namespace ruvo {

namespace {

constexpr std::int64_t kDaySeconds = std::int64_t{24} * 3600;

/// The runs that a digest is of, and what they brought.
class CChosenRuns {
public:
    explicit CChosenRuns(const SDigestQuestion& question)
        : m_question(question), m_fetched(IsByTime() ? std::optional(question.period) : std::nullopt) {}

    void Add(const SVisitLine& run, ERunState state) {
        m_first = m_first.value_or(run.number);
        m_isMarked = m_isMarked || (m_question.after && run.number == m_question.after->number &&
                                    run.begin == m_question.after->begin);
        if (state == ERunState::Running) {
            m_isRunning = true; // what it brings further is news later
        } else if (!m_isRunning) {
            m_mark = {run.number, run.begin};
        }
        m_runs.push_back(run);
        m_states.push_back(state);
    }

    /// Of another INI file over the same event root.
    void AddOther(const SVisitLine& run) { m_fetched.AddOther(run); }

    /// After the last one.
    void Choose(SSiteDigest& digest) {
        const bool isNewHistory =
            m_question.after && !m_isMarked && m_first && *m_first <= m_question.after->number;
        if (isNewHistory) {
            digest.notes.emplace_back("The records of visits have begun anew since the last digest of this "
                                      "name: all of them count.");
        }
        for (std::size_t at = 0; at < m_runs.size(); ++at) {
            const SVisitLine& run = m_runs[at];
            if (IsByTime() || IsChosen(run, m_states[at], isNewHistory)) {
                m_fetched.Add(run);
            }
            if (IsByTime() ? IsWithin(run) : IsChosen(run, m_states[at], isNewHistory)) {
                m_chosen.push_back(run);
                AddGap(at, digest);
            }
        }
        digest.mark = m_question.ofMark ? m_mark : std::nullopt;
    }

    [[nodiscard]] const std::vector<SVisitLine>& Chosen() const { return m_chosen; }
    [[nodiscard]] const CFetchedBytes& Fetched() const { return m_fetched; }
    [[nodiscard]] bool IsByTime() const { return !m_question.after && !m_question.visit; }

private:
    /// Before a visit; not of one run alone, which has nothing to do with others.
    void AddGap(std::size_t at, SSiteDigest& digest) const {
        constexpr std::int64_t kMostBetweenVisits = 36 * std::int64_t{3600};
        const SVisitLine& run = m_runs[at];
        const auto isVisit = [](const SVisitLine& other) { return other.kind == ERunKind::Visit; };
        const auto earlier = std::span(m_runs).first(at);
        const auto before = std::ranges::find_if(earlier.rbegin(), earlier.rend(), isVisit);
        if (m_question.visit || !isVisit(run) || before == earlier.rend()) {
            return;
        }
        const auto from = SecondsOfRecord(before->begin);
        const auto to = SecondsOfRecord(run.begin);
        if (from && to && *to - *from > kMostBetweenVisits) {
            digest.gaps.push_back({before->begin, run.begin});
        }
    }
    [[nodiscard]] bool IsChosen(const SVisitLine& run, ERunState state, bool all) const {
        if (m_question.visit) {
            return run.number == *m_question.visit;
        }
        const bool isMarkable = state == ERunState::Ended && m_mark && run.number <= m_mark->number;
        return isMarkable && (all || run.number > m_question.after->number);
    }
    [[nodiscard]] bool IsWithin(const SVisitLine& run) const {
        const auto begin = SecondsOfRecord(run.begin);
        const auto end = SecondsOfRecord(run.end);
        return begin && *begin < m_question.period.end && end.value_or(*begin) >= m_question.period.begin;
    }

    const SDigestQuestion& m_question;
    CFetchedBytes m_fetched;
    std::vector<SVisitLine> m_runs;
    std::vector<ERunState> m_states;
    std::vector<SVisitLine> m_chosen;
    std::optional<std::uint64_t> m_first;
    std::optional<SMark> m_mark; ///< the last run that has ended before one that lasts
    bool m_isMarked = false;     ///< the mark's run is in the records
    bool m_isRunning = false;
};

void AddLabel(const SSiteVisits& visits, const SVisitEntry& entry, std::vector<std::string>& labels) {
    const auto relay = std::ranges::find(visits.relays, entry.key, &SRelayVisit::key);
    const std::string label = EscapeControls(relay == visits.relays.end() ? entry.key : relay->Label());
    if (std::ranges::count(labels, label) == 0) {
        labels.push_back(label);
    }
}

void CountEvents(const std::vector<SVisitLine>& runs, const SSiteVisits& visits, SSiteDigest& digest) {
    for (const SVisitLine& run : runs) {
        for (const SVisitEntry& entry : run.entries) {
            if (entry.lost > 0) {
                AddLabel(visits, entry, digest.lostOf);
            }
            if (entry.recovered > 0) {
                AddLabel(visits, entry, digest.recoveredOf);
            }
            digest.lost += entry.lost;
            digest.setAside += entry.setAside;
            digest.waiting += entry.waiting;
            digest.recovered += entry.recovered;
        }
    }
}

/// How the runs found the relays in the end; a later attempt only visits those that were missed.
void JudgeReach(const std::vector<SVisitLine>& runs, const SSiteVisits& visits, SSiteDigest& digest) {
    std::map<std::pair<std::string, std::string>, const SVisitEntry*> last;
    for (const SVisitLine& run : runs) {
        for (const SVisitEntry& entry : run.entries) {
            if (!entry.address.empty()) {
                last[{entry.key, entry.address}] = &entry;
            }
        }
    }
    const bool endedEarly = !digest.visits.empty() && !VisitsOf(digest).empty() &&
                            VisitsOf(digest).back().ended != ERunEnd::Whole;
    for (const SRelayVisit& relay : visits.relays) {
        const auto found = last.find({relay.key, relay.address});
        digest.relays += found != last.end() ? 1 : 0;
        if (found != last.end() && found->second->isReached) {
            ++digest.reached;
        } else if (found != last.end()) {
            const bool isStill = !relay.missedSince.empty();
            (relay.mute ? digest.muted : digest.missed)
                .push_back({EscapeControls(relay.Label()), relay.key,
                            isStill ? EscapeControls(MissedSince(visits, relay))
                                    : "not reached; a later visit reached it",
                            relay.mute ? EscapeControls(MuteText(*relay.mute)) : std::string(),
                            relay.lastReached, EscapeControls(found->second->statusText)});
        } else if (endedEarly) {
            ++digest.notVisited;
        }
    }
}

/// Of the relays that answer. The day of the newest day file is that of the machine; one of a day to come is
/// of a clock that was wrong.
void FindSilent(const SFoundFiles& found, const SSiteVisits& visits, std::int64_t now, SSiteDigest& digest) {
    const std::int64_t today = now / kDaySeconds;
    std::map<std::string, std::string> newest;
    for (const SFoundFile& file : found.files) {
        const std::string day = DayOfFileName(file.path.substr(file.path.find_last_of("/\\") + 1));
        if (DayNumber(day).value_or(today + 2) <= today + 1) {
            newest[file.relay] = std::max(newest[file.relay], day);
        }
    }
    for (const SRelayVisit& relay : visits.relays) {
        const auto file = std::ranges::find_if(
            newest, [&relay](const auto& entry) { return relay.HasFilesOf(entry.first); });
        const std::string day = file == newest.end() ? std::string() : file->second;
        const auto since = DayNumber(day.empty() ? visits.summary.since.substr(0, 10) : day);
        if (relay.IsReached() && since && today - *since >= kSilentDays) {
            digest.silent.push_back({EscapeControls(relay.Label()), day, today - *since});
        }
    }
}

void JudgeVisits(const CChosenRuns& runs, const SDigestQuestion& question, SSiteDigest& digest) {
    for (SVisitLine run : runs.Chosen()) {
        run.entries.clear();
        digest.visits.push_back(std::move(run));
    }
    const bool hasVisit =
        std::ranges::any_of(digest.visits, [](const SVisitLine& run) { return run.kind == ERunKind::Visit; });
    const std::int64_t now = NowSeconds();
    const auto last = SecondsOfRecord(digest.lastVisit);
    digest.lacksVisit = !hasVisit && !question.visit &&
                        (runs.IsByTime() ? question.period.end - question.period.begin >= kDaySeconds - 3600
                                         : !last || now - *last >= kDaySeconds);
}

void JudgeRecords(const SSiteVisits& visits, SSiteDigest& digest) {
    const SVisitSummary& summary = visits.summary;
    if (!visits.muteFailure.empty()) {
        digest.failures.push_back(EscapeControls(visits.muteFailure));
    }
    std::string folders;
    for (const std::string& folder : summary.folders) {
        folders += (folders.empty() ? "" : " and ") + EscapeControls(SystemTextToUtf8(folder));
    }
    if (summary.history == EHistory::NotReadable) {
        digest.failures.push_back("this user cannot read the records of visits: " + folders);
    } else if (summary.history == EHistory::None) {
        digest.failures.push_back("no visit is recorded; looked in " + folders);
    } else if (!summary.isWhole) {
        digest.failures.push_back("the records of visits cannot be read to the end: " + folders);
    }
}

/// A relay whose visits know no plant text is called by that of its newest day file, else by the description.
void NameByDescription(const SFoundFiles& found, SSiteVisits& visits, SConsole& console) {
    for (SRelayVisit& relay : visits.relays) {
        const SFoundFile* newest = nullptr;
        for (const SFoundFile& file : found.files) {
            const bool isOne = relay.plant.empty() && relay.HasFilesOf(file.relay);
            newest = isOne && (newest == nullptr || file.path > newest->path) ? &file : newest;
        }
        if (newest != nullptr) {
            CDayFileWalk walk(console);
            walk.Read({.files = {*newest}, .failures = {}}, [&relay](const SEventSource&,
                                                                     const SDayFileItem& item, CProgress&) {
                if (item.record != nullptr && relay.plant.empty()) {
                    relay.plant = ReadableRelayLine(item.record->GetAuxText1());
                    relay.plant =
                        relay.plant.empty() ? ReadableRelayLine(item.record->GetAuxText2()) : relay.plant;
                }
            });
        }
    }
}

/// What waits now, of a digest that reaches until now: the records know it only at the end of a run.
void CountWaiting(const SSitePlaces& places, const std::string& fullIniPath, EHistory history,
                  CRootLeftovers& known, SSiteDigest& digest) {
    const SSiteLeftovers leftovers = FindLeftovers(places.events, fullIniPath, EOtherRoots::Former, known);
    if (leftovers.IsRead()) {
        digest.waiting = leftovers.EventsWaiting().value_or(0);
    } else {
        digest.waiting = std::max(digest.waiting, leftovers.EventsWaiting().value_or(0));
        if (history != EHistory::NotReadable) { // else it is told: the records are in the same folder
            digest.failures.push_back("this user cannot read " +
                                      EscapeControls(SystemTextToUtf8(leftovers.UnreadFolder())) +
                                      ", where events may wait");
        }
    }
}

SFoundFiles FindFiles(const std::string& eventRoot, bool mayBeMissing) {
    return mayBeMissing && GetPathKind(eventRoot) == EPathKind::Missing
               ? SFoundFiles()
               : FindDayFiles({SystemPath(eventRoot)});
}

void KeepNews(const CChosenRuns& runs, SFoundFiles& found, SSiteDigest& digest) {
    std::size_t wholeCount = 0;
    std::erase_if(found.files, [&](SFoundFile& file) {
        std::error_code error;
        if (std::filesystem::file_size(file.path, error) == 0 && !error) { // made by a visit that was ended
            return true;
        }
        auto bytes = std::make_shared<const SFetchedBytes>(runs.Fetched().Of(file.path));
        wholeCount += bytes->isWhole ? 1 : 0;
        file.fetched = bytes;
        return bytes->IsEmpty();
    });
    if (wholeCount > 0) {
        digest.notes.push_back(
            Counted(wholeCount, "day file") +
            " without a record of when its events came in: taken by the UTC day in its name.");
    }
}

/// From the first to the last moment that it is of; local times.
std::pair<std::string, std::string> LocalBounds(const CChosenRuns& runs, const SDigestQuestion& question) {
    std::int64_t begin = question.period.begin;
    std::int64_t end = question.period.end - 1;
    if (!runs.IsByTime()) {
        end = NowSeconds();
        begin = end;
        for (const SVisitLine& run : runs.Chosen()) {
            begin = std::min(begin, SecondsOfRecord(run.begin).value_or(begin));
        }
        if (question.visit && !runs.Chosen().empty()) {
            end = SecondsOfRecord(runs.Chosen().back().end).value_or(end);
        }
    }
    return {LocalTimeText(begin), LocalTimeText(end)};
}

} // namespace

std::uint64_t SDigestBay::Total() const {
    return std::accumulate(counts.begin(), counts.end(), std::uint64_t{0});
}

std::uint64_t SSiteDigest::Total() const {
    std::uint64_t total = 0;
    std::ranges::for_each(bays, [&total](const SDigestBay& bay) { total += bay.Total(); });
    return total;
}

std::uint64_t SSiteDigest::Grave() const {
    std::uint64_t total = 0;
    std::ranges::for_each(bays, [&total](const SDigestBay& bay) { total += bay.Grave(); });
    return total;
}

std::uint64_t SSiteDigest::Damaged() const {
    std::uint64_t total = 0;
    std::ranges::for_each(bays, [&total](const SDigestBay& bay) { total += bay.damaged; });
    return total;
}

bool SSiteDigest::IsCutOff() const {
    const auto isSame = [this](const SMissedRelay& relay) { return relay.since == missed.front().since; };
    return missed.size() > 1 && missed.size() == relays && std::ranges::all_of(missed, isSame);
}

int SSiteDigest::Rank() const {
    const bool isProblem =
        std::ranges::any_of(problems, [](const SDigestProblem& problem) { return problem.IsAlarm(); });
    const bool isEnd =
        std::ranges::any_of(visits, [](const SVisitLine& run) { return run.ended != ERunEnd::Whole; });
    const bool isClock = std::ranges::any_of(bays, [](const SDigestBay& bay) { return bay.oddTimes > 0; });
    if (Grave() + Damaged() + lost + setAside + waiting + missed.size() + failures.size() + gaps.size() > 0 ||
        lacksVisit || isProblem || isEnd || isClock) {
        return 0;
    }
    return Total() + silent.size() + notes.size() + problems.size() + muted.size() > 0 ? 1 : 2;
}

SSiteDigest ReadSiteDigest(const std::string& fullIniPath, const SDigestQuestion& question,
                           SSharedBySites& shared, SConsole& console) {
    const std::vector<SLogUser> others = shared.logUsers.Beside(fullIniPath);
    const CSite site(fullIniPath);
    SSiteDigest digest;
    digest.name = EscapeControls(site.Name());
    digest.ini = EscapeControls(SystemTextToUtf8(DisplayPath(fullIniPath)));
    if (!site.Places()) {
        digest.failures = {EscapeControls(site.Failure())};
        return digest;
    }
    const SSitePlaces& places = *site.Places();
    const std::string own = RecordedIniPath(fullIniPath);
    CChosenRuns runs(question);
    SSiteVisits visits =
        ReadSiteVisits(fullIniPath, places, NowSeconds(), [&](const SVisitLine& run, ERunState state) {
            if (run.iniPath == own) {
                runs.Add(run, state);
            } else {
                runs.AddOther(run);
            }
        });
    JudgeRecords(visits, digest);
    runs.Choose(digest);
    digest.lastVisit = visits.summary.last ? visits.summary.last->begin : std::string();
    JudgeVisits(runs, question, digest);
    SFoundFiles found = FindFiles(places.events, visits.IsVisited() && !visits.summary.hasEvents);
    NameByDescription(found, visits, console);
    CountEvents(runs.Chosen(), visits, digest);
    if (!question.visit && (question.ofMark || question.period.end > NowSeconds())) {
        CountWaiting(places, fullIniPath, visits.summary.history, shared.leftovers, digest);
    }
    JudgeReach(runs.Chosen(), visits, digest);
    FindSilent(found, visits, NowSeconds(), digest);
    KeepNews(runs, found, digest);
    ReadDigestEvents(found, visits, digest, console);
    const auto [from, to] = LocalBounds(runs, question);
    COwnLines ownLines(fullIniPath, places, others);
    ReadDigestProblems({places.log, from, to}, ownLines, visits, digest);
    return digest;
}

} // namespace ruvo
