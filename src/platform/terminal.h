// The terminal of the standard streams, when a person uses the program.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ruvo {

enum class EStandardStream : std::uint8_t { Input = 0, Output = 1, Error = 2 };

/// Whether the stream is a terminal; a closed one is none.
bool IsTerminal(EStandardStream stream) noexcept;

/// Whether the stream leads to the systemd journal, which takes a line's priority from its beginning: "<4>".
bool IsSystemJournal(EStandardStream stream) noexcept;

/// Columns of the terminal of the standard output; 0 when there is none or its width is unknown.
std::size_t TerminalWidth() noexcept;

/// Longest line that ReadHiddenLine returns; what is typed beyond it is dropped.
inline constexpr std::size_t kLongestHiddenLine = 255;

/// Writes the prompt to the standard error and reads a line, without its end, from the terminal of the
/// standard input. What is typed is not shown; the terminal shows again what is typed when this returns, and
/// also when a signal ends or stops the process meanwhile. None when there is no terminal or its input ends.
/// The text is in one buffer, which the caller wipes.
std::optional<std::string> ReadHiddenLine(std::string_view prompt);

} // namespace ruvo
