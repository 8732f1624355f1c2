// ruvoctl mute and unmute: what is known to be wrong with a relay changes no verdict for a time.
#include "base/text.h"
#include "ledger/visit_record.h"
#include "platform/full_path.h"
#include "tools/command.h"
#include "tools/given_time.h"
#include "tools/sites/site.h"
#include "tools/sites/site_visits.h"
#include "tools/text_encoding.h"
#include "tools/text_table.h"
#include "tools/typed_path.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

constexpr std::string_view kIniHelp =
    "INI file of the site; a relative path is resolved against the current folder";
constexpr std::string_view kKeysHelp = "keys of the relays, for example RV003; case does not matter";

constexpr std::array kMuteOptions{
    SOption{EOptionKind::Positional, "SITE.ini", kIniHelp},
    SOption{EOptionKind::Rest, "KEY", kKeysHelp},
    SOption{
        EOptionKind::Text, "--until",
        "when the mute ends: the end of a date such as 2026-12-31, a time such as 2026-12-31T06:00, or 7d from "
        "now; a year from now at most",
        "TIME"},
    SOption{EOptionKind::Text, "--why", "the reason, for whoever reads the status", "TEXT"},
    SOption{EOptionKind::Flag, "--list", "list the mutes of the site"},
};
constexpr std::array kUnmuteOptions{
    SOption{EOptionKind::Positional, "SITE.ini", kIniHelp},
    SOption{EOptionKind::List, "KEY", kKeysHelp},
};

constexpr std::string_view kMuteNotes =
    R"(Mutes relays that are known to be out of service. A muted relay is visited and logged as ever; only the
verdict changes: that it is not reached or silent, and its lines about the link, are not counted. Lost
events, damage and a refused password are always counted.
A mute ends at its time. It also ends with the next visit that reaches the relay, and if the relay's
address in the INI file changes. A mute of the same relay replaces the earlier one.
The mutes are in SITE.mutes next to SITE.ini, a text file. Times are local to this machine.
Exit status: 0 on success, 1 on failure, 2 on a usage error.

Examples: a relay whose transformer is being replaced, and what is muted
  ruvoctl mute /etc/ruvo/north.ini RV003 --until 2026-12-31 --why "CT replaced"
  ruvoctl mute --list /etc/ruvo/north.ini)";
constexpr std::string_view kUnmuteNotes =
    R"(Ends mutes early. The relays count for the verdict again at once.
Exit status: 0 on success, 1 on failure, 2 on a usage error.

Example:
  ruvoctl unmute /etc/ruvo/north.ini RV003)";

/// A site whose mutes a command reads or changes.
struct SMuteSite {
    std::string ini;
    SSiteVisits visits;
    SMutes mutes;
};

bool Fail(SConsole& console, const std::string& what) {
    console.error.Write("ruvoctl: " + EscapeControls(what) + "\n");
    return false;
}

bool OpenSite(const CArguments& arguments, SMuteSite& site, SConsole& console) {
    site.ini = TypedPath(arguments.Get("SITE.ini"));
    const CSite found(site.ini);
    if (!found.Places()) {
        return Fail(console, found.Failure());
    }
    site.visits = ReadSiteVisits(site.ini, *found.Places(), NowSeconds());
    site.mutes = ReadMutes(site.ini);
    return site.mutes.failure.empty() || Fail(console, site.mutes.failure);
}

/// Keys as the INI file has them.
std::vector<std::string> Keys(const CArguments& arguments) {
    std::vector<std::string> keys = arguments.GetAll("KEY");
    std::ranges::transform(keys, keys.begin(), ToUpperText);
    return keys;
}

const SRelayVisit* FindRelay(const SMuteSite& site, const std::string& key) {
    const auto found = std::ranges::find(site.visits.relays, key, &SRelayVisit::key);
    return found == site.visits.relays.end() ? nullptr : &*found;
}

bool Save(const SMuteSite& site, SConsole& console) {
    const std::string failure = WriteMutes(site.ini, site.mutes.mutes);
    return failure.empty() ||
           Fail(console, SystemTextToUtf8(DisplayPath(MutesPath(site.ini))) + ": " + failure);
}

/// When the mute ends, in Unix seconds. A date means its end, a length is counted from now.
std::optional<std::int64_t> ParseEnd(const std::string& text) {
    constexpr std::size_t kDateSize = 10;
    if (const auto length = ParseLength(text)) {
        return NowSeconds() + *length;
    }
    const auto time = ParseGivenTime(text);
    const auto period = time ? ParsePeriod(text) : std::nullopt;
    return period ? std::optional(time->size() == kDateSize ? period->end : period->begin) : std::nullopt;
}

/// Returns the mistake; empty without one.
std::string FindMistake(const CArguments& arguments, std::optional<std::int64_t>& end) {
    if (arguments.GetAll("KEY").empty()) {
        return "expected the key of a relay, or --list";
    }
    if (!arguments.Has("--until") || Trim(arguments.Get("--why"), kWhiteSpace).empty()) {
        return "expected --until TIME and --why TEXT: a mute has an end and a reason";
    }
    const std::string text = arguments.Get("--until");
    end = ParseEnd(text);
    if (!end) {
        return "--until: " + text +
               ": expected a date such as 2026-12-31, a time such as 2026-12-31T06:00, or 7d";
    }
    if (*end <= NowSeconds() || *end - NowSeconds() > kLongestMute) {
        return "--until: " + text + ": expected a time to come, a year from now at most";
    }
    return {};
}

int List(const SMuteSite& site, SConsole& console) {
    std::vector<std::vector<std::string>> rows{{"key", "address", "relay", "until", "why", "state"}};
    for (const SMute& mute : site.mutes.mutes) {
        const SRelayVisit* const relay = FindRelay(site, mute.key);
        const std::string why = relay == nullptr ? "the INI file has no such relay"
                                : site.visits.summary.history == EHistory::NotReadable
                                    ? "this user cannot read the records of visits"
                                    : WhyVoid(mute, {relay->address, relay->lastReached}, NowSeconds());
        rows.push_back({EscapeControls(mute.key), EscapeControls(mute.address),
                        mute.relay.empty() ? "-" : EscapeControls(mute.relay), MuteEndForPeople(mute),
                        EscapeControls(mute.why), why.empty() ? "muted" : "void: " + EscapeControls(why)});
    }
    if (rows.size() > 1) {
        AppendTable(console.out.Text(), rows, rows.front().size());
    } else {
        console.out.Write("No relay is muted.\n");
    }
    return kExitGood;
}

/// Also drops what has ended, so that the file does not grow.
void Drop(SMuteSite& site, const std::vector<std::string>& keys) {
    std::erase_if(site.mutes.mutes, [&](const SMute& mute) {
        const auto until = SecondsOfRecord(mute.until);
        return std::ranges::find(keys, mute.key) != keys.end() || (until && *until <= NowSeconds());
    });
}

int Mute(const CArguments& arguments, SMuteSite& site, std::int64_t end, SConsole& console) {
    const std::vector<std::string> keys = Keys(arguments);
    Drop(site, keys);
    for (const std::string& key : keys) {
        const SRelayVisit* const relay = FindRelay(site, key);
        if (relay == nullptr) {
            Fail(console, key + ": no such relay is visited; run ruvoctl list to see the relays");
            return kExitFailed;
        }
        site.mutes.mutes.push_back(
            {key, relay->address, relay->name, RecordedNow(), RecordTime(end),
             std::string(Trim(SystemTextToUtf8(arguments.Get("--why")), kWhiteSpace))});
    }
    if (!Save(site, console)) {
        return kExitFailed;
    }
    for (const std::string& key : keys) {
        console.out.Write(EscapeControls(FindRelay(site, key)->Label()) + " is muted until " +
                          MuteEndForPeople(site.mutes.mutes.back()) + ", or until a visit reaches it.\n");
    }
    return kExitGood;
}

int RunMute(const CArguments& arguments, SConsole& console) {
    std::optional<std::int64_t> end;
    if (!arguments.Has("--list")) {
        if (const std::string mistake = FindMistake(arguments, end); !mistake.empty()) {
            Fail(console, SystemTextToUtf8(mistake));
            return kExitUsage;
        }
    }
    SMuteSite site;
    if (!OpenSite(arguments, site, console)) {
        return kExitFailed;
    }
    return end ? Mute(arguments, site, *end, console) : List(site, console);
}

int RunUnmute(const CArguments& arguments, SConsole& console) {
    SMuteSite site;
    if (!OpenSite(arguments, site, console)) {
        return kExitFailed;
    }
    const std::vector<std::string> keys = Keys(arguments);
    for (const std::string& key : keys) {
        if (std::ranges::find(site.mutes.mutes, key, &SMute::key) == site.mutes.mutes.end()) {
            Fail(console, SystemTextToUtf8(key) + ": this relay is not muted");
            return kExitFailed;
        }
    }
    Drop(site, keys);
    if (!Save(site, console)) {
        return kExitFailed;
    }
    for (const std::string& key : keys) {
        console.out.Write(EscapeControls(SystemTextToUtf8(key)) + " is not muted any more.\n");
    }
    return kExitGood;
}

} // namespace

SCommand MuteCommand() {
    return {"mute", "Keep a relay that is known to be out of service from the verdict", kMuteNotes,
            kMuteOptions, RunMute};
}

SCommand UnmuteCommand() {
    return {"unmute", "End the mute of a relay", kUnmuteNotes, kUnmuteOptions, RunUnmute};
}

} // namespace ruvo
