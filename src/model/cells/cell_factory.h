// Picks the kind of cell that suits a value.
#pragma once

#include "model/cells/cell.h"

#include <memory>
#include <string>

namespace ruvo {

class CCellFactory {
public:
    /// A new cell holding copies of what it is given, or null when no kind of cell suits the value's type
    /// code (or the value is null). Any of the limits may be null: the cell then has none. Any scale
    /// but null and the invalid value makes a numeric cell of an Int value; one that is no Number is 1
    /// without a unit.
    static std::unique_ptr<CCell> Create(const CCellID& id, const CParlaneData* value,
                                         const CParlaneData* minimum, const CParlaneData* maximum,
                                         const CParlaneData* step, const CParlaneData* scale,
                                         std::string labelTemplate, int attributeB, int attributeA,
                                         int limitsApply);

    /// As a cell of an event record gets them: the value's default limits, no scale, 0, 1, 1.
    static std::unique_ptr<CCell> CreateWithDefaultLimits(const CCellID& id, const CParlaneData* value,
                                                          std::string labelTemplate);
};

} // namespace ruvo
