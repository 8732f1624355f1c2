#include "model/cells/number_cells.h"

#include "model/cells/cell_checks.h"

#include <cmath>

namespace ruvo {
namespace {

/// A decimal number is the nearest double, or the product of two; a Float value the nearest single.
constexpr double kNumberError = 0x1p-51;
constexpr double kSingleError = 0x1p-24;

CParlaneNumber Scaled(const CParlaneInt& value, const CParlaneNumber& scale) {
    CParlaneNumber number(scale);
    number.SetValue(value.GetValue() * scale.GetValue());
    return number;
}

std::optional<CParlaneNumber> ScaledLimit(const CParlaneData* limit, const CParlaneNumber& scale) {
    const std::optional<CParlaneInt> value = CopyAs<CParlaneInt>(limit);
    return value ? std::optional(Scaled(*value, scale)) : std::nullopt;
}

/// Makes the number equal to a limit. Setting it would round its digits anew and might leave the limit
/// behind.
void TakeLimit(CParlaneNumber& number, const CParlaneNumber& limit) {
    if (number.GetForm() != limit.GetForm()) {
        number.SetValue(limit.GetValue());
        return;
    }
    const std::uint8_t unit = number.GetUnit();
    number = limit;
    number.SetUnit(unit);
}

void TakeLimit(CParlaneFloat& number, const CParlaneFloat& limit) {
    number = limit;
}

/// What is no number is never corrected, and so is the same as itself.
bool IsCorrected(double checked, double before) {
    return checked != before && !std::isnan(checked);
}

/// Carries over what a check corrected, and nothing else. A maximum is only ever corrected to the minimum.
template <class T, class TNative>
void TakeCorrections(const SRealCheck& check, const T& minimum, T& maximum, T& value) {
    if (IsCorrected(check.maximum, maximum.GetFloat())) {
        TakeLimit(maximum, minimum);
    }
    if (!IsCorrected(check.value, value.GetFloat())) {
        return;
    }
    if (check.value == check.minimum) {
        TakeLimit(value, minimum);
    } else if (check.value == check.maximum) {
        TakeLimit(value, maximum);
    } else {
        value.SetValue(static_cast<TNative>(check.value));
    }
}

} // namespace

CNumericCell::CNumericCell(SCellHead head, const CParlaneInt& value, const SCellLimits& limits,
                           const CParlaneNumber& scale)
    : CLimitedCell(std::move(head), Scaled(value, scale), SCellLimits{}) {
    m_minimum = ScaledLimit(limits.minimum, scale);
    m_maximum = ScaledLimit(limits.maximum, scale);
    m_step = ScaledLimit(limits.step, scale);
}

double CNumericCell::GetMinimumNumber() const {
    return m_minimum ? m_minimum->GetValue() : 0.0;
}

double CNumericCell::GetMaximumNumber() const {
    return m_maximum ? m_maximum->GetValue() : 0.0;
}

bool CNumericCell::IsCompatible(const CCell& other) const {
    const CNumericCell* cell = SameKind(*this, other);
    if (cell == nullptr || cell->m_value.GetUnit() != m_value.GetUnit()) {
        return false;
    }
    const double value = cell->m_value.GetValue();
    return !LimitsApply() || !m_minimum || !m_maximum ||
           (m_minimum->GetValue() <= value && value <= m_maximum->GetValue());
}

bool CNumericCell::Validate(CErrorList& errors) {
    if (!HasLimits()) {
        return true;
    }
    SRealCheck check{m_value.GetValue(), m_minimum->GetValue(), m_maximum->GetValue(), m_step->GetValue(),
                     kNumberError};
    const bool sound = CheckReals(check, errors);
    TakeCorrections<CParlaneNumber, double>(check, *m_minimum, *m_maximum, m_value);
    return sound;
}

bool CFloatCell::IsCompatible(const CCell& other) const {
    const CFloatCell* cell = SameKind(*this, other);
    if (cell == nullptr || !LimitsApply() || !m_minimum || !m_maximum) {
        return cell != nullptr;
    }
    const float value = cell->m_value.GetValue();
    return m_minimum->GetValue() <= value && value <= m_maximum->GetValue();
}

bool CFloatCell::Validate(CErrorList& errors) {
    if (!HasLimits()) {
        return true;
    }
    SRealCheck check{m_value.GetFloat(), m_minimum->GetFloat(), m_maximum->GetFloat(), m_step->GetFloat(),
                     kSingleError};
    const bool sound = CheckReals(check, errors);
    TakeCorrections<CParlaneFloat, float>(check, *m_minimum, *m_maximum, m_value);
    return sound;
}

} // namespace ruvo
