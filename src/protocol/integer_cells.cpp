#include "protocol/integer_cells.h"

#include "protocol/cell_checks.h"

namespace ruvo {
namespace {

bool IsWithin(std::int64_t value, const std::optional<CParlaneUint>& minimum,
              const std::optional<CParlaneUint>& maximum) {
    return !minimum || !maximum || (minimum->GetValue() <= value && value <= maximum->GetValue());
}

} // namespace

bool CUIntCell::IsCompatible(const CCell& other) const {
    const CUIntCell* cell = SameKind(*this, other);
    return cell != nullptr && (!LimitsApply() || IsWithin(cell->m_value.GetValue(), m_minimum, m_maximum));
}

bool CUIntCell::Validate(CErrorList& errors) {
    if (!HasLimits()) {
        return true;
    }
    SIntegerCheck check{m_value.GetValue(), m_minimum->GetValue(), m_maximum->GetValue(), m_step->GetValue()};
    const bool sound = CheckIntegers(check, errors);
    m_value.SetValue(static_cast<std::uint32_t>(check.value));
    m_maximum->SetValue(static_cast<std::uint32_t>(check.maximum));
    return sound;
}

bool CIntCell::IsCompatible(const CCell& other) const {
    const CIntCell* cell = SameKind(*this, other);
    if (cell == nullptr || !LimitsApply() || !m_minimum || !m_maximum) {
        return cell != nullptr;
    }
    const std::int32_t value = cell->m_value.GetValue();
    return m_minimum->GetValue() <= value && value <= m_maximum->GetValue();
}

bool CIntCell::Validate(CErrorList& errors) {
    if (!HasLimits()) {
        return true;
    }
    SIntegerCheck check{m_value.GetValue(), m_minimum->GetValue(), m_maximum->GetValue(), m_step->GetValue()};
    const bool sound = CheckIntegers(check, errors);
    m_value.SetValue(static_cast<std::int32_t>(check.value));
    m_maximum->SetValue(static_cast<std::int32_t>(check.maximum));
    return sound;
}

bool CIndexedCell::IsCompatible(const CCell& other) const {
    const CIndexedCell* cell = SameKind(*this, other);
    return cell != nullptr && (!LimitsApply() || IsWithin(cell->m_value.GetIndex(), m_minimum, m_maximum));
}

bool CIndexedCell::Validate(CErrorList& errors) {
    if (!HasLimits()) {
        return true;
    }
    SIntegerCheck check{m_value.GetIndex(), m_minimum->GetValue(), m_maximum->GetValue(), m_step->GetValue()};
    const bool sound = CheckIntegers(check, errors);
    m_value.SetIndex(static_cast<std::uint16_t>(check.value));
    m_maximum->SetValue(static_cast<std::uint32_t>(check.maximum));
    return sound;
}

void CIndexedCell::Format(std::string& output, std::string_view format, EFormatMode /*mode*/) const {
    if (m_texts.empty()) {
        output.clear();
        return;
    }
    const std::string* text = GetSelectedText();
    FormatCellText(output, format, text != nullptr ? std::string_view(*text) : std::string_view(""));
}

const std::string* CIndexedCell::GetSelectedText() const {
    return m_value.GetIndex() < m_texts.size() ? &m_texts[m_value.GetIndex()] : nullptr;
}

bool CTimerCell::IsCompatible(const CCell& other) const {
    const CTimerCell* cell = SameKind(*this, other);
    return cell != nullptr && (!LimitsApply() || IsWithin(cell->m_value.GetValue(), m_minimum, m_maximum));
}

} // namespace ruvo
