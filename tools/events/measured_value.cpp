#include "tools/events/measured_value.h"

#include "base/text.h"
#include "model/values/parlane_integers.h"
#include "model/values/parlane_number.h"
#include "tools/events/event_fields.h"
#include "tools/events/event_values.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

namespace ruvo {

namespace {

/// The digits that a long number has on the wire; more would be noise of its conversion.
constexpr int kDigitsOfNumber = 9;
constexpr std::size_t kLongestUnit = 8;

std::string DigitsOf(double number, int precision) {
    std::array<char, 40> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number,
                                   std::chars_format::general, precision)
                         .ptr;
    return std::isfinite(number) ? std::string(digits.data(), end) : std::string();
}

/// What follows the number in a text such as "152 A", where it can be a unit.
std::string UnitInText(std::string_view text) {
    const std::size_t end = text.find_first_not_of("+-.0123456789");
    if (end == 0 || end == std::string_view::npos) {
        return {};
    }
    const std::string_view rest = Trim(text.substr(end), kBlank);
    const bool beginsSo = !rest.empty() && (IsLetter(rest.front()) || rest.front() == '%' ||
                                            static_cast<unsigned char>(rest.front()) >= 0x80);
    const bool isUnit = beginsSo && rest.size() <= kLongestUnit && rest.find(' ') == std::string_view::npos;
    return isUnit ? std::string(rest) : std::string();
}

void SetNumber(SMeasuredValue& measured, const CParlaneData& value) {
    constexpr int kDigitsOfFloat = 7;
    switch (value.GetTypeCode()) {
    case kTypeUint:
        measured.number = std::to_string(value.GetUnsigned());
        break;
    case kTypeInt:
        measured.number = std::to_string(static_cast<const CParlaneInt&>(value).GetValue());
        break;
    case kTypeFloat:
        measured.number = DigitsOf(value.GetFloat(), kDigitsOfFloat);
        break;
    case kTypeShortNumber:
    case kTypeLongNumber:
        measured.number = DigitsOf(value.GetFloat(), kDigitsOfNumber);
        measured.unit = GetUnitName(static_cast<const CParlaneNumber&>(value).GetUnit());
        return; // the text may show another unit, such as kA
    default:
        return;
    }
    measured.unit = UnitInText(measured.text);
}

} // namespace

SMeasuredValue MeasuredValueOf(const CEventRecord& record) {
    SMeasuredValue measured;
    const CCell* const cell = ValueCell(record);
    const CParlaneData* const value = cell != nullptr ? cell->GetValue() : record.GetEventValue();
    if (!IsValue(value)) {
        return measured;
    }
    measured.text = Trim(EventValueText(record), kBlank);
    if (cell != nullptr) {
        measured.set = SetBitsText(*cell);
    }
    SetNumber(measured, *value);
    return measured;
}

} // namespace ruvo
