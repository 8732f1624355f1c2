// A cell of named bits.
#pragma once

#include "model/cells/cell_values.h"
#include "model/values/parlane_integers.h"

#include <string>
#include <vector>

namespace ruvo {

/// Its minimum is the mask of bits that may be set, its maximum the number of bits, its step 1.
class CBinaryCell final : public CLimitedCell<CBinaryCell, ECellKind::Binary, CParlaneFlags, CParlaneUint> {
public:
    static constexpr std::string_view kDefaultFormat = "%016.16b";

    using CLimitedCell::CLimitedCell;

    [[nodiscard]] bool IsCompatible(const CCell& other) const override;
    bool Validate(CErrorList& errors) override;
    /// The raw text, then for each named bit within the mask a display line with its state, its number plus
    /// bitOffset, and its name.
    virtual void GetBitListText(std::string& output, unsigned bitOffset) const;

    /// Names of the bits from bit 0 upwards.
    void SetBitNames(std::vector<std::string> names) { m_bitNames = std::move(names); }
    [[nodiscard]] const std::vector<std::string>& GetBitNames() const { return m_bitNames; }
    /// All bits where the cell has no limits.
    [[nodiscard]] std::uint32_t GetMask() const;

private:
    std::vector<std::string> m_bitNames;
};

} // namespace ruvo
