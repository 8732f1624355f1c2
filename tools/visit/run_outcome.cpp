#include "tools/visit/run_outcome.h"

#include "tools/visit/log_growth.h"

#include <algorithm>

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

} // namespace

int StatusOfRun(const SRunOutcome& outcome) {
    if (outcome.end.status != 0) {
        return static_cast<int>(outcome.end.status);
    }
    const int status =
        static_cast<int>(outcome.record ? StatusOfRecord(outcome.record->line) : StatusOfLog(outcome));
    return outcome.hasPrinted ? WorseStatus(status, static_cast<int>(EVisitStatus::Refused)) : status;
}

int WorseStatus(int first, int second) {
    constexpr int kMost = static_cast<int>(EVisitStatus::IsVisited);
    const auto isCrash = [](int status) { return status < 0 || status > kMost; };
    return isCrash(first) ? first : isCrash(second) ? second : std::max(first, second);
}

} // namespace ruvo
