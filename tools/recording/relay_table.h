// A relay of a recording as a table of a substation file.
#pragma once

#include "tools/recording/relay_facts.h"

#include <string>

namespace ruvo {

/// The relay's name in the file.
[[nodiscard]] std::string NameOf(const CRelayFacts& relay);
/// Its [[relay]] table with all that belongs to it.
[[nodiscard]] std::string RelayTable(const CRelayFacts& relay);
/// The [[fault]] tables for calls that it would answer otherwise without them.
[[nodiscard]] std::string FaultTables(const CRelayFacts& relay);

/// A fault of one call, the n-th that has this operation and, where it has them, relay and cell or column.
/// `status` is none for a call that did not get through.
struct SFaultText {
    const SOperationRow& operation;
    std::string relay; ///< empty for none
    std::optional<CellAddress> cell;
    std::uint64_t number = 1;
    std::optional<LinkStatus> status;
    bool isCompletion = false;
    std::optional<std::size_t> uselessOutput{}; ///< instead of a status
};
[[nodiscard]] std::string FaultTable(const SFaultText& fault);

} // namespace ruvo
