#include "tools/report/report_logs.h"

#include "base/text.h"
#include "ledger/visit_record.h"
#include "platform/full_path.h"
#include "tools/events/event_fields.h"
#include "tools/given_time.h"
#include "tools/sites/muted_lines.h"
#include "tools/text_encoding.h"

#include <algorithm>

namespace ruvo {

namespace {

constexpr std::int64_t kMillisecondsPerSecond = 1000;

/// A line without a time matches: it may be the one that matters.
bool MatchesLine(const SEventFilter& filter, const SLogLine& line) {
    const auto key = ParseTimeKey(line.time, EDayEdge::Start);
    return !key || ((!filter.since || *key >= *filter.since) && (!filter.until || *key <= *filter.until));
}

/// The line's time on the clock of a zone, in place of this machine's.
std::string TimeInZone(const std::string& localTime, const CZoneRule& zone) {
    constexpr std::size_t kToSeconds = 19;
    const auto moment = localTime.empty() ? std::nullopt : ParsePeriod(localTime);
    std::string text;
    if (moment) {
        AppendTime(text, StampOf(zone.FromUtc(moment->begin * kMillisecondsPerSecond).milliseconds), 'T');
    }
    return text.substr(0, kToSeconds);
}

} // namespace

void CReportLogs::AddSite(const std::string& iniPath, CReportData& data) {
    const std::vector<SLogUser> others = m_users.Beside(iniPath);
    const CSite site(iniPath);
    if (!site.Places()) {
        return; // reported with its day files
    }
    const std::string path = SystemPath(OwnSpelling(site.Places()->log));
    auto log = std::ranges::find(m_logs, path, &SLog::path);
    if (log == m_logs.end()) {
        log = m_logs.insert(log, {path, {}});
    }
    auto visits = std::make_unique<SSiteVisits>(
        ReadSiteVisits(iniPath, *site.Places(), SecondsOfRecord(RecordedNow()).value_or(0)));
    const std::size_t firstMute = data.MuteCount();
    for (const SRelayVisit& relay : visits->relays) {
        if (relay.mute) {
            data.AddMute({[relay](const std::string& name) { return relay.HasFilesOf(name); }, relay.Label(),
                          MuteEndForPeople(*relay.mute), relay.mute->why});
        }
    }
    COwnLines own(iniPath, *site.Places(), others);
    log->sites.push_back({std::move(visits), std::move(own), firstMute});
}

std::vector<std::string> CReportLogs::Names() const {
    std::vector<std::string> names;
    for (const SLog& log : m_logs) {
        names.push_back(SystemTextToUtf8(log.path));
    }
    return names;
}

bool CReportLogs::Read(const SEventFilter& filter, const CZoneRule* zone, CReportData& data,
                       SConsole& console) {
    bool isGood = true;
    for (std::size_t at = 0; at < m_logs.size(); ++at) {
        isGood = ReadLog(m_logs[at], filter, zone, at, data, console) && isGood;
    }
    return isGood;
}

bool CReportLogs::ReadLog(SLog& log, const SEventFilter& filter, const CZoneRule* zone, std::size_t index,
                          CReportData& data, SConsole& console) {
    const std::string shown = EscapeControls(SystemTextToUtf8(log.path));
    CLogReader reader;
    SFileResult result = reader.Open(log.path);
    if (result.failure == EFileFailure::NotFound) {
        console.error.Write(
            "ruvoctl: " + shown +
            ": the error log does not exist: nothing has been logged yet, or the path is wrong\n");
        return true;
    }
    if (result.Good()) {
        for (SLogLine line; reader.Next(line);) {
            std::optional<std::size_t> mute;
            const bool belongs = Belongs(log, line, mute);
            line.time = zone != nullptr ? TimeInZone(line.time, *zone) : line.time;
            if (belongs && MatchesLine(filter, line)) {
                data.AddProblem(line, index, mute);
            }
        }
        result = reader.Result();
    }
    if (!result.Good()) {
        const std::string failure = shown + ": " + SystemErrorText(result.systemCode);
        data.AddFailure(failure);
        console.error.Write("ruvoctl: " + failure + "\n");
    }
    return result.Good();
}

bool CReportLogs::Belongs(SLog& log, const SLogLine& line, std::optional<std::size_t>& mute) {
    bool belongs = log.sites.empty();
    for (SSiteLines& site : log.sites) {
        const bool isOwn = site.own.IsOwn(line); // asked of every line, in order
        belongs = belongs || isOwn;
        if (!isOwn || !IsMutedLine(*site.visits, line)) {
            continue;
        }
        const SRelayVisit* const muted = RelayOfConnection(*site.visits, line.connection);
        mute = site.firstMute;
        for (const SRelayVisit& relay : site.visits->relays) {
            if (&relay == muted) {
                break;
            }
            *mute += relay.mute ? 1 : 0;
        }
    }
    return belongs;
}

} // namespace ruvo
