// The cells of a record as the archive stores them. As JSON they would take several times the room of the
// record itself, so what records of one kind have in common (labels, types, names of bits) is kept apart from
// what differs.
#pragma once

#include "model/cells/cell.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ruvo {

/// The view `events` joins the pieces to the JSON of CellsAsJson; it needs no function for that which a
/// careful reader of databases would refuse.
struct SStoredCells {
    /// JSON: an array of texts, which are pieces as they are, and numbers. A number stands for a piece in
    /// `bytes`: its begin times 65536 and its size; below 0 for bytes that are to be read as hexadecimal
    /// digits.
    std::string pieces;
    std::vector<std::uint8_t> bytes;
};

[[nodiscard]] SStoredCells StoreCells(const CCellList& cells);

} // namespace ruvo
