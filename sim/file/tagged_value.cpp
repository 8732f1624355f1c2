#include "sim/file/tagged_value.h"

#include "model/values/type_codes.h"

namespace ruvo::sim {

Variant TaggedValue(std::uint32_t type, const Variant::Bytes& data) {
    Variant::Bytes tagged{static_cast<std::uint8_t>(type), static_cast<std::uint8_t>(data.size())};
    tagged.insert(tagged.end(), data.begin(), data.end());
    return Variant::FromBytes(std::move(tagged));
}

Variant TaggedUnsigned(std::uint32_t value, std::size_t size) {
    return TaggedValue(kTypeUint, LittleEndian(value, size));
}

Variant TaggedMenu(CellAddress cell) {
    return TaggedValue(kTypeMenu, LittleEndian(cell, 2));
}

Variant::Bytes LittleEndian(std::uint64_t value, std::size_t size) {
    Variant::Bytes bytes;
    for (std::size_t i = 0; i < size; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
    return bytes;
}

std::uint32_t NumberOf(const Variant::Bytes& bytes) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < bytes.size() && i < sizeof number; ++i) {
        number |= static_cast<std::uint32_t>(bytes[i]) << (8 * i);
    }
    return number;
}

SCell MakeValueCell(std::uint32_t type, Variant::Bytes data) {
    SCell cell;
    cell.type = static_cast<std::uint8_t>(type);
    cell.size = static_cast<std::uint8_t>(data.size());
    cell.data = std::move(data);
    return cell;
}

Variant FirstValueOf(const SCell& cell) {
    if (cell.size > cell.data.size()) {
        return {};
    }
    return TaggedValue(cell.type, Variant::Bytes(cell.data.begin(), cell.data.begin() + cell.size));
}

} // namespace ruvo::sim
