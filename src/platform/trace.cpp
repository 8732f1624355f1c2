#include "platform/trace.h"

#include "platform/debug_output.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <string>

namespace ruvo {

namespace {

constexpr std::string_view kDefaultTag = "QTV";
constexpr std::string_view kErrorMark = " *** [ PARLANE ";
constexpr std::string_view kWarningMark = "  *  [ PARLANE ";
constexpr std::string_view kInfoMark = "     [ PARLANE ";
constexpr std::size_t kFunctionNameWidth = 48;
constexpr std::size_t kSeparatorWidth = 128;

std::string& TraceTag() {
    static std::string tag;
    return tag;
}

void WriteLine(std::string_view mark, std::string_view kind, std::string_view text) {
    std::string line(mark);
    line += TraceTag().empty() ? kDefaultTag : std::string_view(TraceTag());
    line += kind;
    line += text;
    line += '\n';
    WriteDebugOutput(line);
}

[[gnu::format(printf, 1, 0)]] std::string FormatArguments(const char* format, std::va_list arguments) {
    std::array<char, 512> shortText;
    std::va_list again;
    va_copy(again, arguments);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): every caller has started it
    const int length = std::vsnprintf(shortText.data(), shortText.size(), format, arguments);
    std::string text;
    if (length >= 0 && static_cast<std::size_t>(length) < shortText.size()) {
        text.assign(shortText.data(), static_cast<std::size_t>(length));
    } else if (length >= 0) {
        text.resize(static_cast<std::size_t>(length));
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    return text;
}

/// A trace line is not worth a failure: what the memory does not suffice for is lost.
[[gnu::format(printf, 3, 0)]] void WriteArguments(std::string_view mark, std::string_view kind,
                                                  const char* format, std::va_list arguments) noexcept {
    try {
        WriteLine(mark, kind, FormatArguments(format, arguments));
    } catch (...) { // NOLINT(bugprone-empty-catch)
    }
}

} // namespace

void SetTraceTag(std::string_view tag) {
    TraceTag() = tag;
}

void TraceError(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    WriteArguments(kErrorMark, " ERR  ] ", format, arguments);
    va_end(arguments);
}

void TraceWarning(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    WriteArguments(kWarningMark, " WARN ] ", format, arguments);
    va_end(arguments);
}

void TraceInfo(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    WriteArguments(kInfoMark, " INFO ] ", format, arguments);
    va_end(arguments);
}

void TraceFunction(std::string_view name, EFunctionState state) {
    constexpr std::array<std::string_view, 3> kStates{"started", "succeeded", "failed"};
    std::string text = "Function  ##  ";
    text += name;
    text.append(kFunctionNameWidth - std::min(name.size(), kFunctionNameWidth), ' ');
    text += "  ##  ";
    text += kStates[static_cast<std::size_t>(state)];
    WriteLine(kInfoMark, " INFO ] ", text);
}

void TraceSeparator() {
    WriteDebugOutput(std::string(kSeparatorWidth, '-') + '\n');
}

} // namespace ruvo
