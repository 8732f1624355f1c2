#include "tools/status/site_report.h"

#include "ledger/visit_record.h"
#include "platform/full_path.h"
#include "tools/sites/muted_lines.h"
#include "tools/sites/site.h"
#include "tools/text_encoding.h"

#include <algorithm>

namespace ruvo {

namespace {

SSiteStatus ReadStatus(const CSite& site, const SStatusOptions& options, SConsole& console) {
    SSiteStatus status;
    if (!site.Places()) {
        status.since = options.since;
        status.failures = {site.Failure()};
        return status;
    }
    const SSitePlaces& places = *site.Places();
    SSiteVisits visits = ReadSiteVisits(site.IniPath(), places, SecondsOfRecord(RecordedNow()).value_or(0));
    status =
        ReadSiteStatus({.eventRoot = SystemPath(places.events),
                        .logPath = SystemPath(places.log),
                        .iniPath = site.IniPath(),
                        .mayHaveNoRoot = visits.IsVisited() && !visits.summary.hasEvents,
                        .since = options.since,
                        .expected = options.expected,
                        .isMuted = [&visits](const SLogLine& line) { return IsMutedLine(visits, line); }},
                       console);
    status.visits = std::move(visits);
    return status;
}

} // namespace

SSiteReport ReadSiteReport(const std::string& fullIniPath, const SStatusOptions& options, SConsole& console) {
    const CSite site(fullIniPath);
    SSiteReport report;
    report.name = site.Name();
    report.ini = SystemTextToUtf8(DisplayPath(fullIniPath));
    report.status = ReadStatus(site, options, console);
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
    for (const std::string& ini : files.iniPaths) {
        all.sites.push_back(ReadSiteReport(ini, options, console));
    }
    std::ranges::stable_sort(all.sites, [](const SSiteReport& a, const SSiteReport& b) {
        return Severity(a.verdict.state) > Severity(b.verdict.state);
    });
    return all;
}

} // namespace ruvo
