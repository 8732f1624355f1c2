// What runs have put into day files, as the records of visits say. Of relays that were out of reach for days,
// it is what tells new events from known ones.
#pragma once

#include "ledger/visit_entry.h"
#include "tools/given_time.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ruvo {

/// The bytes of one day file that count.
struct SFetchedBytes {
    bool isWhole = false;                                          ///< all of them
    std::vector<std::pair<std::uint64_t, std::uint64_t>> ranges{}; ///< the first, and the one after the last

    [[nodiscard]] bool IsEmpty() const { return !isWhole && ranges.empty(); }
    /// Whether any of these bytes counts.
    [[nodiscard]] bool Touches(std::uint64_t from, std::uint64_t to) const;
};

/// Of the day files of one event root.
class CFetchedBytes {
public:
    /// What came in within that time; without one, all that the added runs brought.
    explicit CFetchedBytes(std::optional<SPeriod> period = std::nullopt) : m_period(period) {}

    void Add(const SVisitLine& run);
    /// A run that is known, but does not count.
    void AddOther(const SVisitLine& run);
    /// Of a day file in the folder of its relay, by any path. A file that no run is known to have written
    /// counts as a whole, by the UTC day in its name.
    [[nodiscard]] SFetchedBytes Of(const std::string& path) const;
    /// The same of a file of that name, in whichever folder; UTF-8.
    [[nodiscard]] SFetchedBytes OfName(const std::string& name) const;

private:
    using Ranges = std::vector<std::pair<std::uint64_t, std::uint64_t>>;
    /// A visit that is killed before it is closed may have stored all its events and have told of them: then
    /// the run that recovers them brings nothing new.
    struct SFileBytes {
        Ranges visited;   ///< by visits, whether they count or not
        Ranges counted;   ///< those of them that do
        Ranges recovered; ///< by recoveries that count
    };

    [[nodiscard]] SFetchedBytes OfKey(const std::string& dayFile, const std::string& name) const;
    void AddEntry(const SVisitEntry& entry, bool counts);
    SFileBytes* FileOf(const SStoredBytes& bytes);
    [[nodiscard]] bool IsOfPeriod(const std::string& name) const;

    std::optional<SPeriod> m_period;
    std::map<std::string, SFileBytes> m_files;   ///< by FOLDER/FILE, as the records have it
    std::map<std::string, std::string> m_byName; ///< their keys by FILE
};

} // namespace ruvo
