#include "model/cells/cell.h"

#include "base/text.h"
#include "model/cells/cell_values.h"
#include "model/format/display_layout.h"
#include "model/format/formatter.h"

#include <algorithm>
#include <array>

namespace ruvo {
namespace {

/// Where the format part begins: at the first "%" that is not doubled, or at a "[" right before it. A
/// conversion at the very start makes no format part; the template's length says so.
std::size_t FindFormatPart(std::string_view labelTemplate) {
    std::size_t at = labelTemplate.find('%');
    while (at != std::string_view::npos && labelTemplate.substr(at + 1, 1) == "%") {
        at = labelTemplate.find('%', at + 2);
    }
    if (at == std::string_view::npos) {
        return labelTemplate.size();
    }
    if (at > 0 && labelTemplate[at - 1] == '[') {
        --at;
    }
    return at > 0 ? at : labelTemplate.size();
}

/// Display control characters as far as they have a meaning on one line: those that move become blanks, those
/// that end a line go.
std::string CleanText(std::string_view text) {
    if (std::ranges::none_of(text, IsDisplayControl)) {
        return std::string(Trim(text, kBlank));
    }
    static constexpr std::string_view kBlanks = "\x09\x10\x19\x1D";
    static constexpr std::string_view kDropped = "\x0A\x0D\x14";
    std::string clean;
    clean.reserve(text.size());
    for (const char c : text) {
        if (!IsDisplayControl(c)) {
            clean += c;
        } else if (kBlanks.find(c) != std::string_view::npos) {
            clean += ' ';
        } else if (kDropped.find(c) == std::string_view::npos) {
            clean += '.';
        }
    }
    return std::string(Trim(clean, kBlank));
}

std::string Formatted(const CCell& cell, std::string_view format, EFormatMode mode) {
    std::string text;
    cell.Format(text, format, mode);
    return text;
}

} // namespace

std::string CCellID::GetText() const {
    std::array<char, 6> text;
    const std::size_t length =
        FormatText(nullptr, text.data(), text.size(), "%02X.%02X", m_column & 0xFFU, m_row & 0xFFU);
    return {text.data(), length};
}

CCell::CCell(ECellKind kind, SCellHead head)
    : m_kind(kind), m_head(std::move(head)), m_split(FindFormatPart(m_head.labelTemplate)) {}

std::string_view CCell::GetLabelPart() const {
    return std::string_view(m_head.labelTemplate).substr(0, m_split);
}

std::string_view CCell::GetFormatPart() const {
    return std::string_view(m_head.labelTemplate).substr(m_split);
}

std::string CCell::GetText() const {
    if (!HasFormat()) {
        return Formatted(*this, GetLabelPart(), EFormatMode::Label);
    }
    return GetLabelText() + " " + GetValueText();
}

std::string CCell::GetRawText() const {
    if (!HasFormat()) {
        return Formatted(*this, GetLabelPart(), EFormatMode::Value);
    }
    return Formatted(*this, GetLabelPart(), EFormatMode::Label) +
           Formatted(*this, GetFormatPart(), EFormatMode::Value);
}

std::string CCell::GetLabelText() const {
    return CleanText(Formatted(*this, GetLabelPart(), EFormatMode::Label));
}

std::string CCell::GetValueText() const {
    return CleanText(Formatted(*this, GetFormatPart(), EFormatMode::Value));
}

const CParlaneData* CCell::GetMinimum() const {
    return nullptr;
}

const CParlaneData* CCell::GetMaximum() const {
    return nullptr;
}

const CParlaneData* CCell::GetStep() const {
    return nullptr;
}

bool CCell::Validate(CErrorList& /*errors*/) {
    return true;
}

void FormatCellValue(std::string& output, std::string_view format, EFormatMode mode,
                     const CParlaneData& value, const SCellFormat& how) {
    std::array<char, kCellTextCapacity> buffer;
    const std::size_t capacity = std::min(how.capacity, buffer.size());
    bool success = true;
    std::size_t length = FormatValue(&how.locale, buffer.data(), capacity, format, &value, success);
    if (!success && mode == EFormatMode::Label) {
        output = format;
        return;
    }
    if (!success) {
        length = FormatValue(&how.locale, buffer.data(), capacity, how.defaultFormat, &value, success);
    }
    output.assign(buffer.data(), length);
}

void FormatCellText(std::string& output, std::string_view format, std::string_view text) {
    std::array<char, kCellTextCapacity> buffer;
    const std::size_t length = FormatText(&GetCurrentLocale(), buffer.data(), buffer.size(), format, text);
    output.assign(buffer.data(), length);
}

} // namespace ruvo
