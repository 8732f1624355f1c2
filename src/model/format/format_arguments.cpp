#include "model/format/format_arguments.h"

#include "model/values/parlane_integers.h"
#include "model/values/parlane_location.h"
#include "model/values/parlane_number.h"
#include "model/values/parlane_text.h"
#include "model/values/value_as.h"

#include <algorithm>
#include <array>

namespace ruvo {
namespace {

constexpr std::string_view kNullText = "(null)";

/// The time stamp of seven zero bytes, which names no time.
constexpr CParlaneIEC870::Octets kZeroTime{};

/// The values that u, x, b and c take; false for any other.
bool GetUnsignedArgument(const CParlaneData* value, std::uint32_t& number) {
    if (const auto* timer = ValueAs<CParlaneTimer>(value)) {
        number = timer->GetValue();
        return true;
    }
    if (const auto* menu = ValueAs<CParlaneMenu>(value)) {
        number = menu->GetLocation();
        return true;
    }
    static constexpr std::array kTypes{kTypeFlags, kTypeUint, kTypeStringIndex, kTypeInt};
    if (value == nullptr || std::find(kTypes.begin(), kTypes.end(), value->GetTypeCode()) == kTypes.end()) {
        return false;
    }
    number = value->GetUnsigned();
    return true;
}

} // namespace

const CParlaneData* CValueArguments::Take() {
    const CParlaneData* value = nullptr;
    if (!m_values.empty()) {
        value = m_values.front();
        m_values = m_values.subspan(1);
    } else if (!m_list.empty()) {
        value = m_list.front().get();
        m_list = m_list.subspan(1);
    }
    return value;
}

template <class TValue>
const TValue* CValueArguments::TakeAs() {
    const auto* value = ValueAs<TValue>(Take());
    if (value == nullptr) {
        *m_success = false;
    }
    return value;
}

std::int32_t CValueArguments::TakeSigned() {
    const auto* value = TakeAs<CParlaneInt>();
    return value != nullptr ? value->GetValue() : 0;
}

std::uint32_t CValueArguments::TakeUnsigned() {
    const CParlaneData* value = Take();
    std::uint32_t number = 0;
    if (!GetUnsignedArgument(value, number)) {
        *m_success = false;
        return 0;
    }
    if (value->GetTypeCode() == kTypeInt && static_cast<std::int32_t>(number) < 0) {
        *m_success = false;
    }
    return number;
}

double CValueArguments::TakeFloat() {
    const auto* value = TakeAs<CParlaneFloat>();
    return value != nullptr ? value->GetFloat() : 0.0;
}

bool CValueArguments::TakeNumber(SFormatNumber& number) {
    const auto* value = TakeAs<CParlaneNumber>();
    if (value == nullptr) {
        return false;
    }
    number = {value->GetValue(), value->GetUnit()};
    return true;
}

SFormatText CValueArguments::TakeText() {
    const CParlaneData* value = Take();
    if (const auto* text = ValueAs<CParlaneText>(value)) {
        return {.text = text->GetText()};
    }
    if (const auto* password = ValueAs<CParlanePassword>(value)) {
        return {.text = {}, .stars = password->GetText().size()};
    }
    if (const auto* hex = ValueAs<CParlaneHex>(value)) {
        return {.text = hex->GetText()};
    }
    *m_success = false;
    return {};
}

CParlaneIEC870 CValueArguments::TakeTime() {
    const auto* value = TakeAs<CParlaneIEC870>();
    return value != nullptr ? *value : CParlaneIEC870(kZeroTime);
}

template <class TArgument>
const TArgument* CNativeArguments::TakeAs() {
    if (m_rest.empty()) {
        return nullptr;
    }
    const auto* argument = std::get_if<TArgument>(&m_rest.front());
    m_rest = m_rest.subspan(1);
    return argument;
}

std::uint32_t CNativeArguments::TakeUnsigned() {
    if (m_rest.empty() || std::holds_alternative<std::uint32_t>(m_rest.front())) {
        const auto* number = TakeAs<std::uint32_t>();
        return number != nullptr ? *number : 0;
    }
    const auto* number = TakeAs<std::int32_t>();
    return number != nullptr ? static_cast<std::uint32_t>(*number) : 0;
}

std::int32_t CNativeArguments::TakeSigned() {
    return static_cast<std::int32_t>(TakeUnsigned());
}

double CNativeArguments::TakeFloat() {
    const auto* number = TakeAs<double>();
    return number != nullptr ? *number : 0.0;
}

bool CNativeArguments::TakeNumber(SFormatNumber& number) {
    const auto* argument = TakeAs<SFormatNumber>();
    if (argument != nullptr) {
        number = *argument;
    }
    return argument != nullptr;
}

SFormatText CNativeArguments::TakeText() {
    const auto* text = TakeAs<std::string_view>();
    if (text == nullptr) {
        return {};
    }
    return {.text = text->data() == nullptr ? kNullText : *text};
}

CParlaneIEC870 CNativeArguments::TakeTime() {
    const auto* time = TakeAs<CParlaneIEC870>();
    return time != nullptr ? *time : CParlaneIEC870(kZeroTime);
}

} // namespace ruvo
