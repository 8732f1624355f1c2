#include "model/cells/cell_checks.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace ruvo {
namespace {

bool BoundInteger(SIntegerCheck& check, CErrorList& errors) {
    const std::string value = std::to_string(check.value);
    if (check.value < check.minimum) {
        ReportCellError(errors, ECellMessage::ValueBelowMinimum, value, std::to_string(check.minimum));
        check.value = check.minimum;
        return false;
    }
    if (check.value > check.maximum) {
        ReportCellError(errors, ECellMessage::ValueAboveMaximum, value, std::to_string(check.maximum));
        check.value = check.maximum;
        return false;
    }
    return true;
}

bool BoundReal(SRealCheck& check, CErrorList& errors) {
    const std::string value = RealNumberText(check.value);
    if (check.value < check.minimum) {
        ReportCellError(errors, ECellMessage::ValueBelowMinimum, value, RealNumberText(check.minimum));
        check.value = check.minimum;
        return false;
    }
    if (check.value > check.maximum) {
        ReportCellError(errors, ECellMessage::ValueAboveMaximum, value, RealNumberText(check.maximum));
        check.value = check.maximum;
        return false;
    }
    return true;
}

bool AlignReal(SRealCheck& check, CErrorList& errors) {
    if (!(check.step > 0)) {
        return true;
    }
    // Decimal steps have no exact binary form: a quotient that is whole but for the rounding of value,
    // minimum and step is aligned. No rounding may excuse half a step. Where the quotient itself is no number
    // or too large to distinguish quarters, that is unknown.
    constexpr double kMostExcused = 0.25;
    constexpr double kQuotientError = 0x1p-50;
    const double steps = (check.value - check.minimum) / check.step;
    const double size = (std::fabs(check.value) + std::fabs(check.minimum)) / check.step;
    const double excused = std::min(2 * check.error * size, kMostExcused);
    if (!std::isfinite(steps) || kQuotientError * size > kMostExcused ||
        std::fabs(steps - std::round(steps)) <= excused) {
        return true;
    }
    // Where the value's type is too coarse for the step, a correction would be rounded off its place.
    const double corrected = check.minimum + check.step * std::floor(steps);
    if (check.error * std::fabs(corrected) / check.step > kMostExcused) {
        return true;
    }
    ReportCellError(errors, ECellMessage::ValueNotAligned, RealNumberText(check.value),
                    RealNumberText(check.step), RealNumberText(check.minimum));
    check.value = corrected;
    return false;
}

} // namespace

bool ReportCellError(CErrorList& errors, ECellMessage message, std::string argument1, std::string argument2,
                     std::string argument3) {
    AddError(errors, std::make_unique<CCellError>(static_cast<unsigned>(message), std::move(argument1),
                                                  std::move(argument2), std::move(argument3)));
    return false;
}

std::string HexNumberText(std::uint32_t number) {
    constexpr std::size_t kDigits = 8;
    std::array<char, kDigits> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, 16);
    const std::string text(digits.data(), end.ptr);
    return "0x" + std::string(kDigits - text.size(), '0') + text;
}

std::string RealNumberText(double number) {
    std::array<char, 330> text; // the largest double has 309 digits before the point
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed, 6);
    return {text.data(), end.ptr};
}

bool CheckIntegers(SIntegerCheck& check, CErrorList& errors) {
    bool sound = true;
    const std::int64_t span = check.maximum - check.minimum;
    if (span < 0) {
        sound = ReportCellError(errors, ECellMessage::MaximumBelowMinimum, std::to_string(check.maximum),
                                std::to_string(check.minimum));
        check.maximum = check.minimum;
    } else if (check.step > 0 && span % check.step != 0) {
        sound = ReportCellError(errors, ECellMessage::MaximumNotAligned, std::to_string(check.maximum),
                                std::to_string(check.step), std::to_string(check.minimum));
        check.maximum -= span % check.step;
    }
    if (!BoundInteger(check, errors)) {
        return false;
    }
    const std::int64_t excess = check.step > 0 ? (check.value - check.minimum) % check.step : 0;
    if (excess != 0) {
        sound = ReportCellError(errors, ECellMessage::ValueNotAligned, std::to_string(check.value),
                                std::to_string(check.step), std::to_string(check.minimum));
        check.value -= excess;
    }
    return sound;
}

bool CheckReals(SRealCheck& check, CErrorList& errors) {
    bool sound = true;
    if (check.step < 0) {
        sound = ReportCellError(errors, ECellMessage::NegativeStep, RealNumberText(check.step));
    }
    if (check.maximum < check.minimum) {
        sound = ReportCellError(errors, ECellMessage::MaximumBelowMinimum, RealNumberText(check.maximum),
                                RealNumberText(check.minimum));
        check.maximum = check.minimum;
    }
    return BoundReal(check, errors) && AlignReal(check, errors) && sound;
}

} // namespace ruvo
