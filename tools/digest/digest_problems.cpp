#include "tools/digest/digest_problems.h"

#include "base/text.h"
#include "config/ethernet_entry.h"
#include "platform/full_path.h"
#include "tools/given_time.h"
#include "tools/lines/explain.h"
#include "tools/log_lines.h"
#include "tools/sites/muted_lines.h"
#include "tools/text_encoding.h"

#include <algorithm>

namespace ruvo {

namespace {

/// A relay's texts may make any number of different lines.
constexpr std::size_t kMostProblems = 200;
constexpr std::size_t kLongestText = 300;

std::string Shortened(const std::string& text) {
    std::size_t end = kLongestText;
    while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return end < text.size() ? text.substr(0, end) + "..." : text;
}

/// May say again what a line about the password has said.
constexpr std::string_view kTestFailed = "Test connection failed.";
/// The digest counts these events from the records.
constexpr std::string_view kRecovered = "N events of a visit that was ended are in day file";

/// The table is of all links; a site has one kind of them.
std::string ForLink(std::string text, const SSiteVisits& visits) {
    constexpr std::string_view kSerial = "Serial: ";
    constexpr std::string_view kEthernet = " Ethernet: ";
    const std::size_t serial = text.find(kSerial);
    const std::size_t ethernet = text.find(kEthernet);
    if (serial == 0 && ethernet != std::string::npos && !visits.relays.empty()) {
        text = visits.relays.front().link == "ethernet"
                   ? text.substr(ethernet + kEthernet.size())
                   : text.substr(kSerial.size(), ethernet - kSerial.size());
        text.front() = ToUpper(text.front());
    }
    return text;
}

SDigestProblem ProblemOf(const SLogLine& line, const SSiteVisits& visits, const SSiteDigest& site) {
    SDigestProblem problem;
    const SRelayVisit* const relay = RelayOfConnection(visits, line.connection);
    problem.where = EscapeControls(relay != nullptr ? relay->Label() : ShortConnectionName(line.connection));
    problem.lastTime = line.time;
    if (relay != nullptr) {
        problem.key = relay->key;
        problem.ip = ParseEthernetIp(relay->address);
    }
    if (const auto meaning = Explain(line)) {
        problem.isMuted = IsMutedLine(visits, line);
        problem.severity = problem.isMuted ? ESeverity::Notice : meaning->Severity();
        problem.concern = meaning->Concern();
        problem.mayBeEcho = meaning->line->form.Text().starts_with(kTestFailed) ||
                            (meaning->status != nullptr && meaning->status->first == kLinkAborted);
        problem.happened = meaning->Happened();
        problem.todo = ForLink(AdviceForSite(meaning->ToDo(), {site.name, site.ini}), visits);
    } else {
        problem.happened = Shortened(EscapeControls(line.message));
    }
    return problem;
}

void Add(SDigestProblem problem, std::vector<SDigestProblem>& problems, std::uint64_t& others) {
    const auto same = std::ranges::find_if(problems, [&problem](const SDigestProblem& other) {
        return other.where == problem.where && other.happened == problem.happened &&
               other.todo == problem.todo;
    });
    if (same == problems.end() && problems.size() >= kMostProblems) {
        ++others;
        return;
    }
    if (same == problems.end()) {
        ++problem.count;
        problems.push_back(std::move(problem));
        return;
    }
    ++same->count;
    same->lastTime = std::max(same->lastTime, problem.lastTime);
}

bool IsSaidElsewhere(const SLogLine& line, const SSiteDigest& digest) {
    const auto meaning = Explain(line);
    return meaning && digest.recovered > 0 && meaning->Severity() == ESeverity::Notice &&
           meaning->line->form.Text().starts_with(kRecovered);
}

void DropEchoes(std::vector<SDigestProblem>& problems) {
    std::erase_if(problems, [&](const SDigestProblem& problem) {
        return problem.mayBeEcho && std::ranges::any_of(problems, [&problem](const SDigestProblem& other) {
                   return other.concern == EConcern::Password && other.where == problem.where;
               });
    });
}

/// Whether all is well with a relay that a later visit has reached.
bool IsWellSince(const SRelayVisit& relay, const std::string& localTime) {
    const auto begin = relay.entry ? SecondsOfRecord(relay.entry->begin) : std::nullopt;
    return relay.IsReached() && relay.entry->logLines == 0 && begin && LocalTimeText(*begin) > localTime;
}

void FindOver(const SSiteVisits& visits, std::vector<SDigestProblem>& problems) {
    for (SDigestProblem& problem : problems) {
        const bool canEnd = problem.concern == EConcern::Link || problem.concern == EConcern::Password;
        const auto isWell = [&problem](const SRelayVisit& relay) {
            return (problem.key != relay.key && !problem.where.empty()) ||
                   IsWellSince(relay, problem.lastTime);
        };
        problem.isOver = canEnd && !visits.relays.empty() &&
                         (problem.where.empty() || !problem.key.empty()) &&
                         std::ranges::all_of(visits.relays, isWell);
    }
}

} // namespace

void ReadDigestProblems(const SLogSpan& log, COwnLines& ownLines, const SSiteVisits& visits,
                        SSiteDigest& digest) {
    CLogReader reader;
    const SFileResult opened = reader.Open(log.path);
    if (opened.failure == EFileFailure::NotFound || opened.failure == EFileFailure::BadPath) {
        return;
    }
    bool counts = false; // a line without a time belongs to the one before it
    std::uint64_t others = 0;
    for (SLogLine line; opened.Good() && reader.NextTime(line);) {
        counts = line.time.empty() ? counts : line.time >= log.from && line.time <= log.to;
        if (!counts) {
            continue; // as nearly all of a log of years
        }
        reader.Complete(line);
        if (ownLines.IsOwn(line) && !IsSaidElsewhere(line, digest)) {
            Add(ProblemOf(line, visits, digest), digest.problems, others);
        }
    }
    const SFileResult& result = opened.Good() ? reader.Result() : opened;
    if (!result.Good()) {
        digest.failures.push_back(EscapeControls(SystemTextToUtf8(DisplayPath(log.path))) + ": " +
                                  SystemErrorText(result.systemCode));
    }
    if (others > 0) {
        digest.notes.push_back(std::to_string(others) + " further lines of the error log are left out.");
    }
    DropEchoes(digest.problems);
    FindOver(visits, digest.problems);
    std::ranges::stable_sort(digest.problems, [](const SDigestProblem& a, const SDigestProblem& b) {
        return a.severity > b.severity;
    });
}

} // namespace ruvo
