#include "tools/visit/run_outcome.h"

#include "tools/visit/log_growth.h"

#include <algorithm>
#include <set>

namespace ruvo {

namespace {

EVisitStatus StatusOfRecord(const SVisitLine& line) {
    switch (line.ended) {
    case ERunEnd::Whole:
        return line.logLines == 0 ? EVisitStatus::Good : EVisitStatus::Problems;
    case ERunEnd::Signal:
        return EVisitStatus::Ended;
    case ERunEnd::NotBegun:
        return EVisitStatus::Refused;
    case ERunEnd::Killed: // it has ended by itself, by a failure that it could log at most
        break;
    }
    return EVisitStatus::Problems;
}

EVisitStatus StatusOfLog(const SRunOutcome& outcome) {
    if (outcome.otherVisit) {
        return EVisitStatus::IsVisited;
    }
    if (TellOfRequestedEnd(outcome.logged)) {
        return EVisitStatus::Ended;
    }
    return outcome.logged.empty() ? EVisitStatus::Good : EVisitStatus::Problems;
}

/// Takes off the lines about relays that a later attempt has reached, and about the links of muted ones. Adds
/// the relays that this attempt has reached.
void Excuse(SVisitLine& line, std::map<std::string, std::uint64_t>& muted, std::set<std::string>& reached) {
    for (const SVisitEntry& entry : line.entries) {
        if (entry.isReached) {
            reached.insert(entry.key);
        } else {
            const std::uint64_t excused = reached.contains(entry.key) ? entry.logLines : muted[entry.key];
            line.logLines -= std::min({excused, entry.logLines, line.logLines});
        }
    }
}

} // namespace

int StatusOfRun(const SRunOutcome& outcome) {
    if (outcome.end.status != 0) {
        return static_cast<int>(outcome.end.status);
    }
    const int status =
        static_cast<int>(outcome.record ? StatusOfRecord(outcome.record->line) : StatusOfLog(outcome));
    return outcome.hasPrinted ? WorseStatus(status, static_cast<int>(EVisitStatus::Refused)) : status;
}

std::vector<std::string> RelaysWithoutAnswer(const SRunOutcome& outcome) {
    std::vector<std::string> keys;
    if (outcome.end.status != 0 || !outcome.record || outcome.record->line.ended != ERunEnd::Whole) {
        return keys;
    }
    for (const SVisitEntry& entry : outcome.record->line.entries) {
        if (!entry.isReached && !entry.address.empty()) {
            keys.push_back(entry.key);
        }
    }
    return keys;
}

int StatusOfAttempts(std::vector<SRunOutcome> attempts) {
    int status = static_cast<int>(EVisitStatus::Good);
    std::set<std::string> reached; // in a later attempt
    for (auto outcome = attempts.rbegin(); outcome != attempts.rend(); ++outcome) {
        if (outcome->record) {
            Excuse(outcome->record->line, outcome->mutedLines, reached);
        }
        status = WorseStatus(status, StatusOfRun(*outcome));
    }
    return status;
}

int WorseStatus(int first, int second) {
    constexpr int kMost = static_cast<int>(EVisitStatus::IsVisited);
    const auto isCrash = [](int status) { return status < 0 || status > kMost; };
    return isCrash(first) ? first : isCrash(second) ? second : std::max(first, second);
}

} // namespace ruvo
