// What an event's record is made of beyond the event itself: strings of cells, and the cells of a column of
// the relay's menu.
#pragma once

#include "link/seam/cell_address.h"
#include "link/seam/link_status.h"
#include "model/cells/cell.h"
#include "model/status/errors.h"
#include "model/status/status.h"
#include "model/values/parlane_data.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ruvo {

/// A link status as the status word of the data model. One beyond 16 bits can be no status of the server and
/// counts as a failed call.
CStatus ToStatusWord(LinkStatus status);

/// True when the cell shows one of a list of strings, which has to be fetched: bit names or index texts.
bool NeedsStrings(const CParlaneData& value);

/// Fetches the strings of a cell and adds them to it. The cell must be of a kind that NeedsStrings.
CStatus FetchStrings(CellAddress address, CCell& cell);

/// Reads a record column into `cells`. A listing that fails is recorded in `errors`. The result is the status
/// of the listing, or of the strings fetched last. Throws CStatus when the listing or a cell's limits were
/// aborted.
CStatus ReadRecordColumn(std::uint8_t column, CCellList& cells, CErrorList& errors);

} // namespace ruvo
