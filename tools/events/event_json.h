// Parts of a record as JSON, the same wherever they are written.
#pragma once

#include "base/json_writer.h"
#include "model/cells/cell.h"

namespace ruvo {

/// An array of {"template", "text", "value": {"code", "bytes"} or null, "bits": [names]}.
void WriteJsonCells(CJsonWriter& json, const CCellList& cells);
/// An array of {"label", "value", "set": [names of the bits that are set]}, as people read them.
void WriteJsonCellValues(CJsonWriter& json, const CCellList& cells);

} // namespace ruvo
