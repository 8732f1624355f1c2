// Relays in the records of visits.
#pragma once

#include "ledger/visit_record.h"

namespace ruvo::test {

/// Of a relay that is visited now.
inline SVisitEntry EntryNow(const std::string& key, const std::string& address, bool isReached,
                            const std::string& name, const std::string& plant) {
    SVisitEntry entry;
    entry.key = key;
    entry.address = address;
    entry.isReached = isReached;
    entry.begin = entry.end = RecordedNow();
    entry.name = name;
    entry.plant = plant;
    return entry;
}

} // namespace ruvo::test
