// The fuzzer's bytes taken apart. Whatever is taken beyond their end is empty or 0, so that every input means
// something.
#pragma once

#include "model/values/data_factory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace ruvo::fuzz {

class CInput {
public:
    CInput() = default;
    explicit CInput(std::span<const std::uint8_t> bytes) : m_rest(bytes) {}

    [[nodiscard]] bool IsEmpty() const { return m_rest.empty(); }
    [[nodiscard]] std::span<const std::uint8_t> Rest() const { return m_rest; }
    std::span<const std::uint8_t> TakeBytes(std::size_t count) {
        const auto taken = m_rest.first(std::min(count, m_rest.size()));
        m_rest = m_rest.subspan(taken.size());
        return taken;
    }
    std::uint8_t TakeByte() {
        const auto taken = TakeBytes(1);
        return taken.empty() ? std::uint8_t{0} : taken[0];
    }
    std::uint16_t TakeWord() {
        const unsigned low = TakeByte();
        return static_cast<std::uint16_t>(low | TakeByte() * 256U);
    }
    std::uint32_t TakeLong() {
        const std::uint32_t low = TakeWord();
        return low | std::uint32_t{TakeWord()} << 16U;
    }
    /// A length byte and that many characters.
    std::string TakeText() {
        const auto bytes = TakeBytes(TakeByte());
        return {bytes.begin(), bytes.end()};
    }
    /// The bytes of a tagged value: type code, length, data, the length being true.
    std::vector<std::uint8_t> TakeTaggedBytes() {
        const std::uint8_t type = TakeByte();
        const auto data = TakeBytes(TakeByte());
        std::vector<std::uint8_t> bytes(2 + data.size());
        bytes[0] = type;
        bytes[1] = static_cast<std::uint8_t>(data.size());
        std::ranges::copy(data, bytes.begin() + 2);
        return bytes;
    }
    /// The value of a tagged value; null for an unknown one.
    std::unique_ptr<CParlaneData> TakeValue() {
        const std::uint8_t type = TakeByte();
        return CDataFactory::Create(type, TakeBytes(TakeByte()));
    }

private:
    std::span<const std::uint8_t> m_rest;
};

/// A value's data as it goes on the wire.
inline std::vector<std::uint8_t> WireBytes(const CParlaneData& value) {
    std::vector<std::uint8_t> bytes(value.GetSize());
    std::uint32_t typeCode = 0;
    std::size_t size = 0;
    value.GetWireBytes(bytes, typeCode, size);
    return bytes;
}

} // namespace ruvo::fuzz
