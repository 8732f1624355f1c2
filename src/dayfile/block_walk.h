// Steps through the items of a record's first block by the layout, to see what the record that was read from
// them does not show: what is left over, and where values are that it could not take.
#pragma once

#include "base/byte_cursor.h"
#include "model/values/parlane_data.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace ruvo {

/// A range within the bytes that were parsed.
struct SByteRange {
    std::size_t offset = 0;
    std::size_t length = 0;
};

struct SBlockWalk {
    std::size_t leftOver = 0;           ///< bytes after the last item
    std::vector<std::size_t> unknownAt; ///< where values of an unknown type or size begin
    std::size_t unknownEnd = 0;         ///< of the last of them

    /// From the first value that is not known to the end of the last.
    [[nodiscard]] std::optional<SByteRange> UnknownRange() const {
        return unknownAt.empty()
                   ? std::nullopt
                   : std::optional(SByteRange{unknownAt.front(), unknownEnd - unknownAt.front()});
    }
};

/// Walks the items from the unique id on. It ends early where an item does not fit.
[[nodiscard]] SBlockWalk WalkEventItems(std::span<const std::uint8_t> items, bool isExtended);

/// Moves past bytes; false, with nothing moved, when there are fewer.
[[nodiscard]] bool SkipBytes(CByteCursor& cursor, std::size_t count);
/// Moves past a text or short number: a length byte and that many bytes.
[[nodiscard]] bool SkipCounted(CByteCursor& cursor);

/// True when the bytes begin with the length and data that the value is written with; null is written
/// without data. A type that takes any size may not keep the data of all of them.
[[nodiscard]] bool IsStoredThere(const CParlaneData* value, std::span<const std::uint8_t> bytes);

} // namespace ruvo
