#include "base/text.h"
#include "platform/full_path.h"
#include "tools/given_time.h"
#include "tools/status/status_output.h"
#include "tools/status/visit_output.h"
#include "tools/text_encoding.h"
#include "tools/text_table.h"

#include <algorithm>
#include <span>

namespace ruvo {

namespace {

// A foreign file in place of the log, or a thousand relays at once, must not drown the message.
constexpr std::size_t kMostListed = 20;
constexpr std::size_t kLongestMessage = 300; ///< in bytes

/// Cut where a character begins.
std::string Shortened(std::string text) {
    if (text.size() <= kLongestMessage) {
        return text;
    }
    std::size_t size = kLongestMessage;
    while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80U) {
        --size;
    }
    return text.substr(0, size) + "...";
}

/// Its plant text, else its description in brackets.
std::string TitleOf(const SRelayStatus& relay) {
    return relay.plant.empty() && !relay.description.empty() ? "(" + relay.description + ")" : relay.plant;
}

void AppendRelays(std::string& out, const SSiteStatus& status) {
    constexpr std::size_t kTextColumns = 4;
    std::vector<TableRow> rows{{"relay", "plant", "last day (UTC)", "last event", "days silent", "records",
                                "in last file", "damaged places"}};
    for (const auto& [name, relay] : status.relays) {
        std::string title = TitleOf(relay);
        for (const SRelayVisit& visit : status.visits ? status.visits->relays : std::vector<SRelayVisit>()) {
            title = title.empty() && visit.HasFilesOf(name) ? visit.plant : title; // there is no record yet
        }
        rows.push_back({EscapeControls(name), title.empty() ? "-" : EscapeControls(title),
                        relay.lastDay.empty() ? "-" : relay.lastDay,
                        relay.lastEvent.empty() ? "-" : TimeForPeople(relay.lastEvent),
                        relay.silentDays ? std::to_string(*relay.silentDays) : "-",
                        std::to_string(relay.records), std::to_string(relay.lastRecords),
                        std::to_string(relay.damaged)});
    }
    AppendTable(out, rows, kTextColumns);
}

/// Relays whose visits know no plant text, too, are called as their day files call them.
void NameByDayFiles(const SSiteStatus& status, SSiteVisits& visits) {
    for (SRelayVisit& relay : visits.relays) {
        const auto found = status.relays.find(relay.name);
        if (relay.plant.empty() && !relay.name.empty() && found != status.relays.end()) {
            relay.plant = TitleOf(found->second);
        }
    }
}

void AppendVisits(std::string& out, const SSiteVisits& visits) {
    constexpr std::size_t kTextColumns = 7;
    if (const std::string last = VisitSummaryText(visits); !last.empty()) {
        out += ToUpper(last.front());
        out += last.substr(1) + "\n";
        AppendTable(out, VisitRows(visits), kTextColumns);
    }
    for (const SRelayVisit& relay : visits.relays) {
        if (relay.mute) {
            out += EscapeControls(relay.Label()) + " is " + Shortened(EscapeControls(MuteText(*relay.mute))) +
                   "\n";
        }
    }
    if (visits.summary.running) {
        out +=
            "A visit that began on " + RecordTimeForPeople(visits.summary.running->begin) + " is going on.\n";
    }
    if (!visits.summary.since.empty()) {
        out += "Visits are recorded since " + RecordTimeForPeople(visits.summary.since) + ".\n\n";
    }
}

/// "Feeder 7 (RV003), 10.0.0.6 device 2"
std::string GroupName(const std::string& name, const SLogGroup& group,
                      const std::optional<SSiteVisits>& visits) {
    const SRelayVisit* const relay = visits ? RelayOfConnection(*visits, group.connection) : nullptr;
    return name.empty() ? "no particular relay"
                        : Shortened(EscapeControls((relay == nullptr ? "" : relay->Label() + ", ") + name));
}

void AppendGroups(std::string& out, const SLogStatus& log, const std::optional<SSiteVisits>& visits) {
    std::vector<std::pair<std::string, SLogGroup>> groups(log.groups.begin(), log.groups.end());
    if (groups.size() > kMostListed) {
        std::ranges::stable_sort(
            groups, [](const auto& a, const auto& b) { return a.second.problems > b.second.problems; });
    }
    const std::size_t listed = std::min(groups.size(), kMostListed);
    for (const auto& [name, group] : std::span(groups).first(listed)) {
        out += "  " + std::to_string(group.problems) + " of " + GroupName(name, group, visits) + "\n";
    }
    if (const std::size_t rest = groups.size() - listed; rest > 0) {
        out += "  and " + std::to_string(rest) + " more\n";
    }
}

void AppendProblems(std::string& out, const SSiteStatus& status) {
    const SLogStatus& log = status.log;
    out += "Problems in the error log since " + TimeForPeople(status.since) + ": " +
           std::to_string(log.problems) +
           (log.muted == 0              ? ""
            : log.muted == log.problems ? ", about muted relays"
                                        : ", " + std::to_string(log.muted) + " of them about muted relays") +
           (log.isThere ? "\n" : " (the log does not exist)\n");
    AppendGroups(out, log, status.visits);
    if (log.problems > log.latest.size()) {
        out += "The latest:\n";
    }
    for (const SLogLine& line : log.latest) {
        std::string time = line.time.empty() ? "no time" : line.time;
        std::ranges::replace(time, 'T', ' ');
        out += "  " + time + "  " + Shortened(EscapeControls(line.message));
        const std::string connection = ShortConnectionName(line.connection);
        const SRelayVisit* const relay =
            status.visits ? RelayOfConnection(*status.visits, line.connection) : nullptr;
        const std::string name = relay != nullptr ? relay->Label() : connection;
        out += name.empty() ? "" : " (" + Shortened(EscapeControls(name)) + ")";
        out += line.status.empty() ? "" : " " + Shortened(EscapeControls(line.status));
        out += '\n';
    }
}

void AppendLeftovers(std::string& out, const SSiteLeftovers& leftovers) {
    const std::vector<std::string> lines = DescribeLeftovers(leftovers);
    const std::string unread = leftovers.UnreadFolder();
    const std::string_view summary = !unread.empty() ? "unknown" : lines.empty() ? "none" : "see below";
    const std::string shown = unread.empty() ? DisplayPath(leftovers.roots.front().found.folder) : unread;
    out += "Events in no day file: " + std::string(summary) + " (looked in " +
           EscapeControls(SystemTextToUtf8(shown)) +
           (unread.empty() ? ")\n" : ", which this user cannot read)\n");
    for (const std::string& line : lines) {
        out += "  " + Shortened(line) + "\n";
    }
}

} // namespace

std::string VerdictText(const SSiteStatus& status, const SVerdict& verdict, std::size_t mostCauses) {
    if (verdict.causes.empty()) {
        const bool hasVisits = status.visits && !status.visits->relays.empty();
        const std::string visit = hasVisits ? VisitSummaryText(*status.visits) : std::string();
        return (visit.empty() ? Counted(status.relays.size(), "relay") : visit) + ", " +
               Counted(status.log.problems - status.log.muted, "problem") + " in the error log since " +
               TimeForPeople(status.since);
    }
    std::string text;
    const std::size_t listed = std::min(verdict.causes.size(), mostCauses);
    for (const SCause& cause : std::span(verdict.causes).first(listed)) {
        text += text.empty() ? "" : "; ";
        text += Shortened(EscapeControls(cause.text));
    }
    const std::size_t rest = verdict.causes.size() - listed;
    return text + (rest > 0 ? "; and " + std::to_string(rest) + " more" : "");
}

std::string StatusAsText(const SSiteStatus& status, const SVerdict& verdict) {
    std::string out;
    out += ToUpperText(StateName(verdict.state)) + ": " + VerdictText(status, verdict, kMostListed) + "\n\n";
    if (!status.hasRelay) {
        return out; // the verdict says which there are
    }
    if (status.visits && !status.visits->relays.empty()) { // else only day files have the chosen relay
        SSiteVisits visits = *status.visits;
        NameByDayFiles(status, visits);
        AppendVisits(out, visits);
    }
    if (!status.relays.empty()) {
        AppendRelays(out, status);
        out += '\n';
    }
    AppendProblems(out, status);
    if (!status.leftovers.roots.empty()) { // else nobody has looked
        AppendLeftovers(out, status.leftovers);
    }
    return out;
}

} // namespace ruvo
