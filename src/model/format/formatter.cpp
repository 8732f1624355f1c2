#include "model/format/formatter.h"

#include "base/text.h"
#include "model/format/format_conversions.h"
#include "model/format/format_output.h"

#include <algorithm>

namespace ruvo {
namespace {

/// Reads one format text from its front.
class CFormatReader {
public:
    explicit CFormatReader(std::string_view format) : m_rest(format) {}

    [[nodiscard]] bool AtEnd() const { return m_rest.empty(); }
    /// Takes the characters up to the next "%".
    std::string_view TakeOrdinary() {
        const std::string_view taken = m_rest.substr(0, m_rest.find('%'));
        m_rest.remove_prefix(taken.size());
        return taken;
    }
    bool TakeIf(std::string_view anyOf, char& taken) {
        if (m_rest.empty() || anyOf.find(m_rest.front()) == std::string_view::npos) {
            return false;
        }
        return TakeChar(taken);
    }
    bool TakeIf(char wanted) {
        char taken = 0;
        return TakeIf({&wanted, 1}, taken);
    }
    /// False at the end.
    bool TakeChar(char& taken) {
        if (m_rest.empty()) {
            return false;
        }
        taken = m_rest.front();
        m_rest.remove_prefix(1);
        return true;
    }
    /// Digits, clamped; none are 0.
    int TakeCount() {
        int count = 0;
        for (; !m_rest.empty() && IsDigit(m_rest.front()); m_rest.remove_prefix(1)) {
            count = std::min(count * 10 + (m_rest.front() - '0'), SConversion::kMaxCount);
        }
        return count;
    }

private:
    std::string_view m_rest;
};

void TakeFlags(CFormatReader& reader, SConversion& conversion) {
    for (char flag = 0; reader.TakeIf("-+ #0", flag);) {
        conversion.leftJustify = conversion.leftJustify || flag == '-';
        conversion.plus = conversion.plus || flag == '+';
        conversion.blank = conversion.blank || flag == ' ';
        conversion.sharp = conversion.sharp || flag == '#';
        conversion.zeroPad = conversion.zeroPad || flag == '0';
    }
}

void TakeWidth(CFormatReader& reader, SConversion& conversion, IFormatArguments& arguments) {
    if (!reader.TakeIf('*')) {
        conversion.width = reader.TakeCount();
        return;
    }
    const std::int64_t width = arguments.TakeSigned();
    conversion.leftJustify = conversion.leftJustify || width < 0;
    conversion.width =
        static_cast<int>(std::min<std::int64_t>(width < 0 ? -width : width, SConversion::kMaxCount));
}

void TakePrecision(CFormatReader& reader, SConversion& conversion, IFormatArguments& arguments) {
    if (!reader.TakeIf('.')) {
        return;
    }
    if (!reader.TakeIf('*')) {
        conversion.precision = reader.TakeCount();
        return;
    }
    const std::int32_t precision = arguments.TakeSigned();
    conversion.precision =
        precision < 0 ? SConversion::kNoPrecision : std::min(precision, SConversion::kMaxCount);
}

/// Everything after the "%". A "*" takes its argument before the value does, width before precision. Both
/// "%lt" and "%tl" name the long time.
SConversion TakeConversion(CFormatReader& reader, IFormatArguments& arguments) {
    SConversion conversion;
    TakeFlags(reader, conversion);
    TakeWidth(reader, conversion, arguments);
    TakePrecision(reader, conversion, arguments);
    reader.TakeIf("hl", conversion.size);
    reader.TakeChar(conversion.letter);
    if (conversion.letter == 't' && conversion.size == 0 && reader.TakeIf('l')) {
        conversion.size = 'l';
    }
    return conversion;
}

struct SConversionRow {
    char letter;
    void (*convert)(const SFormatContext& context, const SConversion& conversion);
};

constexpr std::array kConversionRows{
    SConversionRow{'d', ConvertSigned},   SConversionRow{'i', ConvertSigned},
    SConversionRow{'u', ConvertUnsigned}, SConversionRow{'x', ConvertUnsigned},
    SConversionRow{'X', ConvertUnsigned}, SConversionRow{'b', ConvertUnsigned},
    SConversionRow{'c', ConvertChar},     SConversionRow{'e', ConvertFloat},
    SConversionRow{'f', ConvertFixed},    SConversionRow{'k', ConvertNumber},
    SConversionRow{'s', ConvertText},     SConversionRow{'t', ConvertTime},
};

void Convert(const SFormatContext& context, const SConversion& conversion) {
    for (const SConversionRow& row : kConversionRows) {
        if (row.letter == conversion.letter) {
            row.convert(context, conversion);
            return;
        }
    }
}

std::size_t Run(const SLocale* locale, char* buffer, std::size_t capacity, std::string_view format,
                IFormatArguments& arguments) {
    CFormatOutput output(buffer, capacity);
    const SFormatContext context{locale != nullptr ? *locale : GetFallbackLocale(), output, arguments};
    CFormatReader reader(format);
    while (!reader.AtEnd()) {
        output.PutText(reader.TakeOrdinary());
        if (!reader.TakeIf('%')) {
            continue;
        }
        if (reader.TakeIf('%')) {
            output.PutChar('%');
        } else {
            Convert(context, TakeConversion(reader, arguments));
        }
    }
    return output.GetLength();
}

} // namespace

void ConvertText(const SFormatContext& context, const SConversion& conversion) {
    const SFormatText text = context.arguments.TakeText();
    const std::size_t limit = conversion.precision == SConversion::kNoPrecision
                                  ? std::string_view::npos
                                  : static_cast<std::size_t>(conversion.precision);
    const std::size_t stars = std::min(text.stars, static_cast<std::size_t>(SConversion::kMaxCount));
    CFieldText field;
    field.AddText(text.text.substr(0, limit));
    field.AddFill('*', static_cast<int>(std::min(stars, limit)));
    field.Write(context.output, conversion);
}

std::size_t FormatValues(const SLocale* locale, char* buffer, std::size_t capacity, std::string_view format,
                         const CParlaneDataList& values, bool& success) {
    CValueArguments arguments(values, success);
    return Run(locale, buffer, capacity, format, arguments);
}

std::size_t FormatValue(const SLocale* locale, char* buffer, std::size_t capacity, std::string_view format,
                        const CParlaneData* value, bool& success) {
    CValueArguments arguments(std::span(&value, 1), success);
    return Run(locale, buffer, capacity, format, arguments);
}

std::size_t FormatNative(const SLocale* locale, char* buffer, std::size_t capacity, std::string_view format,
                         std::span<const CNativeArgument> arguments) {
    CNativeArguments list(arguments);
    return Run(locale, buffer, capacity, format, list);
}

} // namespace ruvo
