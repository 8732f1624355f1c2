// The parts of a substation file, one reader each. All throw CSubstationError.
#pragma once

#include "sim/file/substation.h"
#include "sim/file/table_reader.h"

namespace ruvo::sim {

SLink ReadLink(const STomlNode& node);
SRelay ReadRelay(const STomlNode& node, std::size_t number);
SFault ReadFault(const STomlNode& node, const std::vector<SRelay>& relays);

/// Cells of one table whose keys are cell addresses.
CellMap ReadCells(const STomlNode& node, const std::string& what);
/// Column listings and records of a relay's table.
void ReadColumns(CTableReader& table, SRelay& relay);
/// Access control of a relay's table, with the cells that belong to it; cells of the file come before them.
void ReadAccess(CTableReader& table, SRelay& relay);
/// Events of a relay's table, listed and generated ones; the relay's records are complete.
void ReadEvents(CTableReader& table, SRelay& relay);

} // namespace ruvo::sim
