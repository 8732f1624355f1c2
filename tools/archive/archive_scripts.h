// The SQL that makes the tables of an archive. A published script is never changed: archives of its version
// are known by it.
#pragma once

namespace ruvo {

extern const char* const kArchiveSchema1;
extern const char* const kArchiveSchema2;

} // namespace ruvo
