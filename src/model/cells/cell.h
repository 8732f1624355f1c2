// One item of the relay's menu: a label, a value with its limits, and the knowledge of how to show and check
// it. Cells belong to one thread at a time and are owned by their creator (factory or Clone) or by a
// CCellList.
#pragma once

#include "model/cells/cell_id.h"
#include "model/status/errors.h"
#include "model/values/parlane_data.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace ruvo {

/// What a cell is; two cells of one kind hold the same type of value.
enum class ECellKind : std::uint8_t {
    Text,
    Password,
    Binary,
    UInt,
    Int,
    Numeric,
    Float,
    Timer,
    DateTime,
    Menu,
    Indexed,
    Hex,
    Modem,
    EncryptedPassword,
    Heading,
};

/// How a format text that does not suit the value is answered: Label returns the format text itself, Value
/// formats again with the kind's own default format.
enum class EFormatMode : std::uint8_t { Label = 0, Value = 1 };

/// Everything about a cell but its value.
struct SCellHead {
    CCellID id;
    std::string labelTemplate;
    int attributeB = 0;
    int attributeA = 1;
    int limitsApply = 1; ///< 0: the cell accepts any value of its kind
};

class CCell {
public:
    virtual ~CCell() = default;

    /// Label and value for reading: both cleaned, one blank between them; a template without a format part is
    /// formatted unchanged.
    [[nodiscard]] virtual std::string GetText() const;
    /// As GetText with nothing cleaned, so that display control characters survive.
    [[nodiscard]] virtual std::string GetRawText() const;
    [[nodiscard]] virtual std::string GetLabelText() const;
    [[nodiscard]] virtual std::string GetValueText() const;
    /// True when the other cell is of the same kind and shape and, if this cell's limits apply, holds a value
    /// that lies within them.
    [[nodiscard]] virtual bool IsCompatible(const CCell& other) const = 0;
    /// The embedded value; null for a heading. It lives as long as the cell.
    [[nodiscard]] virtual const CParlaneData* GetValue() const = 0;
    [[nodiscard]] virtual CParlaneData* GetValue() = 0;
    /// The limits; null where the kind or the value's type has none.
    [[nodiscard]] virtual const CParlaneData* GetMinimum() const;
    [[nodiscard]] virtual const CParlaneData* GetMaximum() const;
    [[nodiscard]] virtual const CParlaneData* GetStep() const;
    [[nodiscard]] virtual std::unique_ptr<CCell> Clone() const = 0;
    /// Corrects what lies outside the limits and reports each as a CCellError; false when there was any.
    virtual bool Validate(CErrorList& errors);
    /// The value through the given format text. Never fails: see EFormatMode.
    virtual void Format(std::string& output, std::string_view format, EFormatMode mode) const = 0;

    [[nodiscard]] ECellKind GetKind() const { return m_kind; }
    [[nodiscard]] const CCellID& GetID() const { return m_head.id; }
    [[nodiscard]] const SCellHead& GetHead() const { return m_head; }
    [[nodiscard]] const std::string& GetLabelTemplate() const { return m_head.labelTemplate; }
    [[nodiscard]] std::string_view GetLabelPart() const;
    [[nodiscard]] std::string_view GetFormatPart() const;
    [[nodiscard]] int GetAttributeA() const { return m_head.attributeA; }
    [[nodiscard]] int GetAttributeB() const { return m_head.attributeB; }
    [[nodiscard]] bool LimitsApply() const { return m_head.limitsApply != 0; }
    /// True when the template holds a conversion after a label.
    [[nodiscard]] bool HasFormat() const { return m_split < m_head.labelTemplate.size(); }

protected:
    CCell(ECellKind kind, SCellHead head);
    CCell(const CCell&) = default;
    CCell& operator=(const CCell&) = default;

    void ClearLimitsApply() { m_head.limitsApply = 0; }

private:
    ECellKind m_kind;
    SCellHead m_head;
    /// Where the format part begins; the template's length when there is none.
    std::size_t m_split;
};

/// Owns its cells.
using CCellList = COwnedPtrList<CCell>;

/// Finds cells by address, hashed by the address's text; borrows the cells.
struct SCellIDHash {
    std::size_t operator()(const CCellID& id) const { return std::hash<std::string>()(id.GetText()); }
};
using CCellMap = std::unordered_map<CCellID, CCell*, SCellIDHash>;

} // namespace ruvo
