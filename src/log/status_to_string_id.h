// Texts of comms-server statuses: from the status to its number in the string table.
#pragma once

#include <cstdint>

namespace ruvo {

/// The string-table number that describes a status. Every status has one.
unsigned StatusToStringId(std::uint32_t status);

} // namespace ruvo
