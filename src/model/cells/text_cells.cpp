#include "model/cells/text_cells.h"

#include "base/text.h"
#include "model/cells/cell_checks.h"
#include "model/values/character_set.h"

#include <algorithm>

namespace ruvo {

std::uint32_t CStringCell::GetMinimumCode() const {
    const CParlaneData* minimum = GetMinimum();
    return minimum != nullptr ? minimum->GetUnsigned() : 0;
}

std::uint32_t CStringCell::GetMaximumCode() const {
    const CParlaneData* maximum = GetMaximum();
    return maximum != nullptr ? maximum->GetUnsigned() : 0xFF;
}

std::uint32_t CStringCell::GetStepCode() const {
    const CParlaneData* step = GetStep();
    return step != nullptr ? step->GetUnsigned() : 1;
}

bool CStringCell::IsCharAllowed(char character) const {
    return IsDeviceCharInRange(character, GetMinimumCode(), GetMaximumCode());
}

bool CStringCell::IsTextAllowed(std::string_view text) const {
    return std::all_of(text.begin(), text.end(), [this](char c) { return IsCharAllowed(c); });
}

bool CStringCell::IsCompatible(const CCell& other) const {
    const CStringCell* cell = SameKind(*this, other);
    return cell != nullptr && (!LimitsApply() || IsTextAllowed(cell->GetTextValue()));
}

std::string WithoutTrailingBlanks(std::string text) {
    EraseTrailingBlanks(text);
    return text;
}

std::string CellText(const CParlaneText& value) {
    return value.GetText();
}

std::string CellText(const CParlanePassword& value) {
    return value.GetText();
}

std::string CellText(const CParlaneHex& value) {
    return value.GetText();
}

std::string CellText(const CParlaneEncryptedPassword& value) {
    return {value.GetBytes().begin(), value.GetBytes().end()};
}

void StoreCellText(CParlaneText& value, std::string text, std::size_t fixedLength) {
    text.resize(fixedLength, ' ');
    value.SetText(text);
}

void StoreCellText(CParlanePassword& value, std::string text, std::size_t fixedLength) {
    text.resize(fixedLength, ' ');
    value.SetText(text);
}

void StoreCellText(CParlaneHex& value, std::string text, std::size_t fixedLength) {
    text.resize(2 * fixedLength, '0');
    value.SetText(text);
}

void StoreCellText(CParlaneEncryptedPassword& value, std::string text, std::size_t fixedLength) {
    text.resize(fixedLength, ' ');
    const std::vector<std::uint8_t> bytes(text.begin(), text.end());
    value = CParlaneEncryptedPassword(bytes);
}

bool CTextCell::Validate(CErrorList& errors) {
    if (!HasLimits()) {
        return true;
    }
    bool sound = true;
    if (m_step->GetValue() != 1) {
        sound = ReportCellError(errors, ECellMessage::StepNotOne, std::to_string(m_step->GetValue()));
        m_step->SetValue(1);
    }
    if (m_maximum->GetValue() < m_minimum->GetValue()) {
        sound = ReportCellError(errors, ECellMessage::MaximumBelowMinimum,
                                std::to_string(m_maximum->GetValue()), std::to_string(m_minimum->GetValue()));
        m_maximum->SetValue(m_minimum->GetValue());
    }
    if (!IsTextAllowed(m_value.GetText())) {
        sound = ReportCellError(errors, ECellMessage::CharactersOutOfRange, m_value.GetText());
        m_value.SetText(ClampText(m_value.GetText()));
    }
    return sound;
}

std::string CTextCell::ClampText(std::string_view text) const {
    std::string clamped(text);
    for (char& c : clamped) {
        c = ClampDeviceChar(c, GetMinimumCode(), GetMaximumCode());
    }
    return clamped;
}

} // namespace ruvo
