// Turns a user's search into a query of the database.
#pragma once

#include "tools/archive/database.h"
#include "tools/events/event_filter.h"
#include "tools/sites/fetched_bytes.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

struct SFindQuery {
    std::string text;    ///< words; empty for all records
    std::string since;   ///< as ParseTimeKey takes it; empty for none
    std::string until;   ///< likewise
    std::string relay;   ///< part of the relay's name; empty for all
    std::string site;    ///< the site's name; empty for all
    SEventFilter filter; ///< the same bounds, for records without a real time
    /// What counts of a day file of a site; may be empty for all.
    std::function<SFetchedBytes(const std::string& site, const std::string& dayFile)> fetched;
};

/// The words as a full-text query: all must match, each as the start of a word, or as a phrase if quoted.
/// Nothing in them acts as an operator. Empty if there is no letter or digit to search for.
[[nodiscard]] std::string FullTextQuery(std::string_view text);

/// The ids of the matching records, by time. Records without a real time come last and are compared with the
/// bounds as ruvoctl events does. Nothing stays locked.
[[nodiscard]] std::vector<std::int64_t> FindRecords(CDatabase& database, const SFindQuery& query);

/// Columns relay, day_file, byte_offset, bytes, site of the record of an id.
inline constexpr std::string_view kFoundRow =
    "SELECT l.name, f.day_file, r.byte_offset, r.bytes, s.name FROM records r JOIN files f ON f.id = r.file_id "
    "JOIN relays l ON l.id = f.relay_id JOIN sites s ON s.id = l.site_id WHERE r.id = ?";

} // namespace ruvo
