// Values from bytes and back: the only place that makes values out of a type code and packs tagged values,
// which are [type code][length][data].
#pragma once

#include "base/byte_cursor.h"
#include "model/values/parlane_data.h"

namespace ruvo {

class CDataFactory {
public:
    /// The value of that type; null for an unknown code, and for data that its type cannot be made of.
    static std::unique_ptr<CParlaneData> Create(std::uint32_t typeCode, std::span<const std::uint8_t> data);

    /// The value of one tagged value; null as Create. Bytes beyond its length are ignored. Throws
    /// std::invalid_argument when there are fewer than 2 bytes or fewer than the length says. "No array at
    /// all" is the caller's to see: that is a CParlaneInvalid.
    static std::unique_ptr<CParlaneData> CreateTagged(std::span<const std::uint8_t> bytes);

    /// Takes one tagged value off the block; false, with nothing moved, when it does not fit. `value` is null
    /// as Create.
    [[nodiscard]] static bool TakeTagged(CByteCursor& cursor, std::unique_ptr<CParlaneData>& value);

    /// Appends the tagged value; none (null) is FF 00. Throws std::invalid_argument, appending nothing, for a
    /// value of more than 255 bytes.
    static void AppendTagged(const CParlaneData* value, std::vector<std::uint8_t>& bytes);
};

} // namespace ruvo
