#include "model/cells/other_cells.h"

#include "model/cells/cell_checks.h"
#include "model/format/formatter.h"

namespace ruvo {
namespace {

/// Printable characters of the code page: no control characters and not the five bytes without a character.
bool IsPrintable(unsigned char c) {
    static constexpr std::string_view kNoCharacter = "\x7F\x81\x8D\x8F\x90\x9D";
    return c >= ' ' && kNoCharacter.find(static_cast<char>(c)) == std::string_view::npos;
}

} // namespace

bool CDateTimeCell::IsCompatible(const CCell& other) const {
    return SameKind(*this, other) != nullptr;
}

void CDateTimeCell::Format(std::string& output, std::string_view format, EFormatMode mode) const {
    FormatCellValue(output, format, mode, m_value,
                    {kDefaultFormat, GetLocale(m_localeIndex), kTimeTextCapacity});
}

std::string CDateTimeCell::LongTimeText() const {
    std::array<char, kTimeTextCapacity> buffer;
    const std::size_t length =
        FormatText(&GetLocale(m_localeIndex), buffer.data(), buffer.size(), "%lt", m_value);
    return {buffer.data(), length};
}

bool CDateTimeCell::Validate(CErrorList& errors) {
    if (!m_step) {
        return true;
    }
    if (const unsigned step = m_step->GetMilliseconds(); step != 0) {
        return CheckMilliseconds(step, errors);
    }
    if (const unsigned step = m_step->GetMinute(); step != 0) {
        return CheckMinutes(step, errors);
    }
    if (const unsigned step = m_step->GetHour(); step != 0) {
        return CheckHours(step, errors);
    }
    return CheckDay(errors);
}

bool CDateTimeCell::CheckMilliseconds(unsigned step, CErrorList& errors) {
    const unsigned excess = m_value.GetMilliseconds() % step;
    if (excess == 0) {
        return true;
    }
    ReportCellError(errors, ECellMessage::MillisecondsNotAligned, LongTimeText(), std::to_string(step));
    m_value.SetMilliseconds(m_value.GetMilliseconds() - excess);
    return false;
}

bool CDateTimeCell::CheckMinutes(unsigned step, CErrorList& errors) {
    const unsigned excess = m_value.GetMinute() % step;
    if (excess == 0 && m_value.GetMilliseconds() == 0) {
        return true;
    }
    ReportCellError(errors, ECellMessage::MinutesNotAligned, LongTimeText(), std::to_string(step));
    m_value.SetMinute(m_value.GetMinute() - excess);
    m_value.SetMilliseconds(0);
    return false;
}

bool CDateTimeCell::CheckHours(unsigned step, CErrorList& errors) {
    const unsigned excess = m_value.GetHour() % step;
    if (excess == 0 && m_value.GetMinute() == 0 && m_value.GetMilliseconds() == 0) {
        return true;
    }
    ReportCellError(errors, ECellMessage::HoursNotAligned, LongTimeText(), std::to_string(step));
    m_value.SetHour(m_value.GetHour() - excess);
    m_value.SetMinute(0);
    m_value.SetMilliseconds(0);
    return false;
}

bool CDateTimeCell::CheckDay(CErrorList& errors) {
    if (m_value.GetHour() == 0 && m_value.GetMinute() == 0 && m_value.GetMilliseconds() == 0) {
        return true;
    }
    ReportCellError(errors, ECellMessage::DayNotAligned, LongTimeText());
    m_value.SetHour(0);
    m_value.SetMinute(0);
    m_value.SetMilliseconds(0);
    return false;
}

bool CMenuCell::IsCompatible(const CCell& other) const {
    return SameKind(*this, other) != nullptr;
}

bool CModemCell::IsCompatible(const CCell& other) const {
    return SameKind(*this, other) != nullptr;
}

void CModemCell::Format(std::string& output, std::string_view format, EFormatMode /*mode*/) const {
    std::string text(m_value.GetBytes().begin(), m_value.GetBytes().end());
    for (char& c : text) {
        c = IsPrintable(static_cast<unsigned char>(c)) ? c : '.';
    }
    FormatCellText(output, format, text);
}

CHeadingCell::CHeadingCell(SCellHead head) : CCell(ECellKind::Heading, std::move(head)) {
    ClearLimitsApply();
}

bool CHeadingCell::IsCompatible(const CCell& other) const {
    return SameKind(*this, other) != nullptr;
}

std::unique_ptr<CCell> CHeadingCell::Clone() const {
    return std::make_unique<CHeadingCell>(*this);
}

void CHeadingCell::Format(std::string& output, std::string_view format, EFormatMode mode) const {
    output.clear();
    if (mode == EFormatMode::Label) {
        std::array<char, kCellTextCapacity> buffer;
        const std::size_t length = FormatText(&GetCurrentLocale(), buffer.data(), buffer.size(), format);
        output.assign(buffer.data(), length);
    }
}

} // namespace ruvo
