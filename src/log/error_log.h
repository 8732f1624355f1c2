// The error log: one plain-text file, one time-stamped line per problem. Its path and its off switch are
// process-wide; they are touched by one thread at a time. Several processes may write to one log: each line
// is written under the file's lock. Nothing here fails towards its caller: a line that cannot be written is
// written to the debug output and to standard error, and lost.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ruvo {

class CRunContext;

/// Chooses where the log lives. A destination from the registry takes the log along, unless the INI file
/// names it.
void ResolveErrorLogPath(const CRunContext& context, bool configurationLoaded);

/// Full path of the log; empty, which writes nothing, until it has been resolved.
const std::string& ErrorLogPath();

/// Lines that this process has written, those that were lost included.
std::uint64_t ErrorLogLines();

/// Silences every write, or lifts that again.
void SetErrorLogDisabled(bool disabled);

/// What a line is worth: one that reports lost events must outlast a power failure, since nothing else
/// reports them.
enum class ELineWorth : std::uint8_t { Usual, TellsOfLoss };

/// Writes one line; with details it ends with the link and the relay that are being handled.
void LogMessage(std::string_view message, bool withDetails, ELineWorth worth = ELineWorth::Usual) noexcept;

/// Writes one line that ends with the text of a comms-server status.
void LogStatusMessage(std::string_view message, std::uint32_t status) noexcept;

/// Appends local time, a blank, the text and CR LF, in one write. Control characters in the text become
/// blanks (a run of line breaks one blank), so that one problem stays one line. The text is in the system's
/// narrow encoding: relay texts are converted by the caller. A line that reports a loss is on the disk, with
/// all lines before it, when this returns.
void WriteLogLine(std::string_view text, ELineWorth worth = ELineWorth::Usual) noexcept;

/// Back to the state at process start: no path, not disabled. For tests.
void ResetErrorLog();

} // namespace ruvo
