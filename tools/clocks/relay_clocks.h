// What the clocks of relays show, from the file that a person writes for --clocks.
#pragma once

#include "tools/clocks/zone_rule.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

/// The rule of a clock: what CZoneRule takes, or the name of a zone that this system knows, "Europe/Berlin".
[[nodiscard]] std::optional<CZoneRule> ReadZone(std::string_view text);

/// A line is "RELAY CLOCK" or "SITE/RELAY CLOCK", where "*" and "?" stand for any characters and case does
/// not matter. The first line that fits applies. What follows "#" is a comment. All names are UTF-8.
class CRelayClocks {
public:
    /// A readable reason on failure, with the line; empty on success.
    [[nodiscard]] std::string Read(const std::string& path);

    /// Null where no line fits; lives as long as this, once all is read.
    [[nodiscard]] const CZoneRule* ClockOf(std::string_view site, std::string_view relay) const;

private:
    struct SLine {
        std::string site; ///< pattern; "*" where the line names none
        std::string relay;
        CZoneRule rule;
    };
    [[nodiscard]] std::string ReadLine(std::string_view line);

    std::vector<SLine> m_lines;
};

/// True where the whole name fits the pattern of "*" and "?"; ASCII letters are compared without case.
[[nodiscard]] bool FitsPattern(std::string_view name, std::string_view pattern);

} // namespace ruvo
