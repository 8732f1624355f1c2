// Reading of byte blocks that came from a relay or a file. All bounds checking is here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace ruvo {

/// Walks a borrowed block. A take that does not fit returns false, and moves and changes nothing.
class CByteCursor {
public:
    explicit CByteCursor(std::span<const std::uint8_t> block) : m_rest(block) {}

    [[nodiscard]] bool TakeByte(std::uint8_t& value) { return TakeNumber(value); }
    /// 16 and 32 bits, little-endian.
    [[nodiscard]] bool TakeWord(std::uint16_t& value) { return TakeNumber(value); }
    [[nodiscard]] bool TakeDoubleWord(std::uint32_t& value) { return TakeNumber(value); }

    /// The bytes stay in the block; the span is valid as long as the block is.
    [[nodiscard]] bool TakeBytes(std::size_t count, std::span<const std::uint8_t>& bytes) {
        if (count > m_rest.size()) {
            return false;
        }
        bytes = m_rest.first(count);
        m_rest = m_rest.subspan(count);
        return true;
    }

    /// A length byte, then that many characters.
    [[nodiscard]] bool TakeText(std::string& text) {
        CByteCursor ahead = *this;
        std::uint8_t length = 0;
        std::span<const std::uint8_t> bytes;
        if (!ahead.TakeByte(length) || !ahead.TakeBytes(length, bytes)) {
            return false;
        }
        text.assign(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        *this = ahead;
        return true;
    }

    /// How many bytes are left.
    std::size_t Remaining() const { return m_rest.size(); }

private:
    template <class T>
    [[nodiscard]] bool TakeNumber(T& value) {
        std::span<const std::uint8_t> bytes;
        if (!TakeBytes(sizeof(T), bytes)) {
            return false;
        }
        std::uint32_t number = 0;
        for (std::size_t i = sizeof(T); i-- > 0;) {
            number = number << 8U | bytes[i];
        }
        value = static_cast<T>(number);
        return true;
    }

    std::span<const std::uint8_t> m_rest;
};

} // namespace ruvo
