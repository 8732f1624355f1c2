// Relays that are muted for a time: what is known to be wrong with them changes no verdict. The file is
// beside the INI file; the service writes nothing there. All text is UTF-8.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ruvo {

/// Times are UTC, "2026-11-25T02:00:01Z". The mute is one of the relay that had this address then.
struct SMute {
    std::string key;
    std::string address;
    std::string relay; ///< MODEL-SERIAL; empty while that was not known
    std::string since;
    std::string until;
    std::string why;
};

struct SMutes {
    std::vector<SMute> mutes;
    std::string failure; ///< why the file could not be read; empty if it was, or if there is none
};

/// The longest time that a relay can be muted.
inline constexpr std::int64_t kLongestMute = std::int64_t{366} * 24 * 3600;

/// SITE.mutes for SITE.ini.
[[nodiscard]] std::string MutesPath(const std::string& fullIniPath);
[[nodiscard]] SMutes ReadMutes(const std::string& fullIniPath);
/// Replaces the file. Returns a readable reason on failure, else an empty string.
[[nodiscard]] std::string WriteMutes(const std::string& fullIniPath, const std::vector<SMute>& mutes);

/// What a mute is held against: a relay of the INI file, as its visits show it.
struct SMutedRelay {
    std::string address;
    std::string lastReached; ///< UTC; empty for never
};

/// Why a mute does not count (any more): "it ended on 2026-12-31 23:00"; empty if it counts. A visit that
/// has reached the relay ends its mute: the next problem is a new one.
[[nodiscard]] std::string WhyVoid(const SMute& mute, const SMutedRelay& relay, std::int64_t now);

/// "2026-11-25T02:00:01Z" of Unix seconds.
[[nodiscard]] std::string RecordTime(std::int64_t unixSeconds);

} // namespace ruvo
