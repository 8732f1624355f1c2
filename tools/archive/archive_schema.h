// The archive's schema and its versions. docs/archive.md is the contract with those who query it.
#pragma once

#include "tools/archive/database.h"

namespace ruvo {

/// Makes the schema in an empty database, or brings an older one up to this program's version. Throws for a
/// newer one and for a database that is no archive.
void BringUpToDate(CDatabase& database);

/// Throws unless the database is an archive of this program's version.
void RequireCurrent(CDatabase& database);

} // namespace ruvo
