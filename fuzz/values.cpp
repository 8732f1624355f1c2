// Tagged values, value lists and packed values. Input: tagged values back to back; the same bytes again as
// one packed reply, [type][size][data].
#include "fuzz/support/input.h"
#include "fuzz/support/require.h"

#include "link/requests/reply_values.h"
#include "model/values/data_factory.h"

#include <stdexcept>

namespace ruvo::fuzz {

namespace {

using Bytes = std::span<const std::uint8_t>;

/// A type and the sizes at which its values hold every byte that they are made of.
struct SExactRow {
    std::uint32_t typeCode;
    std::size_t minimum;
    std::size_t maximum;
};

constexpr std::size_t kAny = 255;
constexpr std::array kExact{SExactRow{kTypeText, 0, kAny},
                            SExactRow{kTypePassword, 0, kAny},
                            SExactRow{kTypeFlags, 1, 4},
                            SExactRow{kTypeUint, 1, 4},
                            SExactRow{kTypeInt, 1, 2},
                            SExactRow{kTypeInt, 4, 4},
                            SExactRow{kTypeShortNumber, 4, 4},
                            SExactRow{kTypeLongNumber, 6, 6},
                            SExactRow{kTypeFloat, 4, 4},
                            SExactRow{kTypeTimer, 4, 4},
                            SExactRow{kTypeIEC870, 7, 7},
                            SExactRow{kTypeMenu, 2, 2},
                            SExactRow{kTypeReply, 1, 2},
                            SExactRow{kTypeStringIndex, 1, 2},
                            SExactRow{kTypeHex, 0, kAny},
                            SExactRow{kTypeModem, 0, kAny},
                            SExactRow{kTypeEncryptedPassword, 0, kAny}};

bool IsExact(std::uint32_t typeCode, std::size_t size) {
    return std::ranges::any_of(kExact, [&](const SExactRow& row) {
        return row.typeCode == typeCode && size >= row.minimum && size <= row.maximum;
    });
}

std::vector<std::uint8_t> CheckedWireBytes(const CParlaneData& value) {
    std::vector<std::uint8_t> bytes(value.GetSize());
    std::uint32_t typeCode = 0;
    std::size_t size = 0;
    Require(value.GetWireBytes(bytes, typeCode, size) == value.GetTypeCode() &&
                typeCode == value.GetTypeCode() && size == bytes.size(),
            "a value's wire bytes are of its type and size");
    return bytes;
}

/// A buffer that is too short receives what fits; the sanitizer sees a byte behind it.
void CheckShortBuffer(const CParlaneData& value, Bytes wire) {
    std::vector<std::uint8_t> part(wire.size() / 2);
    std::uint32_t typeCode = 0;
    std::size_t size = 0;
    value.GetWireBytes(part, typeCode, size);
    Require(size == wire.size() && std::ranges::equal(part, wire.first(part.size())),
            "a short buffer gets the first bytes");
}

void CheckTagged(const CParlaneData& value, Bytes wire) {
    std::vector<std::uint8_t> tagged;
    try {
        CDataFactory::AppendTagged(&value, tagged);
    } catch (const std::invalid_argument&) {
        Require(wire.size() > 255 && tagged.empty(), "only a long value cannot be written");
        return;
    }
    Require(tagged.size() == wire.size() + 2 && std::ranges::equal(Bytes(tagged).subspan(2), wire),
            "a tagged value ends in the value's data");
    const auto again = CDataFactory::CreateTagged(tagged);
    Require(again != nullptr && CheckedWireBytes(*again) == std::vector(wire.begin(), wire.end()),
            "a written value reads back equal");
    Variant variant;
    std::unique_ptr<CParlaneData> unpacked;
    Require(PackValue(value, variant) && *variant.AsBytes() == tagged && UnpackValue(variant, unpacked),
            "a packed value is its tagged bytes");
}

void CheckLimit(const std::unique_ptr<CParlaneData>& limit) {
    if (limit != nullptr) {
        CheckTagged(*limit, CheckedWireBytes(*limit));
    }
}

void CheckValue(std::uint32_t typeCode, Bytes data, const CParlaneData& value) {
    const std::vector<std::uint8_t> wire = CheckedWireBytes(value);
    Require(!IsExact(typeCode, data.size()) || std::ranges::equal(wire, data),
            "decoding and encoding gives the same bytes");
    CheckShortBuffer(value, wire);
    CheckTagged(value, wire);
    const auto clone = value.Clone();
    Require(clone->GetTypeCode() == value.GetTypeCode() && CheckedWireBytes(*clone) == wire &&
                clone->GetUnsigned() == value.GetUnsigned(),
            "a clone is equal");
    CheckLimit(value.CreateMinimum());
    CheckLimit(value.CreateMaximum());
    CheckLimit(value.CreateStep());
}

/// Walks the stream; gives its whole tagged values as the elements of a value list.
Variant CheckStream(Bytes bytes, std::size_t& known) {
    Variant::List list;
    CByteCursor cursor(bytes);
    bool allKnown = true;
    std::unique_ptr<CParlaneData> value;
    for (std::size_t before = cursor.Remaining(); CDataFactory::TakeTagged(cursor, value);
         before = cursor.Remaining()) {
        const Bytes tagged = bytes.subspan(bytes.size() - before, before - cursor.Remaining());
        Require(tagged.size() == 2U + tagged[1], "a tagged value is as long as it says");
        list.push_back(Variant::FromBytes({tagged.begin(), tagged.end()}));
        if (value != nullptr) {
            CheckValue(tagged[0], tagged.subspan(2), *value);
        }
        allKnown = allKnown && value != nullptr;
        known += allKnown ? 1 : 0;
    }
    Require(cursor.Remaining() < 2 || cursor.Remaining() < 2U + bytes[bytes.size() - cursor.Remaining() + 1],
            "a tagged value that fits is taken");
    return Variant::FromList(std::move(list));
}

void CheckList(Bytes bytes) {
    std::size_t known = 0;
    const Variant list = CheckStream(bytes, known);
    CParlaneDataArray values;
    const bool good = UnpackValueList(list, values);
    Require(values.size() == known && good == (known == list.AsList()->size()),
            "a list is unpacked up to its first element that is no value");
}

void CheckPacked(Bytes bytes) {
    CInput input(bytes);
    const std::uint8_t type = input.TakeByte();
    const std::uint8_t size = input.TakeByte();
    const Bytes data = input.Rest();
    CParlaneDataArray values;
    if (!UnpackPackedValues(Variant::FromUI1(type), Variant::FromUI1(size),
                            Variant::FromBytes({data.begin(), data.end()}), values)) {
        return;
    }
    Require(values.size() == (size == 0 ? 1 : data.size() / size), "packed values are as many as fit");
    for (std::size_t i = 0; size > 0 && i < values.size(); ++i) {
        Require(!IsExact(type, size) ||
                    std::ranges::equal(CheckedWireBytes(*values[i]), data.subspan(i * size, size)),
                "a packed value is the bytes at its place");
    }
}

} // namespace

} // namespace ruvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ruvo::fuzz::CheckList({data, size});
    ruvo::fuzz::CheckPacked({data, size});
    return 0;
}
