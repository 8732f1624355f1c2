#include "model/cells/cell_factory.h"

#include "model/cells/binary_cell.h"
#include "model/cells/integer_cells.h"
#include "model/cells/number_cells.h"
#include "model/cells/other_cells.h"
#include "model/cells/text_cells.h"
#include "model/values/units.h"
#include "model/values/value_as.h"

#include <array>
#include <utility>

namespace ruvo {
namespace {

struct SCellParts {
    SCellHead head;
    const CParlaneData& value;
    SCellLimits limits;
    const CParlaneData* scale; ///< null for none
};

template <class TCell, class TValue>
std::unique_ptr<CCell> Make(SCellParts& parts) {
    const auto* value = ValueAs<TValue>(&parts.value);
    return value != nullptr ? std::make_unique<TCell>(std::move(parts.head), *value, parts.limits) : nullptr;
}

/// An Int with a scale is shown as a number. A scale that is no number scales by nothing: times one, no unit.
std::unique_ptr<CCell> MakeInt(SCellParts& parts) {
    const auto* value = ValueAs<CParlaneInt>(&parts.value);
    if (value == nullptr || parts.scale == nullptr || parts.scale->GetTypeCode() == kTypeInvalid) {
        return Make<CIntCell, CParlaneInt>(parts);
    }
    const CParlaneNumber one(1.0, kNoUnit, ENumberForm::Long);
    const auto* number = ValueAs<CParlaneNumber>(parts.scale);
    return std::make_unique<CNumericCell>(std::move(parts.head), *value, parts.limits,
                                          number != nullptr ? *number : one);
}

std::unique_ptr<CCell> MakeHeading(SCellParts& parts) {
    return std::make_unique<CHeadingCell>(std::move(parts.head));
}

struct SKindRow {
    std::uint32_t typeCode;
    std::unique_ptr<CCell> (*make)(SCellParts& parts);
};

constexpr std::array kKindRows{
    SKindRow{kTypeText, Make<CTextCell, CParlaneText>},
    SKindRow{kTypePassword, Make<CPasswordCell, CParlanePassword>},
    SKindRow{kTypeFlags, Make<CBinaryCell, CParlaneFlags>},
    SKindRow{kTypeUint, Make<CUIntCell, CParlaneUint>},
    SKindRow{kTypeInt, MakeInt},
    SKindRow{kTypeShortNumber, Make<CNumericCell, CParlaneNumber>},
    SKindRow{kTypeLongNumber, Make<CNumericCell, CParlaneNumber>},
    SKindRow{kTypeFloat, Make<CFloatCell, CParlaneFloat>},
    SKindRow{kTypeTimer, Make<CTimerCell, CParlaneTimer>},
    SKindRow{kTypeIEC870, Make<CDateTimeCell, CParlaneIEC870>},
    SKindRow{kTypeMenu, Make<CMenuCell, CParlaneMenu>},
    SKindRow{kTypeStringIndex, Make<CIndexedCell, CParlaneStringIndex>},
    SKindRow{kTypeHex, Make<CHexCell, CParlaneHex>},
    SKindRow{kTypeModem, Make<CModemCell, CParlaneModem>},
    SKindRow{kTypeEncryptedPassword, Make<CEncryptedPasswordCell, CParlaneEncryptedPassword>},
    SKindRow{kTypeInvalid, MakeHeading},
};

} // namespace

std::unique_ptr<CCell> CCellFactory::Create(const CCellID& id, const CParlaneData* value,
                                            const CParlaneData* minimum, const CParlaneData* maximum,
                                            const CParlaneData* step, const CParlaneData* scale,
                                            std::string labelTemplate, int attributeB, int attributeA,
                                            int limitsApply) {
    if (value == nullptr) {
        return nullptr;
    }
    SCellParts parts{.head = {id, std::move(labelTemplate), attributeB, attributeA, limitsApply},
                     .value = *value,
                     .limits = {minimum, maximum, step},
                     .scale = scale};
    for (const SKindRow& row : kKindRows) {
        if (row.typeCode == value->GetTypeCode()) {
            return row.make(parts);
        }
    }
    return nullptr;
}

std::unique_ptr<CCell> CCellFactory::CreateWithDefaultLimits(const CCellID& id, const CParlaneData* value,
                                                             std::string labelTemplate) {
    if (value == nullptr) {
        return nullptr;
    }
    const std::unique_ptr<CParlaneData> minimum = value->CreateMinimum();
    const std::unique_ptr<CParlaneData> maximum = value->CreateMaximum();
    const std::unique_ptr<CParlaneData> step = value->CreateStep();
    return Create(id, value, minimum.get(), maximum.get(), step.get(), nullptr, std::move(labelTemplate), 0,
                  1, 1);
}

} // namespace ruvo
