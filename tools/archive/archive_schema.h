// The archive's schema and its versions. docs/archive.md is the contract with those who query it.
#pragma once

#include "tools/archive/database.h"

#include <cstdint>

namespace ruvo {

enum class EArchiveAge : std::uint8_t {
    New,     ///< the database was empty
    Updated, ///< it was of an earlier version
    Current,
};

/// Makes the schema in an empty database, or brings an older one up to this program's version, in one
/// transaction. Throws for a newer one and for a database that is no archive.
EArchiveAge BringUpToDate(CDatabase& database);

/// Throws unless the database is an archive of this program's version.
void RequireCurrent(CDatabase& database);

} // namespace ruvo
