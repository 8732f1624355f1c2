// Appends a set-aside file to its day file, through the journal like a visit, so that twice is once.
#pragma once

#include "ledger/run_ledger.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace ruvo {

struct SAppendedFile {
    std::size_t events = 0; ///< in the day file now
    std::string key;        ///< of the relay in the INI file
    std::string dayFile;
    std::uint64_t from = 0; ///< where they are in it: the first byte, and the one after the last
    std::uint64_t to = 0;
    std::optional<std::uint64_t> damageAt; ///< in the set-aside file, which keeps what could not be read
    std::string failure;                   ///< why it has not been appended; empty when it has
};

/// Brings in what waits for the day file first, and marks the set-aside file as appended. It lies in the
/// folder of the ledger's event root.
[[nodiscard]] SAppendedFile AppendSetAsideFile(CRunLedger& ledger, const std::string& eventRoot,
                                               const std::string& path);

/// Moves a set-aside file of another event root into a folder; its new path, or empty on failure.
[[nodiscard]] std::string AdoptSetAsideFile(const std::string& path, const std::string& folder);

} // namespace ruvo
