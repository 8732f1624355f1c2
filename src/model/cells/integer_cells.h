// Cells of whole numbers: plain ones, and indexes of texts.
#pragma once

#include "model/cells/cell_values.h"
#include "model/values/parlane_integers.h"

#include <string>
#include <vector>

namespace ruvo {

class CUIntCell final : public CLimitedCell<CUIntCell, ECellKind::UInt, CParlaneUint, CParlaneUint> {
public:
    static constexpr std::string_view kDefaultFormat = "%u";

    using CLimitedCell::CLimitedCell;

    [[nodiscard]] bool IsCompatible(const CCell& other) const override;
    bool Validate(CErrorList& errors) override;
};

class CIntCell final : public CLimitedCell<CIntCell, ECellKind::Int, CParlaneInt, CParlaneInt> {
public:
    static constexpr std::string_view kDefaultFormat = "%d";

    using CLimitedCell::CLimitedCell;

    [[nodiscard]] bool IsCompatible(const CCell& other) const override;
    bool Validate(CErrorList& errors) override;
};

/// Shows the text that its index selects.
class CIndexedCell final
    : public CLimitedCell<CIndexedCell, ECellKind::Indexed, CParlaneStringIndex, CParlaneUint> {
public:
    static constexpr std::string_view kDefaultFormat = "%s";

    using CLimitedCell::CLimitedCell;

    [[nodiscard]] bool IsCompatible(const CCell& other) const override;
    bool Validate(CErrorList& errors) override;
    /// Empty while the cell has no texts.
    void Format(std::string& output, std::string_view format, EFormatMode mode) const override;

    void SetTexts(std::vector<std::string> texts) { m_texts = std::move(texts); }
    [[nodiscard]] const std::vector<std::string>& GetTexts() const { return m_texts; }
    /// Null when the index lies outside the texts.
    [[nodiscard]] const std::string* GetSelectedText() const;

private:
    std::vector<std::string> m_texts;
};

/// A count of time; its limits are stored and never checked.
class CTimerCell final : public CLimitedCell<CTimerCell, ECellKind::Timer, CParlaneTimer, CParlaneUint> {
public:
    static constexpr std::string_view kDefaultFormat = "%lu";

    using CLimitedCell::CLimitedCell;

    [[nodiscard]] bool IsCompatible(const CCell& other) const override;
};

} // namespace ruvo
