#include "tools/status/verdict.h"

#include "base/text.h"
#include "tools/given_time.h"
#include "tools/lines/explain.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <array>
#include <span>

namespace ruvo {

namespace {

EState Grade(std::uint64_t number, std::uint64_t warn, std::uint64_t critical) {
    if (critical > 0 && number >= critical) {
        return EState::Critical;
    }
    return warn > 0 && number >= warn ? EState::Warning : EState::Good;
}

void Add(SVerdict& verdict, EState state, std::string text) {
    if (state != EState::Good) {
        verdict.causes.push_back({state, std::move(text)});
    }
}

/// Whether it is known why the relay of that name has no new events.
bool IsMuted(const SSiteStatus& status, const std::string& name) {
    return status.visits && std::ranges::any_of(status.visits->relays, [&name](const SRelayVisit& relay) {
               return relay.mute && relay.HasFilesOf(name);
           });
}

void EvaluateSilence(const std::string& name, const SRelayStatus& relay, const SThresholds& thresholds,
                     SVerdict& verdict) {
    if (relay.silentDays) {
        // The current day is not over and does not count against the relay.
        const auto days = static_cast<std::uint64_t>(*relay.silentDays);
        Add(verdict, Grade(days > 0 ? days - 1 : 0, thresholds.warnSilent, thresholds.criticalSilent),
            name + " has been silent for " + Counted(days, "day"));
    } else {
        const EState state = thresholds.criticalSilent > 0 ? EState::Critical
                             : thresholds.warnSilent > 0   ? EState::Warning
                                                           : EState::Good;
        Add(verdict, state,
            name + (relay.lastFile.empty()    ? " has no day file"
                    : relay.futureDay.empty() ? " has no dated day file"
                                              : " has only day files dated in the future"));
    }
}

void EvaluateFiles(const std::string& name, const SRelayStatus& relay, SVerdict& verdict) {
    if (!relay.futureDay.empty()) {
        Add(verdict, EState::Warning,
            name + " has a day file of " + relay.futureDay +
                ", which is in the future: check this machine's clock, then move the file away");
    }
    // Older damage was reported in its time, and would hide what is new.
    if (relay.freshDamaged > 0) {
        Add(verdict, EState::Warning,
            name + " has " + Counted(relay.freshDamaged, "damaged place") + " in its latest day files");
    }
}

/// "Feeder 7 (AB12-1)", where the visits or the day files know its plant text.
std::string NameForPeople(const SSiteStatus& status, const std::string& name) {
    const auto relays =
        status.visits ? std::span<const SRelayVisit>(status.visits->relays) : std::span<const SRelayVisit>();
    const auto found =
        std::ranges::find_if(relays, [&name](const SRelayVisit& relay) { return relay.HasFilesOf(name); });
    const auto own = status.relays.find(name);
    const std::string plant = found != relays.end() && !found->plant.empty() ? found->plant
                              : own != status.relays.end()                   ? own->second.plant
                                                                             : std::string();
    return plant.empty() ? name : plant + " (" + name + ")";
}

/// The password that the relay has refused last, as the log says it; empty for none.
std::string RefusalOf(const SSiteStatus& status, const std::string& connection) {
    std::string refusal;
    for (const SLogLine& line : status.log.latest) {
        const auto meaning =
            ShortConnectionName(line.connection) == connection ? Explain(line) : std::nullopt;
        if (meaning && meaning->Concern() == EConcern::Password) {
            refusal = ": " + std::string(TrimEnd(line.message, "."));
        }
    }
    return refusal;
}

/// " (Feeder 7 (RV003): Invalid password)": those that no other cause names.
std::string RelaysWithProblems(const SSiteStatus& status) {
    constexpr std::size_t kMostNamed = 3;
    std::vector<std::string> names;
    for (const auto& [connection, group] : status.log.groups) {
        const SRelayVisit* const relay =
            status.visits ? RelayOfConnection(*status.visits, group.connection) : nullptr;
        if (relay != nullptr && !relay->IsMissed()) {
            names.push_back(relay->Label() + RefusalOf(status, connection));
        }
    }
    std::string text;
    for (const std::string& name : std::span(names).first(std::min(names.size(), kMostNamed))) {
        text += (text.empty() ? "" : ", ") + name;
    }
    const std::size_t rest = names.size() - std::min(names.size(), kMostNamed);
    text += rest > 0 ? " and " + std::to_string(rest) + " more" : "";
    return text.empty() ? text : " (" + text + ")";
}

} // namespace

int Severity(EState state) {
    constexpr std::array<int, 4> kSeverities{0, 1, 3, 2};
    return kSeverities.at(static_cast<std::size_t>(state));
}

std::string_view StateName(EState state) {
    constexpr std::array<std::string_view, 4> kNames{"good", "warning", "critical", "unknown"};
    return kNames.at(static_cast<std::size_t>(state));
}

SVerdict Evaluate(const SSiteStatus& status, const SThresholds& thresholds) {
    SVerdict verdict;
    for (const std::string& failure : status.failures) {
        Add(verdict, EState::Unknown, failure);
    }
    if (status.visits) {
        EvaluateVisits(*status.visits, thresholds, verdict);
    }
    const bool isVisited = status.visits && status.visits->IsVisited();
    if (status.relays.empty() && status.failures.empty() && !isVisited) { // a quiet site has none
        Add(verdict, EState::Warning, "no relay has a day file yet");
    }
    for (const auto& [name, relay] : status.relays) {
        if (!IsMuted(status, name)) {
            EvaluateSilence(NameForPeople(status, name), relay, thresholds, verdict);
        }
        EvaluateFiles(NameForPeople(status, name), relay, verdict);
    }
    if (status.log.isMissing && !status.visits) { // looks good, but the path may be wrong
        Add(verdict, EState::Warning,
            "the error log does not exist: nothing has been logged yet, or the path is wrong");
    } else if (status.log.isMissing && !status.visits->HasNothingLogged()) {
        Add(verdict, EState::Unknown,
            "the error log does not exist, and no record says that the last visit had nothing to log");
    }
    for (const std::string& leftover : DescribeLeftovers(status.leftovers)) {
        Add(verdict, EState::Warning, leftover);
    }
    const std::uint64_t problems = status.log.problems - status.log.muted;
    Add(verdict, Grade(problems, thresholds.warnProblems, thresholds.criticalProblems),
        Counted(problems, "problem") + " in the error log since " + TimeForPeople(status.since) +
            RelaysWithProblems(status));
    std::ranges::stable_sort(verdict.causes, [](const SCause& a, const SCause& b) {
        return Severity(a.state) > Severity(b.state);
    });
    verdict.state = verdict.causes.empty() ? EState::Good : verdict.causes.front().state;
    return verdict;
}

} // namespace ruvo
