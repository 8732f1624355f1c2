// The conversions of the formatter, one operation each: what a value looks like before flags and width are
// met.
#pragma once

#include "model/format/format_arguments.h"
#include "model/format/format_output.h"
#include "model/format/locale_record.h"

#include <cstdint>

namespace ruvo {

/// What a conversion writes with.
struct SFormatContext {
    const SLocale& locale;
    CFormatOutput& output;
    IFormatArguments& arguments;
};

void ConvertSigned(const SFormatContext& context, const SConversion& conversion);   ///< d, i
void ConvertUnsigned(const SFormatContext& context, const SConversion& conversion); ///< u, x, X, b
void ConvertChar(const SFormatContext& context, const SConversion& conversion);     ///< c
void ConvertFixed(const SFormatContext& context, const SConversion& conversion);    ///< f
void ConvertFloat(const SFormatContext& context, const SConversion& conversion);    ///< e
void ConvertNumber(const SFormatContext& context, const SConversion& conversion);   ///< k
void ConvertText(const SFormatContext& context, const SConversion& conversion);     ///< s
void ConvertTime(const SFormatContext& context, const SConversion& conversion);     ///< t

} // namespace ruvo
