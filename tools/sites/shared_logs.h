// Error logs into which the runs of several INI files write: who has written a line.
#pragma once

#include "tools/ini/site_places.h"
#include "tools/log_lines.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ruvo {

/// An INI file and where its runs write.
struct SLogUser {
    std::string iniPath; ///< full
    SSitePlaces places;
};

/// The INI files that share a log with a site. Each folder is read once.
class CLogUsers {
public:
    /// The other INI files in the folder of that one that name the same error log. For use while no CSite
    /// lives.
    [[nodiscard]] std::vector<SLogUser> Beside(const std::string& fullIniPath);

private:
    std::map<std::string, std::vector<SLogUser>> m_folders;
};

/// Tells a site's lines in a log from those that a run of another site has written, as far as the records of
/// visits show when which run lasted (no two last at the same time), and their relays are others.
class COwnLines {
public:
    COwnLines(const std::string& fullIniPath, const SSitePlaces& places, const std::vector<SLogUser>& others);

    /// False for a line that was written while a run of another site lasted, and none of this one, or is
    /// about a relay that only others have. Takes the lines in their order: one without a time belongs to the
    /// one before it.
    [[nodiscard]] bool IsOwn(const SLogLine& line);

private:
    /// From the second to the second, in local time.
    using Span = std::pair<std::string, std::string>;
    static void AddSpans(const std::string& events, const std::string& iniPath, std::vector<Span>& spans);

    [[nodiscard]] bool IsOfOthersRelay(const SLogLine& line) const;

    SSitePlaces m_places;
    std::vector<SLogUser> m_users;
    std::vector<Span> m_own;
    std::vector<Span> m_others;
    bool m_isLastOwn = true;
};

} // namespace ruvo
