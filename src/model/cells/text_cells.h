// Cells of texts. Their limits are character codes of the relay's own character set.
#pragma once

#include "model/cells/cell_values.h"
#include "model/values/parlane_integers.h"
#include "model/values/parlane_text.h"

#include <string>

namespace ruvo {

class CStringCell : public CCell {
public:
    /// The text without trailing blanks.
    [[nodiscard]] virtual std::string GetTextValue() const = 0;
    /// The limits as numbers; 0, 255 and 1 where there is none.
    [[nodiscard]] virtual std::uint32_t GetMinimumCode() const;
    [[nodiscard]] virtual std::uint32_t GetMaximumCode() const;
    [[nodiscard]] virtual std::uint32_t GetStepCode() const;
    /// The value's size in bytes when the cell was made.
    [[nodiscard]] virtual std::size_t GetFixedLength() const = 0;
    /// Whether the character's device code lies between minimum and maximum.
    [[nodiscard]] virtual bool IsCharAllowed(char character) const;
    [[nodiscard]] virtual bool IsTextAllowed(std::string_view text) const;
    /// Stores the text cut, or padded with blanks, to the fixed length.
    virtual void SetTextValue(std::string_view text) = 0;

    /// The other cell's text must be allowed.
    [[nodiscard]] bool IsCompatible(const CCell& other) const override;

protected:
    using CCell::CCell;
};

/// What a text kind's value holds, as text, and how text gets into it.
std::string CellText(const CParlaneText& value);
std::string CellText(const CParlanePassword& value);
std::string CellText(const CParlaneHex& value);
std::string CellText(const CParlaneEncryptedPassword& value);
void StoreCellText(CParlaneText& value, std::string text, std::size_t fixedLength);
void StoreCellText(CParlanePassword& value, std::string text, std::size_t fixedLength);
/// Two digits per byte; missing digits are "0".
void StoreCellText(CParlaneHex& value, std::string text, std::size_t fixedLength);
/// The text's characters are the enciphered bytes.
void StoreCellText(CParlaneEncryptedPassword& value, std::string text, std::size_t fixedLength);

/// The text without the blanks at its end.
std::string WithoutTrailingBlanks(std::string text);

template <class TSelf, ECellKind kKind, class TValue>
class CStringCellOf : public CLimitedCell<TSelf, kKind, TValue, CParlaneUint, CStringCell> {
public:
    static constexpr std::string_view kDefaultFormat = "%s";

    CStringCellOf(SCellHead head, const TValue& value, const SCellLimits& limits)
        : CLimitedCell<TSelf, kKind, TValue, CParlaneUint, CStringCell>(std::move(head), value, limits),
          m_fixedLength(value.GetSize()) {}

    [[nodiscard]] std::string GetTextValue() const override {
        return WithoutTrailingBlanks(CellText(this->m_value));
    }
    [[nodiscard]] std::size_t GetFixedLength() const override { return m_fixedLength; }
    void SetTextValue(std::string_view text) override {
        StoreCellText(this->m_value, std::string(text), m_fixedLength);
    }

private:
    std::size_t m_fixedLength;
};

class CTextCell final : public CStringCellOf<CTextCell, ECellKind::Text, CParlaneText> {
public:
    using CStringCellOf::CStringCellOf;

    bool Validate(CErrorList& errors) override;
    /// A copy with every character brought into the range.
    [[nodiscard]] virtual std::string ClampText(std::string_view text) const;
};

class CPasswordCell final : public CStringCellOf<CPasswordCell, ECellKind::Password, CParlanePassword> {
public:
    using CStringCellOf::CStringCellOf;
};

class CHexCell final : public CStringCellOf<CHexCell, ECellKind::Hex, CParlaneHex> {
public:
    using CStringCellOf::CStringCellOf;
};

class CEncryptedPasswordCell final
    : public CStringCellOf<CEncryptedPasswordCell, ECellKind::EncryptedPassword, CParlaneEncryptedPassword> {
public:
    using CStringCellOf::CStringCellOf;
};

} // namespace ruvo
