// One call of the server as it arrives.
#pragma once

#include "link/seam/link_status.h"
#include "link/seam/operations.h"
#include "sim/file/substation.h"

#include <optional>
#include <string>

namespace ruvo::sim {

struct SCall {
    EOperation operation = EOperation::OpenPort;
    std::optional<std::uint8_t> address;
    std::optional<CellAddress> cell;       ///< a column is given as its row 00
    std::string detail;                    ///< further inputs as the trace shows them
    bool wellFormed = true;                ///< every input is of the kind that the interface says
    const Variant::Bytes* bytes = nullptr; ///< what is written, secret or not; borrowed from the caller
};

/// A call to a relay; inputs of a wrong kind make it malformed.
SCall RelayCall(EOperation operation, const Variant& address);
SCall CellCall(EOperation operation, const Variant& address, const Variant& cell);
SCall ColumnCall(EOperation operation, const Variant& address, const Variant& column);
/// Adds an input that is written to the call's cell; passwords are masked in the detail.
void AddBytes(SCall& call, const Variant& bytes);

/// Whether the value is held as exactly that kind.
bool IsUI1(const Variant& value);
bool IsI2(const Variant& value);
bool IsI4(const Variant& value);

} // namespace ruvo::sim
