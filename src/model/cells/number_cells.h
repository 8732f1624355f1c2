// Cells of numbers with a fraction.
#pragma once

#include "model/cells/cell_values.h"
#include "model/values/parlane_integers.h"
#include "model/values/parlane_number.h"

namespace ruvo {

class CNumericCell final
    : public CLimitedCell<CNumericCell, ECellKind::Numeric, CParlaneNumber, CParlaneNumber> {
public:
    static constexpr std::string_view kDefaultFormat = "%k";

    using CLimitedCell::CLimitedCell;
    /// Value and limits (Int values, or null) each times the scale, in the scale's unit and form.
    CNumericCell(SCellHead head, const CParlaneInt& value, const SCellLimits& limits,
                 const CParlaneNumber& scale);

    [[nodiscard]] bool IsCompatible(const CCell& other) const override;
    bool Validate(CErrorList& errors) override;
    /// The limits as numbers; 0 where there is none.
    [[nodiscard]] virtual double GetMinimumNumber() const;
    [[nodiscard]] virtual double GetMaximumNumber() const;
};

class CFloatCell final : public CLimitedCell<CFloatCell, ECellKind::Float, CParlaneFloat, CParlaneFloat> {
public:
    static constexpr std::string_view kDefaultFormat = "%f";

    using CLimitedCell::CLimitedCell;

    [[nodiscard]] bool IsCompatible(const CCell& other) const override;
    bool Validate(CErrorList& errors) override;
};

} // namespace ruvo
