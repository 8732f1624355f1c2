// What the cell kinds share: an embedded value, limits of another class, cloning and formatting.
#pragma once

#include "model/cells/cell.h"
#include "model/format/locale_record.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace ruvo {

/// Limits as a cell is given them: borrowed, any of them null.
struct SCellLimits {
    const CParlaneData* minimum = nullptr;
    const CParlaneData* maximum = nullptr;
    const CParlaneData* step = nullptr;
};

/// A copy of the value where it is of the wanted class.
template <class TValue>
std::optional<TValue> CopyAs(const CParlaneData* value) {
    const auto* typed = dynamic_cast<const TValue*>(value);
    return typed != nullptr ? std::optional<TValue>(*typed) : std::nullopt;
}

/// The embedded value if there is one.
template <class TValue>
const CParlaneData* AddressOf(const std::optional<TValue>& value) {
    return value ? &*value : nullptr;
}

/// Capacity of a cell's text, and of a time's.
inline constexpr std::size_t kCellTextCapacity = 256;
inline constexpr std::size_t kTimeTextCapacity = 50;

/// How a cell's value is formatted.
struct SCellFormat {
    std::string_view defaultFormat;
    const SLocale& locale;
    std::size_t capacity; ///< at most kCellTextCapacity
};

/// The value through a format text, with the fallback that EFormatMode describes.
void FormatCellValue(std::string& output, std::string_view format, EFormatMode mode,
                     const CParlaneData& value, const SCellFormat& how);

/// A text through a format text.
void FormatCellText(std::string& output, std::string_view format, std::string_view text);

/// The other cell where it is of the same kind as the one that asks; null where it is not.
template <class TCell>
const TCell* SameKind(const TCell& cell, const CCell& other) {
    return other.GetKind() == cell.GetKind() ? static_cast<const TCell*>(&other) : nullptr;
}

/// A cell with an embedded value. TSelf is the kind itself and has the constant kDefaultFormat.
template <class TSelf, ECellKind kKind, class TValue, class TBase = CCell>
class CValueCell : public TBase {
public:
    CValueCell(SCellHead head, const TValue& value) : TBase(kKind, std::move(head)), m_value(value) {}

    [[nodiscard]] const CParlaneData* GetValue() const override { return &m_value; }
    [[nodiscard]] CParlaneData* GetValue() override { return &m_value; }
    [[nodiscard]] std::unique_ptr<CCell> Clone() const override {
        return std::make_unique<TSelf>(static_cast<const TSelf&>(*this));
    }
    void Format(std::string& output, std::string_view format, EFormatMode mode) const override {
        FormatCellValue(output, format, mode, m_value,
                        {TSelf::kDefaultFormat, GetCurrentLocale(), kCellTextCapacity});
    }

    /// The value as what it is.
    [[nodiscard]] const TValue& GetTypedValue() const { return m_value; }

protected:
    TValue m_value;
};

/// A cell with limits, which are held as values of class TLimit; a limit of any other class is no limit.
template <class TSelf, ECellKind kKind, class TValue, class TLimit, class TBase = CCell>
class CLimitedCell : public CValueCell<TSelf, kKind, TValue, TBase> {
public:
    CLimitedCell(SCellHead head, const TValue& value, const SCellLimits& limits)
        : CValueCell<TSelf, kKind, TValue, TBase>(std::move(head), value),
          m_minimum(CopyAs<TLimit>(limits.minimum)), m_maximum(CopyAs<TLimit>(limits.maximum)),
          m_step(CopyAs<TLimit>(limits.step)) {}

    [[nodiscard]] const CParlaneData* GetMinimum() const override { return AddressOf(m_minimum); }
    [[nodiscard]] const CParlaneData* GetMaximum() const override { return AddressOf(m_maximum); }
    [[nodiscard]] const CParlaneData* GetStep() const override { return AddressOf(m_step); }

protected:
    /// A cell is checked only where its type has all three limits.
    [[nodiscard]] bool HasLimits() const { return m_minimum && m_maximum && m_step; }

    std::optional<TLimit> m_minimum;
    std::optional<TLimit> m_maximum;
    std::optional<TLimit> m_step;
};

} // namespace ruvo
