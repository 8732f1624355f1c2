#include "model/format/format_conversions.h"

#include "model/format/format_digits.h"
#include "model/values/units.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace ruvo {
namespace {

constexpr int kDefaultDigits = 4;
constexpr int kLongDigits = 9;

/// SI prefixes of the exponents -18, -15, ... 18.
constexpr std::string_view kPrefixes = "afpnum kMGTPE";
constexpr int kMaxPrefixExponent = 18;

/// Infinities and NaN have neither digits nor a unit.
bool WriteSpecial(const SFormatContext& context, const SConversion& conversion, double value) {
    if (std::isfinite(value)) {
        return false;
    }
    CFieldText field;
    if (std::isnan(value)) {
        field.AddText("NaN");
    } else {
        field.AddText(value < 0 ? "-Inf" : "Inf");
    }
    field.Write(context.output, conversion);
    return true;
}

/// The digits of `count` powers of ten downwards from `power`; those that the number does not have are zeros.
void AddPlaces(CFieldText& field, const CDecimalDigits& digits, int power, int count) {
    const std::string_view all = digits.GetDigits();
    const int leading = std::clamp(power - digits.GetExponent(), 0, std::max(count, 0));
    const int first = std::max(digits.GetExponent() - power, 0);
    const int given = std::clamp(static_cast<int>(all.size()) - first, 0, std::max(count - leading, 0));
    field.AddFill('0', leading);
    if (given > 0) {
        field.AddText(all.substr(static_cast<std::size_t>(first), static_cast<std::size_t>(given)));
    }
    field.AddFill('0', count - leading - given);
}

/// How a number of so many significant digits is laid out.
struct SSignificant {
    int digits;      ///< at least 1
    bool fixed;      ///< else engineering form
    int exponent;    ///< power of three of the engineering form, 0 in fixed form
    int wholeDigits; ///< before the point, filled with zeros where there are more than digits
    bool point;
};

/// Rounds the digits and lays them out. The form follows from the exponent before rounding, except that a
/// carry which fills all digits with whole ones needs the engineering form.
SSignificant LayOut(CDecimalDigits& digits, int precision) {
    SSignificant layout{
        .digits = std::max(precision, 1), .fixed = false, .exponent = 0, .wholeDigits = 0, .point = false};
    const bool small = digits.GetExponent() >= -1 && digits.GetExponent() < layout.digits;
    digits.Round(layout.digits);
    const int exponent = digits.GetExponent();
    layout.fixed = small && exponent < layout.digits;
    if (!layout.fixed) {
        layout.exponent = (exponent >= 0 ? exponent / 3 : (exponent - 2) / 3) * 3;
    }
    layout.wholeDigits = exponent - layout.exponent + 1;
    layout.point = layout.wholeDigits < layout.digits;
    return layout;
}

void AddSignificant(CFieldText& field, const CDecimalDigits& digits, const SSignificant& layout,
                    const char& point) {
    AddPlaces(field, digits, digits.GetExponent(), layout.wholeDigits);
    if (layout.point) {
        field.AddText({&point, 1});
        AddPlaces(field, digits, digits.GetExponent() - layout.wholeDigits,
                  layout.digits - layout.wholeDigits);
    }
}

/// "e", sign and digits of the exponent of an engineering form.
std::string ExponentText(const SSignificant& layout) {
    return layout.fixed ? std::string() : "e" + std::to_string(layout.exponent);
}

/// What follows the digits of a number: an SI prefix where the unit takes one, else the exponent.
std::string_view Scale(const SSignificant& layout, bool takesPrefix, std::string_view exponent) {
    if (takesPrefix && std::abs(layout.exponent) <= kMaxPrefixExponent) {
        return kPrefixes.substr(static_cast<std::size_t>((layout.exponent + kMaxPrefixExponent) / 3), 1);
    }
    return layout.exponent != 0 ? exponent : std::string_view();
}

void WriteNonZeroNumber(const SFormatContext& context, const SConversion& conversion, CDecimalDigits& digits,
                        int precision, std::uint8_t unit) {
    const SSignificant layout = LayOut(digits, precision);
    const std::string exponent = ExponentText(layout);
    CFieldText field;
    field.AddFill(' ', layout.point ? 0 : 1); // takes the place of the point, so that columns line up
    const std::string_view sign = conversion.GetSign(digits.IsNegative());
    field.AddText(sign.empty() ? " " : sign);
    field.SetZeroPlace();
    AddSignificant(field, digits, layout, context.locale.decimalPoint);
    field.AddText(Scale(layout, UnitTakesPrefix(unit), exponent));
    field.AddText(GetUnitName(unit));
    field.Write(context.output, conversion);
}

} // namespace

void ConvertFixed(const SFormatContext& context, const SConversion& conversion) {
    const double value = context.arguments.TakeFloat();
    if (WriteSpecial(context, conversion, value)) {
        return;
    }
    CDecimalDigits digits(value);
    int places = conversion.precision == SConversion::kNoPrecision ? context.locale.floatPrecision
                                                                   : conversion.precision;
    // More digits before the point leave fewer after it, but never fewer than half.
    places -= std::clamp(digits.GetExponent(), 0, places / 2);
    digits.Round(digits.GetExponent() + 1 + places);
    CFieldText field;
    field.AddText(conversion.GetSign(digits.IsNegative()));
    field.SetZeroPlace();
    const int whole = std::max(digits.GetExponent(), 0);
    AddPlaces(field, digits, whole, whole + 1);
    field.AddText({&context.locale.decimalPoint, 1});
    AddPlaces(field, digits, -1, places);
    field.Write(context.output, conversion);
}

void ConvertFloat(const SFormatContext& context, const SConversion& conversion) {
    const double value = context.arguments.TakeFloat();
    if (WriteSpecial(context, conversion, value)) {
        return;
    }
    CDecimalDigits digits(value);
    const SSignificant layout = LayOut(
        digits, conversion.precision == SConversion::kNoPrecision ? kDefaultDigits : conversion.precision);
    const std::string exponent = ExponentText(layout);
    CFieldText field;
    field.AddText(conversion.GetSign(digits.IsNegative()));
    field.SetZeroPlace();
    AddSignificant(field, digits, layout, context.locale.decimalPoint);
    field.AddText(exponent);
    field.Write(context.output, conversion);
}

void ConvertNumber(const SFormatContext& context, const SConversion& conversion) {
    SFormatNumber number;
    const bool usable = context.arguments.TakeNumber(number);
    if (WriteSpecial(context, conversion, number.value)) {
        return;
    }
    int precision = conversion.size == 'l' ? kLongDigits : kDefaultDigits;
    if (conversion.precision != SConversion::kNoPrecision) {
        precision = std::max(conversion.precision, 1);
    }
    CDecimalDigits digits(number.value);
    if (!digits.IsZero()) {
        WriteNonZeroNumber(context, conversion, digits, precision, number.unit);
        return;
    }
    CFieldText field;
    field.AddFill(' ', precision + 1);
    field.AddText("0");
    if (usable) {
        field.AddText(UnitTakesPrefix(number.unit) ? " " : "");
        field.AddText(GetUnitName(number.unit));
    }
    field.Write(context.output, conversion);
}

} // namespace ruvo
