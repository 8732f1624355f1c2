// Memory for the last words: what is kept so that lines of the log can be made when there is no other.
#pragma once

namespace ruvo {

/// Frees the kept memory, to be used by what comes next.
void ReleaseLogReserve() noexcept;
/// Keeps it (again); nothing when there is no memory for it.
void KeepLogReserve() noexcept;
/// Writes to the debug output and to standard error that a line of the log is lost.
void ReportNoMemoryForLine() noexcept;

/// Does what makes and writes a line; when it fails, frees the reserve and lets it begin again. It must
/// not fail once its line is written.
template <class Write>
void WithLogReserve(Write write) noexcept {
    try {
        write();
        return;
    } catch (
        ...) { // NOLINT(bugprone-empty-catch): what was made in vain is gone, and the reserve comes to it
    }
    ReleaseLogReserve();
    try {
        write();
    } catch (...) {
        ReportNoMemoryForLine();
    }
    KeepLogReserve();
}

} // namespace ruvo
