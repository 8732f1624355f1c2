// A digest line by line, as its formats for people show it: what is worst first, and no longer than a mail
// should be.
#pragma once

#include "tools/digest/site_digest.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ruvo {

struct SDigest {
    std::string made;   ///< local time, "2026-11-25 07:00"
    std::string period; ///< "since 2026-11-24 07:00": what it is of, in words
    std::vector<SSiteDigest> sites;
    std::vector<std::string> failures; ///< of the whole
};

enum class EDigestLine : std::uint8_t {
    Headline, ///< everything in one line
    Lead,
    Site,
    Alarm,  ///< what somebody should look at
    Remark, ///< what is good to know
    Bay,
    Counts, ///< of a bay without trips and faults
    Event,
    Detail, ///< of an event
    Text,   ///< of a bay
    BayAlarm,
    Todo, ///< what to do about the line before it
};

struct SDigestLine {
    EDigestLine kind = EDigestLine::Text;
    std::string text;
    SDigestEvent event{}; ///< for an Event, instead of the text
};

/// "2 trips, 1 other event; 1 relay not reached": the whole in one line, for a mail's subject.
[[nodiscard]] std::string HeadlineOf(const SDigest& digest);

/// At most so many trips and faults of each relay; the rest is counted.
[[nodiscard]] std::vector<SDigestLine> DigestLines(const SDigest& digest, std::size_t mostEvents);

} // namespace ruvo
