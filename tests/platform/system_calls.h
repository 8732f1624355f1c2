// Answers that no test can have from the system itself. The functions in system_calls.cpp take the place of
// the C library's in this program.
#pragma once

namespace ruvo::test {

inline const char* g_refused = "";     ///< the call that fails
inline int g_error = 0;                ///< why it does
inline int g_flushes = 0;              ///< calls of fsync
inline int g_interruptions = 0;        ///< so many of its next calls are ended by a signal
inline bool g_mayBecomeAnyone = false; ///< on its standard output it tells whom it would become
inline const char* g_home = nullptr;   ///< of every user; empty when the system knows none
inline const char* g_group = nullptr;  ///< the name of every group; empty when the system knows none
inline bool g_hidesKinds = false;      ///< folders are listed without the kinds of their entries

} // namespace ruvo::test
