// A printf-style engine for relay data: "%k" shows a decimal number with its unit, "%t" a time stamp, and the
// arguments are data values. It keeps no state, asks no locale of the process and allocates nothing for
// numbers.
//
// A conversion is "%", flags ("-", "+", blank, "#", "0"), a width (digits or "*"), "." and a precision
// (digits or
// "*"), a size letter ("h" or "l"), and a letter of d i u x X b c e f k s t. "%%" is "%". Formats come from
// relays: whatever they ask for, at most capacity - 1 characters are written, and they are always terminated.
#pragma once

#include "model/format/format_arguments.h"
#include "model/format/locale_record.h"
#include "model/values/parlane_data.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace ruvo {

/// Formats the values, consumed from the front in order, into the buffer and returns the number of
/// characters. A null locale is the fallback. The caller sets success to true; a missing value, or one of a
/// type that its conversion cannot use, is written as nothing much (0, 0.0, an empty text, a zero time) and
/// clears it.
std::size_t FormatValues(const SLocale* locale, char* buffer, std::size_t capacity, std::string_view format,
                         const CParlaneDataList& values, bool& success);

/// The same with one value, which may be null for none.
std::size_t FormatValue(const SLocale* locale, char* buffer, std::size_t capacity, std::string_view format,
                        const CParlaneData* value, bool& success);

/// The same with native arguments; it cannot fail.
std::size_t FormatNative(const SLocale* locale, char* buffer, std::size_t capacity, std::string_view format,
                         std::span<const CNativeArgument> arguments);

inline CNativeArgument ToNativeArgument(const char* text) {
    return text != nullptr ? std::string_view(text) : std::string_view();
}
template <class T>
CNativeArgument ToNativeArgument(const T& argument) {
    return CNativeArgument(argument);
}

/// FormatNative with the arguments unchanged: std::int32_t, std::uint32_t, double, SFormatNumber,
/// std::string_view or const char* (null writes "(null)"), CParlaneIEC870.
template <class... TArguments>
std::size_t FormatText(const SLocale* locale, char* buffer, std::size_t capacity, std::string_view format,
                       const TArguments&... arguments) {
    const std::array<CNativeArgument, sizeof...(arguments)> list{ToNativeArgument(arguments)...};
    return FormatNative(locale, buffer, capacity, format, list);
}

} // namespace ruvo
