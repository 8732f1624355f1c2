#include "model/format/format_conversions.h"

#include <array>
#include <charconv>

namespace ruvo {
namespace {

/// Room for the digits of one integer in any base.
constexpr std::size_t kDigitRoom = 60;

constexpr int BaseOf(char letter) {
    switch (letter) {
    case 'x':
    case 'X':
        return 16;
    case 'b':
        return 2;
    default:
        return 10;
    }
}

/// Prefix (sign or "0X"), zeros up to the precision, digits. A precision rules out padding with zeros.
void WriteInteger(const SFormatContext& context, const SConversion& conversion, std::string_view prefix,
                  std::uint32_t magnitude) {
    std::array<char, kDigitRoom> room;
    const auto end =
        std::to_chars(room.data(), room.data() + room.size(), magnitude, BaseOf(conversion.letter));
    const std::size_t count = static_cast<std::size_t>(end.ptr - room.data());
    for (std::size_t i = 0; i < count; ++i) {
        if (room[i] >= 'a') {
            room[i] = static_cast<char>(room[i] - 'a' + 'A');
        }
    }
    CFieldText field;
    field.AddText(prefix);
    if (conversion.precision == SConversion::kNoPrecision) {
        field.SetZeroPlace();
    }
    field.AddFill('0', conversion.precision - static_cast<int>(count));
    field.AddText({room.data(), count});
    field.Write(context.output, conversion);
}

} // namespace

void ConvertSigned(const SFormatContext& context, const SConversion& conversion) {
    std::int64_t value = context.arguments.TakeSigned();
    if (conversion.size == 'h') {
        value = static_cast<std::int16_t>(value & 0xFFFF);
    }
    const auto magnitude = static_cast<std::uint32_t>(value < 0 ? -value : value);
    WriteInteger(context, conversion, conversion.GetSign(value < 0), magnitude);
}

void ConvertUnsigned(const SFormatContext& context, const SConversion& conversion) {
    std::uint32_t value = context.arguments.TakeUnsigned();
    if (conversion.size == 'h') {
        value &= 0xFFFFU;
    }
    const bool prefixed = conversion.sharp && value != 0 && BaseOf(conversion.letter) == 16;
    WriteInteger(context, conversion, prefixed ? "0X" : "", value);
}

void ConvertChar(const SFormatContext& context, const SConversion& conversion) {
    const auto character = static_cast<char>(context.arguments.TakeUnsigned() & 0xFFU);
    CFieldText field;
    field.AddText({&character, 1});
    field.Write(context.output, conversion);
}

} // namespace ruvo
