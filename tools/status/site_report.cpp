#include "tools/status/site_report.h"

#include "ledger/visit_record.h"
#include "platform/full_path.h"
#include "tools/sites/site.h"
#include "tools/text_encoding.h"

#include <algorithm>

namespace ruvo {

namespace {

SSiteStatus ReadStatus(const CSite& site, const SStatusOptions& options, const std::vector<SLogUser>& others,
                       CRootLeftovers& leftovers, SConsole& console) {
    if (!site.Places()) {
        SSiteStatus status;
        status.since = options.since;
        status.failures = {site.Failure()};
        return status;
    }
    const SSitePlaces& places = *site.Places();
    const SSiteVisits visits =
        ReadSiteVisits(site.IniPath(), places, SecondsOfRecord(RecordedNow()).value_or(0));
    COwnLines ownLines(site.IniPath(), places, others);
    return ReadSiteStatus({.eventRoot = SystemPath(places.events),
                           .logPath = SystemPath(places.log),
                           .iniPath = site.IniPath(),
                           .mayHaveNoRoot = visits.IsVisited() && !visits.summary.hasEvents,
                           .since = options.since,
                           .expected = options.expected,
                           .choice = options.choice,
                           .visits = &visits,
                           .ownLines = &ownLines,
                           .leftovers = &leftovers},
                          console);
}

} // namespace

SSiteReport ReadSiteReport(const std::string& fullIniPath, const SStatusOptions& options,
                           SSharedBySites& shared, SConsole& console) {
    const std::vector<SLogUser> others = shared.logUsers.Beside(fullIniPath);
    const CSite site(fullIniPath);
    SSiteReport report;
    report.name = site.Name();
    report.ini = SystemTextToUtf8(DisplayPath(fullIniPath));
    report.status = ReadStatus(site, options, others, shared.leftovers, console);
    report.verdict = Evaluate(report.status, options.thresholds);
    return report;
}

EState SAllSites::State() const {
    EState worst = sites.empty() || !failures.empty() ? EState::Unknown : EState::Good;
    for (const SSiteReport& site : sites) {
        worst = Severity(site.verdict.state) > Severity(worst) ? site.verdict.state : worst;
    }
    return worst;
}

SAllSites ReadAllSites(const std::string& folder, const SStatusOptions& options, SConsole& console) {
    const SSiteFiles files = FindSites(folder);
    SAllSites all;
    all.folder = SystemTextToUtf8(DisplayPath(files.folder));
    if (!files.failure.empty()) {
        all.failures.push_back(files.failure);
    } else if (files.iniPaths.empty()) {
        all.failures.push_back(all.folder + ": there is no INI file of a site");
    }
    SSharedBySites shared;
    for (const std::string& ini : files.iniPaths) {
        SSiteReport site = ReadSiteReport(ini, options, shared, console);
        const bool isLeftOut =
            !options.choice.relay.empty() && site.status.visits && site.status.visits->relays.empty();
        if (!isLeftOut) {
            all.sites.push_back(std::move(site));
        }
    }
    if (all.sites.empty() && !files.iniPaths.empty()) {
        all.failures.push_back("no relay of these sites matches \"" + options.choice.relay + "\"");
    }
    std::ranges::stable_sort(all.sites, [](const SSiteReport& a, const SSiteReport& b) {
        return Severity(a.verdict.state) > Severity(b.verdict.state);
    });
    return all;
}

} // namespace ruvo
