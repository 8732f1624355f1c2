// Keeping the process's memory, which holds passwords for a while, from other processes of the same user.
#pragma once

namespace ruvo {

/// Forbids memory dumps of this process, and attaching to it, as far as the system permits a process to do
/// so. A system that refuses is no failure: the program works all the same.
void ProtectProcessMemory() noexcept;

} // namespace ruvo
