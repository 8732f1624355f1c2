// What every target says about its properties.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace ruvo::fuzz {

/// Ends the process in a way that the fuzzer, and a replay, count as a finding.
inline void Require(bool holds, const char* property) {
    if (!holds) {
        std::fprintf(stderr, "PROPERTY DOES NOT HOLD: %s\n", property);
        std::abort();
    }
}

} // namespace ruvo::fuzz
