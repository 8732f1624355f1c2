#include "tools/digest/digest_problems.h"

#include "platform/full_path.h"
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

std::string WhereOf(const SLogLine& line, const SSiteVisits& visits) {
    const std::string connection = ShortConnectionName(line.connection);
    const SRelayVisit* const relay = connection.empty() ? nullptr : RelayOfConnection(visits, connection);
    return EscapeControls(relay != nullptr ? relay->Label() : connection);
}

/// What to do, with this site in the place of the table's.
std::string ForSite(std::string_view todo, const SSiteDigest& site) {
    std::string text(todo);
    for (const auto& [meant, with] : {std::pair<std::string_view, std::string>("SITE.ini", site.ini),
                                      std::pair<std::string_view, std::string>("@SITE", "@" + site.name)}) {
        for (std::size_t at = 0; (at = text.find(meant, at)) != std::string::npos; at += with.size()) {
            text.replace(at, meant.size(), with);
        }
    }
    return text;
}

SDigestProblem ProblemOf(const SLogLine& line, const SSiteVisits& visits, const SSiteDigest& site) {
    SDigestProblem problem;
    problem.where = WhereOf(line, visits);
    problem.lastTime = line.time;
    if (const auto meaning = Explain(line)) {
        problem.severity = IsMutedLine(visits, line) ? ESeverity::Notice : meaning->Severity();
        problem.happened = meaning->Happened();
        problem.todo = ForSite(meaning->ToDo(), site);
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
    SDigestProblem& found = same == problems.end() ? problems.emplace_back(std::move(problem)) : *same;
    ++found.count;
    found.lastTime = std::max(found.lastTime, problem.lastTime);
}

} // namespace

void ReadDigestProblems(const std::string& logPath, const std::string& from, const std::string& to,
                        const SSiteVisits& visits, SSiteDigest& digest) {
    CLogReader reader;
    const SFileResult opened = reader.Open(logPath);
    if (opened.failure == EFileFailure::NotFound || opened.failure == EFileFailure::BadPath) {
        return;
    }
    bool counts = false; // a line without a time belongs to the one before it
    std::uint64_t others = 0;
    for (SLogLine line; opened.Good() && reader.Next(line);) {
        counts = line.time.empty() ? counts : line.time >= from && line.time <= to;
        if (counts) {
            Add(ProblemOf(line, visits, digest), digest.problems, others);
        }
    }
    const SFileResult& result = opened.Good() ? reader.Result() : opened;
    if (!result.Good()) {
        digest.failures.push_back(EscapeControls(SystemTextToUtf8(DisplayPath(logPath))) + ": " +
                                  SystemErrorText(result.systemCode));
    }
    if (others > 0) {
        digest.notes.push_back(std::to_string(others) + " further lines of the error log are left out.");
    }
    std::ranges::stable_sort(digest.problems, [](const SDigestProblem& a, const SDigestProblem& b) {
        return a.severity > b.severity;
    });
}

} // namespace ruvo
