#include "model/cells/binary_cell.h"

#include "model/cells/cell_checks.h"
#include "model/status/string_table.h"

#include <algorithm>
#include <limits>

namespace ruvo {
namespace {

constexpr unsigned kBitCount = 32;
constexpr unsigned kOnTextId = 223;
constexpr unsigned kOffTextId = 224;

/// A new display line: two blanks, the state, the number in three places, the name.
void AppendBitLine(std::string& text, bool on, unsigned number, std::string_view name) {
    const std::string digits = std::to_string(number);
    text += "\x19  ";
    text += StringTextOrEmpty(on ? kOnTextId : kOffTextId);
    text += ' ';
    text.append(digits.size() < 3 ? 3 - digits.size() : 0, ' ');
    text += digits;
    text += "  ";
    text += name;
}

} // namespace

std::uint32_t CBinaryCell::GetMask() const {
    return m_minimum ? m_minimum->GetValue() : std::numeric_limits<std::uint32_t>::max();
}

bool CBinaryCell::IsCompatible(const CCell& other) const {
    const CBinaryCell* binary = SameKind(*this, other);
    return binary != nullptr && binary->m_value.GetSize() == m_value.GetSize() &&
           (!LimitsApply() || (binary->m_value.GetWord() & ~GetMask()) == 0);
}

bool CBinaryCell::Validate(CErrorList& errors) {
    if (!HasLimits()) {
        return true;
    }
    bool sound = true;
    if (m_step->GetValue() != 1) {
        sound = ReportCellError(errors, ECellMessage::StepNotOne, HexNumberText(m_step->GetValue()));
        m_step->SetValue(1);
    }
    const auto bits = static_cast<std::uint32_t>(8 * m_value.GetSize());
    if (m_maximum->GetValue() > bits) {
        sound = ReportCellError(errors, ECellMessage::TooManyBits, std::to_string(m_maximum->GetValue()),
                                std::to_string(bits));
        m_maximum->SetValue(bits);
    }
    const std::uint32_t word = m_value.GetWord();
    if ((word & ~GetMask()) != 0) {
        sound = ReportCellError(errors, ECellMessage::FixedBitsSet, HexNumberText(word),
                                HexNumberText(GetMask()));
        m_value.SetWord(word & GetMask());
    }
    return sound;
}

void CBinaryCell::GetBitListText(std::string& output, unsigned bitOffset) const {
    output = GetRawText();
    const auto named = static_cast<unsigned>(std::min<std::size_t>(m_bitNames.size(), kBitCount));
    for (unsigned bit = 0; bit < named; ++bit) {
        if ((GetMask() >> bit & 1U) != 0) {
            AppendBitLine(output, m_value.TestBit(bit), bit + bitOffset, m_bitNames[bit]);
        }
    }
}

} // namespace ruvo
