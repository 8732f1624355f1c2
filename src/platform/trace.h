// Trace lines for developers, on the debugger output. Each line is written in one piece, with the formatted
// text as it is: a relay's text can hold any byte, and break a line.
#pragma once

#include <cstdint>
#include <string_view>

namespace ruvo {

/// Sets the tag that the lines carry, for the whole process; empty stands for "QTV", the initial tag.
void SetTraceTag(std::string_view tag);

/// Formats are those of printf. Nothing is thrown: a line that cannot be made is lost.
[[gnu::format(printf, 1, 2)]] void TraceError(const char* format, ...);
[[gnu::format(printf, 1, 2)]] void TraceWarning(const char* format, ...);
[[gnu::format(printf, 1, 2)]] void TraceInfo(const char* format, ...);

enum class EFunctionState : std::uint8_t { Started, Succeeded, Failed };
void TraceFunction(std::string_view name, EFunctionState state);

/// A line of dashes.
void TraceSeparator();

} // namespace ruvo
