// The standard streams of a process that was started without them, or whose output is no longer read. For
// the process entry only: a library leaves its host's streams and signals as they are.
#pragma once

namespace ruvo {

/// Opens a placeholder for each closed standard stream. Without it the next file opened would get the
/// stream's number, and with it what is written to the stream. Reading and writing fail as on a closed
/// stream. To be called before anything is opened.
void OccupyClosedStandardStreams() noexcept;

/// From here on writing to a pipe or socket whose other end has gone fails, instead of ending the process.
void IgnoreClosedPipes() noexcept;

} // namespace ruvo
