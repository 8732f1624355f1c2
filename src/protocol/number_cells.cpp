#include "protocol/number_cells.h"

#include "protocol/cell_checks.h"

namespace ruvo {
namespace {

/// Steps of a decimal number are exact to its nine digits, those of a single to its seven.
constexpr double kNumberTolerance = 1e-9;
constexpr double kSingleTolerance = 1e-6;

CParlaneNumber Scaled(const CParlaneInt& value, const CParlaneNumber& scale) {
    CParlaneNumber number(scale);
    number.SetValue(value.GetValue() * scale.GetValue());
    return number;
}

std::optional<CParlaneNumber> ScaledLimit(const CParlaneData* limit, const CParlaneNumber& scale) {
    const std::optional<CParlaneInt> value = CopyAs<CParlaneInt>(limit);
    return value ? std::optional(Scaled(*value, scale)) : std::nullopt;
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
                     kNumberTolerance};
    const bool sound = CheckReals(check, errors);
    // Setting a number rounds its digits anew, so only what was corrected is set.
    if (check.value != m_value.GetValue()) {
        m_value.SetValue(check.value);
    }
    if (check.maximum != m_maximum->GetValue()) {
        m_maximum->SetValue(check.maximum);
    }
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
                     kSingleTolerance};
    const bool sound = CheckReals(check, errors);
    if (check.value != m_value.GetFloat()) {
        m_value.SetValue(static_cast<float>(check.value));
    }
    if (check.maximum != m_maximum->GetFloat()) {
        m_maximum->SetValue(static_cast<float>(check.maximum));
    }
    return sound;
}

} // namespace ruvo
