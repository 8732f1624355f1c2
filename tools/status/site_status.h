// The state of a site, read from its day files and its error log.
#pragma once

#include "tools/log_lines.h"
#include "tools/recover/site_leftovers.h"
#include "tools/sites/shared_logs.h"
#include "tools/sites/site_visits.h"
#include "tools/status/relay_choice.h"
#include "tools/text_output.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ruvo {

struct SRelayStatus {
    std::string plant; ///< what it calls itself, in its newest day file; UTF-8
    std::string description;
    std::string model;
    std::string lastFile;  ///< name of the newest day file that is not in the future, UTF-8; empty for none
    std::string lastDay;   ///< the UTC date in that name; empty for a name without one
    std::string futureDay; ///< latest UTC date in its names that is in the future; empty for none
    std::string lastEvent; ///< latest time in that file, by the relay's clock; empty without a real one
    std::uint64_t records = 0;              ///< in all its day files
    std::uint64_t lastRecords = 0;          ///< in the newest one
    std::uint64_t damaged = 0;              ///< places in all its day files
    std::uint64_t freshDamaged = 0;         ///< those in files within the requested time
    std::optional<std::int64_t> silentDays; ///< from the last day to today; none without a last day
};

/// Problems of one relay or link, by its name in the log.
struct SLogGroup {
    std::string connection; ///< its details in the log
    std::uint64_t problems = 0;
    std::string lastTime;
};

struct SLogStatus {
    static constexpr std::size_t kKeptLines = 20;

    bool isThere = false;
    bool isMissing = false;     ///< but its folder exists
    std::uint64_t lines = 0;    ///< total
    std::uint64_t problems = 0; ///< since the requested time
    std::uint64_t muted = 0;    ///< of those: about the link to a muted relay
    std::map<std::string, SLogGroup> groups;
    std::vector<SLogLine> latest; ///< the last ones of the problems
};

struct SSiteStatus {
    std::map<std::string, SRelayStatus> relays; ///< by name
    SLogStatus log;
    SSiteLeftovers leftovers;
    std::optional<SSiteVisits> visits;              ///< none where no INI file names them
    std::map<std::string, std::uint64_t> freeBytes; ///< on the disk of "events", "log", "state"
    std::string since;                              ///< local date or time, "2026-11-16T03:00:00"
    std::vector<std::string> failures;              ///< what could not be read, with the reason
    bool hasRelay = true;                           ///< false where no relay is as the choice wants it
};

struct SSiteQuestion {
    std::string eventRoot;
    std::string logPath;
    std::string iniPath = {};   ///< empty where none is known
    bool mayHaveNoRoot = false; ///< no visit has stored anything yet, so that there is no event root
    std::string since;          ///< as in SSiteStatus
    std::vector<std::string> expected = {}; ///< names of relays that must be present
    SStatusChoice choice = {};
    const SSiteVisits* visits = nullptr; ///< null where no INI file names them
    COwnLines* ownLines = nullptr;       ///< null where the whole log counts
    CRootLeftovers* leftovers = nullptr; ///< null where no other sites are asked for
};

/// Reads all day files and the log. A missing log in an existing folder counts as empty: the first problem
/// creates it.
[[nodiscard]] SSiteStatus ReadSiteStatus(const SSiteQuestion& question, SConsole& console);

} // namespace ruvo
