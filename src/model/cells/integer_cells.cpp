#include "model/cells/integer_cells.h"

#include "model/cells/cell_checks.h"

#include <algorithm>

namespace ruvo {
namespace {

bool IsWithin(std::int64_t value, const std::optional<CParlaneUint>& minimum,
              const std::optional<CParlaneUint>& maximum) {
    return !minimum || !maximum || (minimum->GetValue() <= value && value <= maximum->GetValue());
}

/// A corrected number as its value's wire size can hold it: a limit may be wider than the value. Anything
/// else is left as it is.
std::uint32_t Unsigned(std::int64_t corrected, std::uint32_t value, std::size_t size) {
    const std::int64_t greatest = (std::int64_t{1} << (8 * std::min<std::size_t>(size, 4))) - 1;
    return corrected == value ? value : static_cast<std::uint32_t>(std::min(corrected, greatest));
}

std::int32_t Signed(std::int64_t corrected, std::int32_t value, std::size_t size) {
    const std::int64_t half = std::int64_t{1} << (8 * std::clamp<std::size_t>(size, 1, 4) - 1);
    return corrected == value ? value : static_cast<std::int32_t>(std::clamp(corrected, -half, half - 1));
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
    m_value.SetValue(Unsigned(check.value, m_value.GetValue(), m_value.GetSize()));
    m_maximum->SetValue(Unsigned(check.maximum, m_maximum->GetValue(), m_maximum->GetSize()));
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
    m_value.SetValue(Signed(check.value, m_value.GetValue(), m_value.GetSize()));
    m_maximum->SetValue(Signed(check.maximum, m_maximum->GetValue(), m_maximum->GetSize()));
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
    const std::size_t size = std::min(m_value.GetSize(), sizeof(std::uint16_t));
    m_value.SetIndex(static_cast<std::uint16_t>(Unsigned(check.value, m_value.GetIndex(), size)));
    m_maximum->SetValue(Unsigned(check.maximum, m_maximum->GetValue(), m_maximum->GetSize()));
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
