// Cells of times, menu locations and modem dial codes, and headings without a value.
#pragma once

#include "model/cells/cell_values.h"
#include "model/values/parlane_location.h"
#include "model/values/parlane_text.h"
#include "model/values/parlane_time.h"

#include <optional>

namespace ruvo {

/// Has a step alone, whose fields give the interval.
class CDateTimeCell final : public CValueCell<CDateTimeCell, ECellKind::DateTime, CParlaneIEC870> {
public:
    static constexpr std::string_view kDefaultFormat = "%t";

    CDateTimeCell(SCellHead head, const CParlaneIEC870& value, const SCellLimits& limits,
                  std::size_t localeIndex = 0)
        : CValueCell(std::move(head), value), m_step(CopyAs<CParlaneIEC870>(limits.step)),
          m_localeIndex(localeIndex) {}

    [[nodiscard]] bool IsCompatible(const CCell& other) const override;
    [[nodiscard]] const CParlaneData* GetStep() const override { return AddressOf(m_step); }
    bool Validate(CErrorList& errors) override;
    /// In the cell's own language, at most 49 characters.
    void Format(std::string& output, std::string_view format, EFormatMode mode) const override;

    [[nodiscard]] std::size_t GetLocaleIndex() const { return m_localeIndex; }

private:
    [[nodiscard]] std::string LongTimeText() const;
    bool CheckMilliseconds(unsigned step, CErrorList& errors);
    bool CheckMinutes(unsigned step, CErrorList& errors);
    bool CheckHours(unsigned step, CErrorList& errors);
    bool CheckDay(CErrorList& errors);

    std::optional<CParlaneIEC870> m_step;
    std::size_t m_localeIndex;
};

class CMenuCell final : public CValueCell<CMenuCell, ECellKind::Menu, CParlaneMenu> {
public:
    static constexpr std::string_view kDefaultFormat = "%lu";

    CMenuCell(SCellHead head, const CParlaneMenu& value, const SCellLimits& /*none*/)
        : CValueCell(std::move(head), value) {}

    [[nodiscard]] bool IsCompatible(const CCell& other) const override;
};

class CModemCell final : public CValueCell<CModemCell, ECellKind::Modem, CParlaneModem> {
public:
    static constexpr std::string_view kDefaultFormat = "%s";

    CModemCell(SCellHead head, const CParlaneModem& value, const SCellLimits& /*none*/)
        : CValueCell(std::move(head), value) {}

    [[nodiscard]] bool IsCompatible(const CCell& other) const override;
    /// The dial codes as text; bytes that are not printable are ".".
    void Format(std::string& output, std::string_view format, EFormatMode mode) const override;
};

/// A label without a value.
class CHeadingCell final : public CCell {
public:
    /// The limits-apply flag is always 0.
    explicit CHeadingCell(SCellHead head);

    [[nodiscard]] bool IsCompatible(const CCell& other) const override;
    [[nodiscard]] const CParlaneData* GetValue() const override { return nullptr; }
    [[nodiscard]] CParlaneData* GetValue() override { return nullptr; }
    [[nodiscard]] std::unique_ptr<CCell> Clone() const override;
    /// As a label the text itself, as a value nothing.
    void Format(std::string& output, std::string_view format, EFormatMode mode) const override;
};

} // namespace ruvo
