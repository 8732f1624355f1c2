// The faults of a substation, and how often each has been asked for.
#pragma once

#include "sim/relay/simulated_relay.h"
#include "sim/server/call.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ruvo::sim {

/// Counts the calls that each fault watches. Not safe for use by several threads.
class CFaultTable {
public:
    /// Borrows the faults.
    explicit CFaultTable(const std::vector<SFault>& faults);

    /// Counts the call and returns its faults: the first fault that hits, the delays of all.
    /// `relay` is the name of the relay called, or empty.
    SFault Match(const SCall& call, const std::string& relay);

private:
    const std::vector<SFault>& m_faults;
    std::vector<std::uint64_t> m_calls;
};

/// Damages the outputs of a good answer, and its status where the fault says so.
void DamageOutputs(const SFault& fault, Variant::List& outputs);

} // namespace ruvo::sim
