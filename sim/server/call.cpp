#include "sim/server/call.h"

#include "base/text.h"
#include "link/seam/known_cells.h"
#include "model/values/type_codes.h"

#include <algorithm>
#include <array>

namespace ruvo::sim {
namespace {

constexpr std::array kPasswordCells{cells::kPassword, cells::kSecurityPassword, cells::kSalt};
constexpr std::array kPasswordTypes{kTypePassword, kTypeEncryptedPassword};

// A list of bytes is shown whole, except for what a login writes: that is as good as the password.
bool IsSecret(const SCall& call, const Variant::Bytes& bytes) {
    const bool cell = call.cell && std::find(kPasswordCells.begin(), kPasswordCells.end(), *call.cell) !=
                                       kPasswordCells.end();
    return cell || (!bytes.empty() && std::find(kPasswordTypes.begin(), kPasswordTypes.end(),
                                                bytes.front()) != kPasswordTypes.end());
}

std::string HexOf(const Variant::Bytes& bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        AppendHexByte(text, byte);
    }
    return text;
}

} // namespace

// A converted value would do as well, but the interface fixes the kinds: a wrong one is a fault of the
// client.
bool IsUI1(const Variant& value) {
    std::uint8_t number = 0;
    return value.ToUI1(number) && value == Variant::FromUI1(number);
}

bool IsI2(const Variant& value) {
    std::int16_t number = 0;
    return value.ToI2(number) && value == Variant::FromI2(number);
}

bool IsI4(const Variant& value) {
    std::int32_t number = 0;
    return value.ToI4(number) && value == Variant::FromI4(number);
}

SCall RelayCall(EOperation operation, const Variant& address) {
    SCall call;
    call.operation = operation;
    std::uint8_t number = 0;
    call.wellFormed = IsUI1(address) && address.ToUI1(number);
    if (call.wellFormed) {
        call.address = number;
    }
    return call;
}

SCall CellCall(EOperation operation, const Variant& address, const Variant& cell) {
    SCall call = RelayCall(operation, address);
    std::int16_t number = 0;
    if (IsI2(cell) && cell.ToI2(number)) {
        call.cell = static_cast<CellAddress>(number);
    } else {
        call.wellFormed = false;
    }
    return call;
}

SCall ColumnCall(EOperation operation, const Variant& address, const Variant& column) {
    SCall call = RelayCall(operation, address);
    std::uint8_t number = 0;
    if (IsUI1(column) && column.ToUI1(number)) {
        call.cell = MakeCellAddress(number, 0);
    } else {
        call.wellFormed = false;
    }
    return call;
}

void AddBytes(SCall& call, const Variant& bytes) {
    const Variant::Bytes* held = bytes.AsBytes();
    if (held == nullptr) {
        call.wellFormed = false;
        return;
    }
    call.bytes = held;
    call.detail = IsSecret(call, *held) ? "(masked)" : HexOf(*held);
}

} // namespace ruvo::sim
