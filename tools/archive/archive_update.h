// Brings the contents of an archive of an earlier version into the tables of this one.
#pragma once

#include "tools/archive/database.h"

namespace ruvo {

/// From version 1. `schema` makes the tables of this program's version. Works within a transaction of its
/// user. The records keep their ids; their site is not known.
void UpdateArchive1(CDatabase& database, const char* schema);

} // namespace ruvo
