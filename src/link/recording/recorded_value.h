// A value of a call as a recording has it: one that the seam carries, or what is left of one that is masked.
#pragma once

#include "base/byte_cursor.h"
#include "link/recording/recording_format.h"
#include "link/seam/variant.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace ruvo {

/// Borrows the bytes of what it was made from.
struct SRecordedValue {
    EValueKind kind = EValueKind::Empty;
    std::int32_t number = 0;               ///< of UI1, I2, I4
    std::span<const std::uint8_t> bytes;   ///< of Text and Bytes
    std::vector<SRecordedValue> items;     ///< of List; of Words, each an I2
    EMaskedForm form = EMaskedForm::Other; ///< of Masked, as are the next two
    std::uint8_t type = 0;                 ///< type code, of Tagged
    std::optional<std::size_t> length;     ///< of the bytes or the text, type code and length byte included
};

/// Everything of a value, unmasked. Lists that are too deep become Other.
[[nodiscard]] SRecordedValue RecordedValue(const Variant& value, unsigned depth = 0);

void AppendValue(Variant::Bytes& out, const SRecordedValue& value);
/// False, and nothing is taken, when the bytes are no value.
[[nodiscard]] bool TakeValue(CByteCursor& cursor, SRecordedValue& value, unsigned depth = 0);

/// The value as it crosses the seam; of a masked one as much as is known, with zeros (the digit) as its data.
[[nodiscard]] Variant ToVariant(const SRecordedValue& value);

/// Numbers of any size in as few bytes as they need: seven bits each, the lowest first, the eighth bit set in
/// all but the last.
void AppendNumber(Variant::Bytes& out, std::uint64_t number);
[[nodiscard]] bool TakeNumber(CByteCursor& cursor, std::uint64_t& number);

} // namespace ruvo
