// The words that a digest is made of.
#pragma once

#include "tools/digest/site_digest.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

/// Appends a part, with the separator where something is before it; nothing for an empty part.
void Join(std::string& text, const std::string& part, std::string_view separator = ", ");

/// "2 trips, 1 fault, 34 other events".
[[nodiscard]] std::string CountsText(std::uint64_t trips, std::uint64_t faults, std::uint64_t total);
[[nodiscard]] std::uint64_t CountOf(const SSiteDigest& site, EEventKind kind);
/// "Start 12, Alarm 3" of the kinds that are not listed one by one.
[[nodiscard]] std::string OtherKinds(const SDigestBay& bay);
/// "Feeder 7 (RV003, FD31-7)".
[[nodiscard]] std::string BayName(const SDigestBay& bay);

/// Without recoveries by hand.
[[nodiscard]] std::vector<SVisitLine> VisitsOf(const SSiteDigest& site);
/// "visit of 2026-11-25 02:00 (3 min 4 s), 11 of 12 relays reached".
[[nodiscard]] std::string VisitText(const SSiteDigest& site);
/// How a visit ended that is not whole.
[[nodiscard]] std::string EndText(const SVisitLine& run);

/// What to do about problems that have the same cause, with the keys and addresses of their relays.
[[nodiscard]] std::string TodoText(std::span<const SDigestProblem* const> same);

} // namespace ruvo
