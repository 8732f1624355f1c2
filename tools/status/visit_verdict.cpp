// What the records of visits mean for the verdict.
#include "base/text.h"
#include "config/result_messages.h"
#include "tools/status/verdict.h"

#include <algorithm>

namespace ruvo {

namespace {

std::string Joined(const std::vector<std::string>& folders) {
    std::string text;
    for (const std::string& folder : folders) {
        text += (text.empty() ? "" : " and ") + folder;
    }
    return text.empty() ? "no state folder" : text;
}

void EvaluateEnd(const SSiteVisits& visits, SVerdict& verdict) {
    const SVisitLine& last = *visits.summary.last;
    const auto isLeft = [](const SRelayVisit& relay) { return !relay.entry; };
    const auto left = static_cast<std::uint64_t>(std::ranges::count_if(visits.relays, isLeft));
    const std::string visit = "the visit of " + RecordTimeForPeople(last.begin);
    switch (last.ended) {
    case ERunEnd::Whole:
        break;
    case ERunEnd::Signal:
        verdict.causes.push_back({EState::Warning, visit + " was ended by " + last.signal + "; " +
                                                       Counted(last.notVisited, "relay") + " not visited"});
        break;
    case ERunEnd::Killed:
        verdict.causes.push_back({EState::Warning, visit + " was killed, or the machine stopped; " +
                                                       Counted(left, "relay") + " not visited"});
        break;
    case ERunEnd::NotBegun:
        verdict.causes.push_back(
            {EState::Critical, visit + " could not begin: result code " + std::to_string(last.result) + ", " +
                                   std::string(ResultMessage(static_cast<EResultCode>(last.result)))});
        break;
    }
}

void EvaluateAge(std::int64_t age, const SThresholds& thresholds, SVerdict& verdict) {
    constexpr std::int64_t kOtherClock = 3600;
    if (age < -kOtherClock) {
        verdict.causes.push_back(
            {EState::Warning, "the last visit is dated in the future: check this machine's clock"});
    }
    const auto isPast = [age](std::int64_t limit) { return limit > 0 && age > limit; };
    if (isPast(thresholds.criticalVisitAge) || isPast(thresholds.warnVisitAge)) {
        verdict.causes.push_back({isPast(thresholds.criticalVisitAge) ? EState::Critical : EState::Warning,
                                  "the last visit began " + LengthForPeople(age) + " ago"});
    }
}

/// Whether the same has kept the visit from all of several relays.
bool IsCutOff(const SSiteVisits& visits) {
    return visits.relays.size() > 1 &&
           std::ranges::all_of(visits.relays, [&visits](const SRelayVisit& relay) {
               return relay.IsMissed() && !relay.mute &&
                      MissedSince(visits, relay) == MissedSince(visits, visits.relays.front());
           });
}

void EvaluateReach(const SSiteVisits& visits, SVerdict& verdict) {
    const bool isCutOff = IsCutOff(visits);
    if (isCutOff) {
        constexpr std::string_view kNot = "not ";
        const std::string since = MissedSince(visits, visits.relays.front());
        verdict.causes.push_back({EState::Warning, "none of the " + Counted(visits.relays.size(), "relay") +
                                                       " " + since.substr(kNot.size())});
    }
    for (const SRelayVisit& relay : visits.relays) {
        if (relay.IsMissed() && !relay.mute && !isCutOff) {
            verdict.causes.push_back({EState::Warning, MissedText(visits, relay)});
        }
        if (relay.entry && relay.entry->lost > 0) {
            verdict.causes.push_back(
                {EState::Critical, Counted(relay.entry->lost, "event") + " of " + relay.Label() +
                                       " lost by the last visit; the error log says why"});
        }
    }
}

} // namespace

void EvaluateVisits(const SSiteVisits& visits, const SThresholds& thresholds, SVerdict& verdict) {
    const SVisitSummary& summary = visits.summary;
    if (summary.history == EHistory::NotReadable) {
        verdict.causes.push_back({EState::Unknown, "the records of visits cannot be read by this user: " +
                                                       Joined(summary.folders)});
    } else if (summary.history == EHistory::None) {
        verdict.causes.push_back(
            {EState::Unknown, "no visit is recorded; looked in " + Joined(summary.folders)});
    } else if (!summary.isWhole) {
        verdict.causes.push_back(
            {EState::Unknown, "the records of visits cannot be read to the end: " + Joined(summary.folders)});
    } else if (!summary.last && !summary.running) {
        verdict.causes.push_back({EState::Critical, "no visit of " + visits.iniPath + " is recorded in " +
                                                        Joined(summary.folders)});
    }
    if (!visits.muteFailure.empty()) {
        verdict.causes.push_back({EState::Unknown, visits.muteFailure});
    }
    if (summary.last) {
        EvaluateEnd(visits, verdict);
        EvaluateAge(visits.ageSeconds.value_or(0), thresholds, verdict);
        EvaluateReach(visits, verdict);
    }
}

} // namespace ruvo
