// The standard streams of a process that was started without them, or whose output nobody reads any more. For
// the process entry only: a library leaves its host's streams and signals as they are.
#pragma once

namespace ruvo {

/// Takes the place of each standard stream that is closed, so that no file that is opened later gets its
/// number and with it what is written there. Reading and writing fail as on a closed stream. To be called
/// before anything is opened.
void OccupyClosedStandardStreams() noexcept;

/// From here on writing to a pipe or socket whose other end has gone fails, instead of ending the process.
void SurviveClosedPipes() noexcept;

} // namespace ruvo
