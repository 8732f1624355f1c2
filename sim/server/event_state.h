// Which events are gone from the relays, kept from run to run.
#pragma once

#include "sim/server/line_file.h"

#include <cstddef>
#include <string>

namespace ruvo::sim {

/// Remembers from run to run how many events each relay has handed over: one line "NAME;" per event. A line
/// cut short by a crash has no ";" and does not count.
class CEventState {
public:
    bool Open(const std::string& path);
    std::size_t HandedOver(const std::string& relay) const;
    void AddHandedOver(const std::string& relay) { m_file.Append(relay + ";"); }

private:
    std::string m_before; ///< the file as it was
    CLineFile m_file;
};

} // namespace ruvo::sim
