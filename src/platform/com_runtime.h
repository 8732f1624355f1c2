// The COM runtime, which out-of-process servers need. Multithreaded on Windows: the program's waits dispatch
// no messages, so a single-threaded apartment would never hear its sink. Nothing to do on POSIX.
#pragma once

namespace ruvo {

/// Starts the runtime for the calling thread; false when the system refuses.
bool StartComRuntime();
void StopComRuntime();

} // namespace ruvo
