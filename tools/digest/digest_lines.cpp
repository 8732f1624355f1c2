#include "tools/digest/digest_lines.h"

#include "base/text.h"
#include "tools/digest/digest_words.h"
#include "tools/lines/advice.h"

#include <algorithm>
#include <functional>
#include <set>

namespace ruvo {

namespace {

using enum EDigestLine;
using Problems = std::vector<const SDigestProblem*>;

bool IsSameCause(const SDigestProblem& a, const SDigestProblem& b) {
    return a.happened == b.happened && a.todo == b.todo && a.isOver == b.isOver;
}

std::string Advice(const SSiteDigest& site, std::string_view text) {
    return AdviceForSite(AdviceOf(text), {site.name, site.ini});
}

class CLineMaker {
public:
    CLineMaker(const SDigest& digest, std::size_t mostEvents) : m_digest(digest), m_mostEvents(mostEvents) {}

    std::vector<SDigestLine> Make() {
        Add(Headline, HeadlineOf(m_digest));
        Add(Lead, "What came in " + m_digest.period + ", as of " + m_digest.made +
                      ". Times of visits are local; event times are the relays' own.");
        for (const std::string& failure : m_digest.failures) {
            Add(Alarm, failure);
        }
        std::vector<const SSiteDigest*> sites;
        for (const SSiteDigest& site : m_digest.sites) {
            sites.push_back(&site);
        }
        std::ranges::stable_sort(
            sites, [](const SSiteDigest* a, const SSiteDigest* b) { return a->Rank() < b->Rank(); });
        for (const SSiteDigest* const site : sites) {
            if (site->Rank() < kQuiet || sites.size() == 1) {
                AddSite(*site);
            }
        }
        AddQuietSites(sites);
        return std::move(m_lines);
    }

private:
    static constexpr int kQuiet = 2;

    void Add(EDigestLine kind, const std::string& text) { m_lines.push_back({kind, text}); }

    void AddSite(const SSiteDigest& site) {
        m_shown.clear();
        Add(Site,
            site.name + ": " + VisitText(site) + ", " +
                CountsText(CountOf(site, EEventKind::Trip), CountOf(site, EEventKind::Fault), site.Total()));
        AddVisits(site);
        AddCustody(site);
        for (const SDigestBay& bay : site.bays) {
            AddBay(bay);
        }
        AddMissed(site);
        AddProblems(site, [](const SDigestProblem& problem) { return problem.IsAlarm(); });
        for (const SMissedRelay& relay : site.muted) {
            Add(Remark, relay.label + " " + relay.since + "; " + relay.mute + ".");
        }
        AddProblems(site, [&site](const SDigestProblem& problem) {
            return !problem.isMuted ||
                   std::ranges::count(site.muted, problem.key, &SMissedRelay::key) == 0; // said already
        });
        for (const SSilentRelay& relay : site.silent) {
            Add(Remark, relay.label + " answers, but has had no event for " +
                            Counted(static_cast<std::uint64_t>(relay.days), "day") + " (since " +
                            (relay.lastDay.empty() ? "visits are recorded" : relay.lastDay + ", UTC") + ").");
        }
        for (const std::string& note : site.notes) {
            Add(Remark, note);
        }
    }

    /// Whether each of them took place, and came to its end.
    void AddVisits(const SSiteDigest& site) {
        for (const std::string& failure : site.failures) {
            Add(Alarm, failure);
        }
        if (site.lacksVisit) {
            Add(Alarm, "There was no visit.");
            Add(Todo,
                Advice(site, "{is it scheduled}, and did the machine run? {schedule} and \"ruvoctl status "
                             "SITE.ini\" tell more."));
        }
        for (const SVisitGap& gap : site.gaps) {
            Add(Alarm, "There was no visit from " + RecordTimeForPeople(gap.from) + " to " +
                           RecordTimeForPeople(gap.to) + ".");
        }
        const std::vector<SVisitLine> visits = VisitsOf(site);
        for (const SVisitLine& run : visits) {
            const bool isLast = &run == &visits.back();
            if (run.ended != ERunEnd::Whole) {
                Add(Alarm, EndText(run));
            }
            if (run.ended == ERunEnd::Killed && isLast) {
                Add(Todo,
                    Advice(site, "Nothing is lost but perhaps the event that was just being read; the next "
                                 "visit goes on. Find out what ended this one: {what ended it}."));
            }
        }
    }

    /// What became of events on their way.
    void AddCustody(const SSiteDigest& site) {
        const auto listed = [](const std::vector<std::string>& relays) {
            std::string text;
            for (const std::string& relay : relays) {
                Join(text, relay);
            }
            return text;
        };
        if (site.lost > 0) {
            Add(Alarm, Counted(site.lost, "event") + " lost, of " + listed(site.lostOf) + ".");
            AddProblems(site, [](const SDigestProblem& problem) {
                return problem.IsAlarm() && problem.concern == EConcern::Loss;
            });
        }
        if (site.setAside > 0) {
            Add(Alarm, Counted(site.setAside, "event") +
                           Advice(site, " set aside: \"ruvoctl recover SITE.ini\" lists and stores them."));
        }
        if (site.waiting > 0) {
            Add(Alarm, Counted(site.waiting, "event") + " waiting in the journal: the next visit stores " +
                           (site.waiting == 1 ? "it." : "them."));
        }
        if (site.recovered > 0) {
            Add(Remark, Counted(site.recovered, "event") + " that an earlier visit had read " +
                            (site.recovered == 1 ? "is" : "are") + " stored now, of " +
                            listed(site.recoveredOf) + ".");
        }
    }

    void AddBay(const SDigestBay& bay) {
        const std::string others = OtherKinds(bay);
        if (bay.Grave() + bay.damaged + bay.oddTimes == 0) {
            Add(Counts, BayName(bay) + ": " + others);
            return;
        }
        Add(Bay, BayName(bay));
        if (bay.damaged > 0) {
            Add(BayAlarm, Counted(bay.damaged, "damaged place") + " in what came in.");
            Add(Todo, "\"ruvoctl events\" shows where; docs/reliability.md says what can cause damage.");
        }
        if (bay.oddTimes > 0) {
            Add(BayAlarm, Counted(bay.oddTimes, "event") + " dated " + bay.oddTime +
                              (bay.oddTimes == 1 ? "" : " or the like") + ", which cannot be right.");
            Add(Todo, "Set the relay's clock, and look at its battery and its time signal.");
        }
        const std::size_t shown = std::min(bay.events.size(), m_mostEvents);
        for (std::size_t at = 0; at < shown; ++at) {
            m_lines.push_back({Event, {}, bay.events[at]});
            if (!bay.events[at].details.empty()) {
                Add(Detail, bay.events[at].details);
            }
        }
        if (shown < bay.Grave()) {
            Add(Text, "and " + std::to_string(bay.Grave() - shown) + " more");
        }
        if (!others.empty()) {
            Add(Text, (bay.Grave() > 0 ? "also " : "") + others);
        }
    }

    /// Relays that were missed for the same reason, and for as long, share their lines.
    void AddMissed(const SSiteDigest& site) {
        std::vector<const SMissedRelay*> rest;
        for (const SMissedRelay& relay : site.missed) {
            rest.push_back(&relay);
        }
        while (!rest.empty()) {
            const SMissedRelay& first = *rest.front();
            const SDigestProblem* const cause = CauseOf(site, first);
            std::string names;
            Problems problems;
            std::erase_if(rest, [&](const SMissedRelay* relay) {
                const SDigestProblem* const own = CauseOf(site, *relay);
                const bool isSame =
                    relay->since == first.since &&
                    (own == cause || (own != nullptr && cause != nullptr && IsSameCause(*own, *cause)));
                if (isSame) {
                    Join(names, relay->label);
                    problems.push_back(own);
                }
                return isSame;
            });
            Add(Alarm, (site.IsCutOff() ? NoneText(site) : names + " " + first.since) +
                           (cause != nullptr ? ": " + cause->happened : "."));
            if (cause != nullptr && !cause->todo.empty()) {
                Add(Todo, TodoText(problems));
            }
            m_shown.insert(problems.begin(), problems.end());
        }
    }

    /// "None of the 3 relays reached since ...".
    static std::string NoneText(const SSiteDigest& site) {
        constexpr std::string_view kNot = "not ";
        return "None of the " + Counted(site.missed.size(), "relay") + " " +
               site.missed.front().since.substr(kNot.size());
    }

    /// What kept a visit from a relay; null if the log does not say.
    static const SDigestProblem* CauseOf(const SSiteDigest& site, const SMissedRelay& relay) {
        const SDigestProblem* cause = nullptr;
        for (const SDigestProblem& problem : site.problems) {
            const bool isOne = problem.IsAlarm() && problem.concern == EConcern::Link &&
                               (problem.key == relay.key || (problem.where.empty() && cause == nullptr));
            cause = isOne ? &problem : cause;
        }
        return cause;
    }

    /// Those that have not been shown yet; what means the same of several relays is said once.
    void AddProblems(const SSiteDigest& site, const std::function<bool(const SDigestProblem&)>& isWanted) {
        for (const SDigestProblem& first : site.problems) {
            Problems same;
            for (const SDigestProblem& problem : site.problems) {
                if (!m_shown.contains(&problem) && isWanted(problem) && IsSameCause(first, problem)) {
                    same.push_back(&problem);
                }
            }
            if (!same.empty()) {
                AddProblem(same);
                m_shown.insert(same.begin(), same.end());
            }
        }
    }
    void AddProblem(const Problems& same) {
        std::string text;
        std::string lastTime;
        std::uint64_t count = 0;
        constexpr std::size_t kDate = 10;
        for (const SDigestProblem* const problem : same) {
            Join(text, problem->where);
            count += problem->count;
            lastTime = std::max(lastTime, problem->lastTime);
        }
        const SDigestProblem& first = *same.front();
        Join(text, first.happened, ": ");
        std::string more;
        Join(more, count > 1 ? std::to_string(count) + " times" : "");
        if (first.isOver) {
            Join(more, (count > 1 ? "last on " : "on ") + lastTime.substr(0, kDate));
            Join(more, "the last visit was good", "; ");
        }
        Add(first.IsAlarm() ? Alarm : Remark, text + (more.empty() ? "" : " (" + more + ")"));
        if (!first.todo.empty() && first.IsAlarm()) {
            Add(Todo, TodoText(same));
        }
    }

    void AddQuietSites(const std::vector<const SSiteDigest*>& sites) {
        constexpr std::size_t kMostNamed = 20;
        std::string names;
        std::size_t count = 0;
        for (const SSiteDigest* const site : sites) {
            if (sites.size() > 1 && site->Rank() == kQuiet) {
                Join(names, ++count <= kMostNamed ? site->name : std::string());
            }
        }
        if (count > 0) {
            Add(Site,
                "Visited, and nothing came in: " + names +
                    (count > kMostNamed ? " and " + std::to_string(count - kMostNamed) + " further sites"
                                        : std::string()));
        }
    }

    const SDigest& m_digest;
    std::size_t m_mostEvents;
    std::vector<SDigestLine> m_lines;
    std::set<const SDigestProblem*> m_shown; ///< of the site under way
};

} // namespace

std::vector<SDigestLine> DigestLines(const SDigest& digest, std::size_t mostEvents) {
    return CLineMaker(digest, mostEvents).Make();
}

} // namespace ruvo
