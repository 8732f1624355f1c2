#include "dayfile/block_walk.h"

#include "model/records/block_layout.h"
#include "model/values/data_factory.h"

#include <algorithm>
#include <array>
#include <memory>

namespace ruvo {

namespace {

using Bytes = std::span<const std::uint8_t>;

bool SkipItem(CByteCursor& cursor, const SBlockItem& item) {
    switch (item.encoding) {
    case EItemEncoding::Text:
    case EItemEncoding::ShortNumber:
        return SkipCounted(cursor);
    default:
        return SkipBytes(cursor, MinimumSize(item));
    }
}

/// A value is known when it holds every one of its bytes.
bool PassValue(Bytes items, CByteCursor& cursor, SBlockWalk& walk) {
    const std::size_t start = items.size() - cursor.Remaining();
    std::unique_ptr<CParlaneData> value;
    if (!CDataFactory::TakeTagged(cursor, value)) {
        return false;
    }
    if (value == nullptr || !IsStoredThere(value.get(), items.subspan(start))) {
        walk.unknownAt.push_back(start);
        walk.unknownEnd = items.size() - cursor.Remaining();
    }
    return true;
}

} // namespace

SBlockWalk WalkEventItems(Bytes items, bool isExtended) {
    SBlockWalk walk;
    CByteCursor cursor(items);
    bool fits = true;
    for (std::size_t item = kUniqueIdItem; fits && item < kEventValueItem; ++item) {
        fits = SkipItem(cursor, kEventItems[item]);
    }
    fits = fits && PassValue(items, cursor, walk) && SkipCounted(cursor); // format text or closing text
    while (fits && !isExtended && cursor.Remaining() > 0) {
        fits = PassValue(items, cursor, walk);
    }
    walk.leftOver = cursor.Remaining();
    return walk;
}

bool SkipBytes(CByteCursor& cursor, std::size_t count) {
    Bytes skipped;
    return cursor.TakeBytes(count, skipped);
}

bool SkipCounted(CByteCursor& cursor) {
    std::uint8_t length = 0;
    return cursor.TakeByte(length) && SkipBytes(cursor, length);
}

bool IsStoredThere(const CParlaneData* value, Bytes bytes) {
    std::array<std::uint8_t, kMaxStoredData> data;
    std::uint32_t typeCode = 0;
    std::size_t size = 0;
    if (value != nullptr) {
        value->GetWireBytes(data, typeCode, size);
    }
    return size <= data.size() && kValueHeadSize + size <= bytes.size() && bytes[kByteSize] == size &&
           std::ranges::equal(bytes.subspan(kValueHeadSize, size), Bytes(data).first(size));
}

} // namespace ruvo
