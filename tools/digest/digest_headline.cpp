// The whole of a digest in one line.
#include "base/text.h"
#include "tools/digest/digest_lines.h"
#include "tools/digest/digest_words.h"

#include <algorithm>
#include <set>

namespace ruvo {

namespace {

struct STotals {
    std::uint64_t trips = 0;
    std::uint64_t faults = 0;
    std::uint64_t events = 0;
    std::uint64_t lost = 0;
    std::uint64_t damaged = 0;
    std::uint64_t setAside = 0;
    std::uint64_t waiting = 0;
    std::size_t unvisited = 0; ///< sites
    std::size_t nights = 0;    ///< sites that were not visited in a night
    std::size_t early = 0;     ///< visits that ended early
    std::size_t missed = 0;
    std::size_t clocks = 0;
    std::size_t refused = 0; ///< relays that refused the login
    std::size_t problems = 0;
    std::size_t unknown = 0;
};

/// Those that no other figure of the headline is about.
void CountProblems(const SSiteDigest& site, STotals& totals) {
    std::set<std::string> refused;
    for (const SDigestProblem& problem : site.problems) {
        const bool isOfMissed =
            problem.concern == EConcern::Link &&
            (problem.key.empty() ? !site.missed.empty()
                                 : std::ranges::count(site.missed, problem.key, &SMissedRelay::key) > 0);
        const bool isOfLost = problem.concern == EConcern::Loss && site.lost > 0;
        if (problem.IsAlarm() && problem.concern == EConcern::Password) {
            refused.insert(problem.where);
        } else if (problem.IsAlarm() && !isOfMissed && !isOfLost) {
            ++totals.problems;
        }
    }
    totals.refused += refused.size();
}

void CountSite(const SSiteDigest& site, STotals& totals) {
    totals.trips += CountOf(site, EEventKind::Trip);
    totals.faults += CountOf(site, EEventKind::Fault);
    totals.events += site.Total();
    totals.lost += site.lost;
    totals.damaged += site.Damaged();
    totals.setAside += site.setAside;
    totals.waiting += site.waiting;
    totals.unvisited += site.lacksVisit ? 1 : 0;
    totals.nights += site.gaps.empty() ? 0 : 1;
    totals.missed += site.missed.size();
    totals.unknown += site.failures.size();
    for (const SVisitLine& run : VisitsOf(site)) {
        totals.early += run.ended != ERunEnd::Whole ? 1 : 0;
    }
    for (const SDigestBay& bay : site.bays) {
        totals.clocks += bay.oddTimes > 0 ? 1 : 0;
    }
    CountProblems(site, totals);
}

} // namespace

std::string HeadlineOf(const SDigest& digest) {
    STotals totals;
    totals.unknown = digest.failures.size();
    for (const SSiteDigest& site : digest.sites) {
        CountSite(site, totals);
    }
    std::string trouble;
    const auto add = [&trouble](std::uint64_t number, std::string_view what, const std::string& fate) {
        Join(trouble, number > 0 ? Counted(number, what) + fate : std::string());
    };
    add(totals.lost, "event", " lost");
    add(totals.damaged, "damaged place", "");
    add(totals.unvisited, "site", " not visited");
    add(totals.nights, "site", " not visited for a night");
    add(totals.early, "visit", " ended early");
    add(totals.waiting, "event", " waiting in the journal");
    add(totals.setAside, "event", " set aside");
    add(totals.missed, "relay", " not reached");
    add(totals.refused, "login", " refused");
    add(totals.clocks, "clock", " wrong");
    add(totals.problems, trouble.empty() ? "problem" : "other problem", "");
    Join(trouble, totals.unknown > 0 ? "not all could be read" : "");
    std::string text =
        digest.sites.size() == 1 ? digest.sites.front().name : Counted(digest.sites.size(), "site");
    return text + ": " + CountsText(totals.trips, totals.faults, totals.events) +
           (trouble.empty() ? "" : "; " + trouble);
}

} // namespace ruvo
