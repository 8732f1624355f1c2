#include "tools/sites/shared_logs.h"

#include "ledger/visit_history.h"
#include "paths/path_utilities.h"
#include "platform/full_path.h"
#include "tools/given_time.h"
#include "tools/sites/site.h"
#include "tools/sites/site_visits.h"

#include <algorithm>

namespace ruvo {

namespace {

std::vector<SLogUser> ReadUsers(const std::string& folder) {
    std::vector<SLogUser> users;
    for (const std::string& ini : FindSites(folder).iniPaths) {
        if (const CSite site(ini); site.Places()) {
            users.push_back({ini, *site.Places()});
        }
    }
    return users;
}

/// The last moment of a run that is known; of a killed one, that of its last relay.
std::string LastMoment(const SVisitLine& run, ERunState state) {
    if (state == ERunState::Running) {
        return LocalTimeText(NowSeconds());
    }
    std::string last = run.begin;
    for (const SVisitEntry& entry : run.entries) {
        last = std::max({last, entry.begin, entry.end});
    }
    const auto moment = SecondsOfRecord(run.end.empty() ? last : run.end);
    return moment ? LocalTimeText(*moment) : std::string();
}

} // namespace

std::vector<SLogUser> CLogUsers::Beside(const std::string& fullIniPath) {
    const std::string folder = ParentFolder(fullIniPath);
    auto known = m_folders.find(folder);
    if (known == m_folders.end()) {
        known = m_folders.emplace(folder, ReadUsers(folder)).first;
    }
    std::vector<SLogUser> others = known->second;
    const auto own = std::ranges::find(others, fullIniPath, &SLogUser::iniPath);
    if (own == others.end()) {
        return {};
    }
    const std::string log = OwnSpelling(own->places.log);
    std::erase_if(others, [&](const SLogUser& user) {
        return user.iniPath == fullIniPath || OwnSpelling(user.places.log) != log;
    });
    return others;
}

COwnLines::COwnLines(const std::string& fullIniPath, const SSitePlaces& places,
                     const std::vector<SLogUser>& others)
    : m_places(places), m_users(others) {
    for (const SLogUser& other : others) {
        AddSpans(other.places.events, other.iniPath, m_others);
    }
    if (!m_others.empty()) {
        AddSpans(places.events, fullIniPath, m_own);
    }
}

// A run within which the clock was put back has no span by which a line could be taken from anybody.
void COwnLines::AddSpans(const std::string& events, const std::string& iniPath, std::vector<Span>& spans) {
    const CVisitHistory history(events);
    // Lines of runs that cannot be read are taken for anybody's.
    static_cast<void>(history.ForEachOf(iniPath, [&spans](const SVisitLine& run, ERunState state) {
        if (const auto begin = SecondsOfRecord(run.begin)) {
            spans.emplace_back(LocalTimeText(*begin), LastMoment(run, state));
        }
    }));
}

bool COwnLines::IsOfOthersRelay(const SLogLine& line) const {
    const auto isOf = [&line](const SSitePlaces& places) {
        return std::ranges::any_of(places.relays, [&](const SVisitedRelay& relay) {
            return IsConnectionOf(line.connection, relay.link, places.linkName, relay.address);
        });
    };
    return !line.connection.empty() && !isOf(m_places) &&
           std::ranges::any_of(m_users, [&isOf](const SLogUser& user) { return isOf(user.places); });
}

bool COwnLines::IsOwn(const SLogLine& line) {
    if (!line.time.empty()) {
        const auto isIn = [&line](const std::vector<Span>& spans) {
            return std::ranges::any_of(spans, [&line](const Span& span) {
                return line.time >= span.first && line.time <= span.second;
            });
        };
        const bool isOwnRun = isIn(m_own);
        const bool isOthersRun = isIn(m_others);
        m_isLastOwn = isOwnRun == isOthersRun ? !IsOfOthersRelay(line) : isOwnRun; // a second may be of both
    }
    return m_isLastOwn;
}

} // namespace ruvo
