// ruvoctl digest: what came in, and what went wrong, at one site or all.
#include "ledger/visit_record.h"
#include "paths/path_utilities.h"
#include "platform/full_path.h"
#include "platform/ini_text.h"
#include "tools/command.h"
#include "tools/digest/digest.h"
#include "tools/events/filter_options.h"
#include "tools/marks.h"
#include "tools/sites/site.h"
#include "tools/text_encoding.h"
#include "tools/typed_path.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>

namespace ruvo {

namespace {

constexpr std::string_view kUsualPeriod = "24h";
constexpr std::uint64_t kUsualLines = 100;

constexpr std::array kOptions{
    SOption{EOptionKind::MoreFiles, "SITE", "INI files of sites; with --all, the folder of the INI files"},
    SOption{EOptionKind::Flag, "--all",
            "all sites of a folder (default folder: /etc/ruvo, on Windows %ProgramData%\\ruvo)"},
    SOption{EOptionKind::Text, "--fetched",
            "what came in on a day or since a time: yesterday, 2026-11-24, 7d (default: 24h)", "TIME"},
    SOption{EOptionKind::Text, "--since-last",
            "what came in since the last digest of this name, and move its mark", "NAME"},
    SOption{EOptionKind::Text, "--visit", "what the run of this number brought", "NUMBER"},
    SOption{EOptionKind::Choice, "--format", "text (default), html (for a mail) or json", "text|html|json",
            "text"},
    SOption{EOptionKind::Text, "--lines",
            "at most so many lines of text or html; the rest is counted (default: 100; 0: no limit)",
            "NUMBER"},
};

constexpr std::string_view kNotes =
    R"(The first line is the whole in short, fit for the subject of a mail. The sites with trips, faults or
trouble come first; a "!" marks what somebody should look at, with what to do. The kinds of events are told
from their words. Without --fetched, --since-last and --visit, a digest is of the last 24 hours.
News is what came into day files, whenever it happened: old events of a relay that was out of reach, and
recovered events, count when they are stored. A day file without a record of visits counts by the UTC day in
its name; the digest says so. A relay is called silent if it answers, but has had no event for 14 days.
The mark of --since-last is moved once the output is written whole. It is kept in the state folder of the
user who calls; the first digest of a name is of the last 24 hours. Without --since-last nothing is moved.
Exit status: 0 on success, 1 if something could not be read or written, 2 on a usage error.

Examples: each morning, and what has come in since the last mail
  ruvoctl digest --all
  ruvoctl digest --all --since-last mail --format html)";

struct SRequest {
    std::vector<std::string> iniPaths; ///< full
    SDigestQuestion question;
    std::string period;      ///< in words
    std::string firstPeriod; ///< of the first digest of a name
    std::optional<CMarks> marks;
    std::uint64_t lines = kUsualLines;
};

bool Refuse(SConsole& console, const std::string& mistake) {
    console.error.Write("ruvoctl digest: " + mistake + "\n");
    return false;
}

/// True where the option was not given, too.
bool ParseNumber(const CArguments& arguments, std::string_view name, std::uint64_t& number,
                 SConsole& console) {
    const std::string text = arguments.Get(name);
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return !arguments.Has(name) || (error == std::errc() && stop == end) ||
           Refuse(console,
                  std::string(name) + ": " + EscapeControls(SystemTextToUtf8(text)) + ": expected a number");
}

bool ChooseTime(const CArguments& arguments, SRequest& request, SConsole& console) {
    const std::string text =
        arguments.Has("--fetched") ? arguments.Get("--fetched") : std::string(kUsualPeriod);
    std::string time;
    if (!ParseTimeOption(arguments, "--fetched", time, console)) {
        return false;
    }
    request.question.period = ParsePeriod(text).value_or(SPeriod());
    const std::string begin = LocalTimeText(request.question.period.begin);
    constexpr std::size_t kDate = 10;
    constexpr std::size_t kMinute = 16;
    request.period = time.size() == kDate ? "on " + time
                                          : "since " + begin.substr(0, kDate) + " " +
                                                begin.substr(kDate + 1, kMinute - kDate - 1);
    return true;
}

/// At most one of the options that say what the digest is of.
bool ChooseRuns(const CArguments& arguments, SRequest& request, SConsole& console) {
    const int given = static_cast<int>(arguments.Has("--fetched")) +
                      static_cast<int>(arguments.Has("--since-last")) +
                      static_cast<int>(arguments.Has("--visit"));
    if (given > 1) {
        return Refuse(console, "expected only one of --fetched, --since-last and --visit");
    }
    if (!ChooseTime(arguments, request, console)) {
        return false;
    }
    if (arguments.Has("--since-last")) {
        const std::string name = arguments.Get("--since-last");
        if (!IsMarkName(name)) {
            return Refuse(console, "--since-last: " + EscapeControls(SystemTextToUtf8(name)) +
                                       ": expected a name of letters, digits, \"-\", \"_\" and \".\"");
        }
        request.marks.emplace("digest", name);
        request.question.ofMark = true;
        request.period = "since the last digest \"" + name + "\"";
        request.firstPeriod = "in the last 24 hours (this is the first digest \"" + name + "\")";
        return request.marks->Failure().empty() || Refuse(console, request.marks->Failure());
    }
    if (arguments.Has("--visit")) {
        std::uint64_t number = 0;
        if (!ParseNumber(arguments, "--visit", number, console)) {
            return false;
        }
        request.question.visit = number;
        request.period = "with run " + std::to_string(number);
    }
    return true;
}

bool ChooseSites(const CArguments& arguments, SRequest& request, SDigest& digest, SConsole& console) {
    const std::vector<std::string> places = arguments.GetAll("SITE");
    if (arguments.Has("--all")) {
        if (places.size() > 1) {
            return Refuse(console, "--all: expected only the folder of the INI files");
        }
        SSiteFiles files = FindSites(places.empty() ? std::string() : places.front());
        request.iniPaths = std::move(files.iniPaths);
        if (!files.failure.empty()) {
            digest.failures.push_back(EscapeControls(files.failure));
        } else if (request.iniPaths.empty()) {
            digest.failures.push_back(EscapeControls(SystemTextToUtf8(DisplayPath(files.folder))) +
                                      ": there is no INI file of a site");
        }
        return true;
    }
    for (const std::string& place : places) {
        request.iniPaths.push_back(TypedPath(place));
        if (!EqualIniNames(SplitPath(place).extension, ".ini") || request.iniPaths.back().empty()) {
            return Refuse(console,
                          EscapeControls(SystemTextToUtf8(place)) + ": expected an INI file, or --all");
        }
    }
    return !places.empty() || Refuse(console, "expected INI files of sites, or --all");
}

std::string NowForPeople() {
    constexpr std::size_t kDate = 10;
    constexpr std::size_t kMinute = 16;
    std::string text = LocalTimeText(NowSeconds());
    text[kDate] = ' ';
    return text.substr(0, kMinute);
}

SDigestQuestion QuestionOf(const SRequest& request, const std::string& ini, bool& isFirst) {
    SDigestQuestion question = request.question;
    if (request.marks) {
        question.after = request.marks->Of(RecordedIniPath(ini));
        isFirst = !question.after;
    }
    return question;
}

void ReadSites(SRequest& request, SDigest& digest, SConsole& console) {
    SSharedBySites shared;
    std::size_t firsts = 0;
    std::vector<bool> isFirstOf;
    for (const std::string& ini : request.iniPaths) {
        bool isFirst = false;
        const SDigestQuestion question = QuestionOf(request, ini, isFirst);
        SSiteDigest site = ReadSiteDigest(ini, question, shared, console);
        firsts += isFirst ? 1 : 0;
        isFirstOf.push_back(isFirst);
        if (site.mark) {
            request.marks->Move(RecordedIniPath(ini), *site.mark);
        }
        digest.sites.push_back(std::move(site));
    }
    if (firsts > 0 && firsts == digest.sites.size()) {
        digest.period = request.firstPeriod;
        return;
    }
    for (std::size_t at = 0; at < isFirstOf.size(); ++at) {
        if (isFirstOf[at]) {
            digest.sites[at].notes.emplace_back("The first digest of this name: it is of the last 24 hours.");
        }
    }
}

bool IsWhole(const SDigest& digest) {
    bool isWhole = digest.failures.empty();
    for (const SSiteDigest& site : digest.sites) {
        isWhole = isWhole && site.failures.empty();
    }
    return isWhole;
}

/// The marks are moved last: what was not written has not been read by anybody.
bool MoveMarks(const SRequest& request, SConsole& console) {
    console.out.Flush();
    if (!request.marks || !console.out.IsGood()) {
        return true; // the failure is reported where all output ends
    }
    const std::string failure = request.marks->Save();
    return failure.empty() || Refuse(console, "the mark was not moved: " + EscapeControls(failure));
}

int RunDigest(const CArguments& arguments, SConsole& console) {
    SRequest request;
    SDigest digest;
    if (!ParseNumber(arguments, "--lines", request.lines, console) ||
        !ChooseRuns(arguments, request, console) || !ChooseSites(arguments, request, digest, console)) {
        return kExitUsage;
    }
    digest.made = NowForPeople();
    digest.period = request.period;
    ReadSites(request, digest, console);
    const std::string format = arguments.Get("--format");
    const auto lines = static_cast<std::size_t>(std::min<std::uint64_t>(request.lines, SIZE_MAX));
    console.out.Write(format == "json"   ? DigestAsJson(digest)
                      : format == "html" ? DigestAsHtml(digest, lines)
                                         : DigestAsText(digest, lines));
    return MoveMarks(request, console) && IsWhole(digest) ? kExitGood : kExitFailed;
}

} // namespace

SDigest DigestOfVisit(const std::string& fullIniPath, std::uint64_t number, SConsole& console) {
    SDigestQuestion question;
    question.visit = number;
    SDigest digest;
    digest.made = NowForPeople();
    digest.period = "with run " + std::to_string(number);
    SSharedBySites shared;
    digest.sites.push_back(ReadSiteDigest(fullIniPath, question, shared, console));
    return digest;
}

SCommand DigestCommand() {
    return {"digest", "Tell what came in and what went wrong", kNotes, kOptions, RunDigest};
}

} // namespace ruvo
