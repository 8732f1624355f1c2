// Whole-number values: bit sets, unsigned and signed integers, timers, reply codes and string indexes.
// A native constructor takes the wire size in bytes; sizes that the wire does not know are kept but never
// read or written beyond the bytes that the value has.
#pragma once

#include "model/values/parlane_data.h"

namespace ruvo {

/// A set of up to 32 bits, 1 to 4 bytes on the wire. Its default limits are masks and bit counts.
class CParlaneFlags final : public CParlaneData {
public:
    explicit CParlaneFlags(std::span<const std::uint8_t> data);
    CParlaneFlags(std::uint32_t word, std::size_t size)
        : CParlaneData(kTypeFlags), m_word(word), m_size(size) {}

    std::uint32_t GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                               std::size_t& size) const override;
    std::size_t GetSize() const override { return m_size; }
    std::unique_ptr<CParlaneData> Clone() const override;
    std::unique_ptr<CParlaneData> CreateMinimum() const override; ///< every bit of the size set
    std::unique_ptr<CParlaneData> CreateMaximum() const override; ///< the number of bits
    std::unique_ptr<CParlaneData> CreateStep() const override;
    std::uint32_t GetUnsigned() const override { return m_word; }

    void SetAll() { m_word = 0xFFFFFFFF; }
    /// Bit numbers are taken modulo 32.
    void SetBit(unsigned bit) { m_word |= Mask(bit); }
    void ClearBit(unsigned bit) { m_word &= ~Mask(bit); }
    bool TestBit(unsigned bit) const { return (m_word & Mask(bit)) != 0; }
    std::uint32_t GetWord() const { return m_word; }
    void SetWord(std::uint32_t word) { m_word = word; }

private:
    static std::uint32_t Mask(unsigned bit) { return std::uint32_t{1} << (bit % 32); }

    std::uint32_t m_word = 0;
    std::size_t m_size = 0;
};

/// An unsigned integer, 1 to 4 bytes on the wire.
class CParlaneUint final : public CParlaneData {
public:
    explicit CParlaneUint(std::span<const std::uint8_t> data);
    CParlaneUint(std::uint32_t value, std::size_t size)
        : CParlaneData(kTypeUint), m_value(value), m_size(size) {}

    std::uint32_t GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                               std::size_t& size) const override;
    std::size_t GetSize() const override { return m_size; }
    std::unique_ptr<CParlaneData> Clone() const override;
    std::unique_ptr<CParlaneData> CreateMinimum() const override;
    std::unique_ptr<CParlaneData> CreateMaximum() const override;
    std::unique_ptr<CParlaneData> CreateStep() const override;
    std::uint32_t GetUnsigned() const override { return m_value; }

    std::uint32_t GetValue() const { return m_value; }
    void SetValue(std::uint32_t value) { m_value = value; }

private:
    std::uint32_t m_value = 0;
    std::size_t m_size = 0;
};

/// A signed integer of 1, 2 or 4 bytes. Any other size reads as 0, is written as zeros and has no limits.
class CParlaneInt final : public CParlaneData {
public:
    explicit CParlaneInt(std::span<const std::uint8_t> data);
    CParlaneInt(std::int32_t value, std::size_t size)
        : CParlaneData(kTypeInt), m_value(value), m_size(size) {}

    std::uint32_t GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                               std::size_t& size) const override;
    std::size_t GetSize() const override { return m_size; }
    std::unique_ptr<CParlaneData> Clone() const override;
    std::unique_ptr<CParlaneData> CreateMinimum() const override;
    std::unique_ptr<CParlaneData> CreateMaximum() const override;
    std::unique_ptr<CParlaneData> CreateStep() const override;
    std::uint32_t GetUnsigned() const override { return static_cast<std::uint32_t>(m_value); }

    std::int32_t GetValue() const { return m_value; }
    void SetValue(std::int32_t value) { m_value = value; }
    /// The unsigned value of the same size and wire bytes.
    CParlaneUint ToUint() const;

private:
    std::int32_t m_value = 0;
    std::size_t m_size = 0;
};

/// A count of 32 bits, always 4 bytes. Not a number to GetUnsigned.
class CParlaneTimer final : public CParlaneData {
public:
    /// Takes the first four bytes.
    explicit CParlaneTimer(std::span<const std::uint8_t> data);
    explicit CParlaneTimer(std::uint32_t value) : CParlaneData(kTypeTimer), m_value(value) {}

    std::uint32_t GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                               std::size_t& size) const override;
    std::size_t GetSize() const override { return 4; }
    std::unique_ptr<CParlaneData> Clone() const override;
    std::unique_ptr<CParlaneData> CreateMinimum() const override;
    std::unique_ptr<CParlaneData> CreateMaximum() const override;
    std::unique_ptr<CParlaneData> CreateStep() const override;

    std::uint32_t GetValue() const { return m_value; }
    void SetValue(std::uint32_t value) { m_value = value; }

private:
    std::uint32_t m_value = 0;
};

/// A device reply code, 1 or 2 bytes; the first byte is the code.
class CParlaneReply final : public CParlaneData {
public:
    explicit CParlaneReply(std::span<const std::uint8_t> data);
    explicit CParlaneReply(std::uint8_t code, std::size_t size = 1)
        : CParlaneData(kTypeReply), m_word(code), m_size(size) {}

    std::uint32_t GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                               std::size_t& size) const override;
    std::size_t GetSize() const override { return m_size; }
    std::unique_ptr<CParlaneData> Clone() const override;
    std::unique_ptr<CParlaneData> CreateMinimum() const override;
    std::unique_ptr<CParlaneData> CreateMaximum() const override;
    std::unique_ptr<CParlaneData> CreateStep() const override;
    std::uint32_t GetUnsigned() const override { return m_word & 0xFFU; }

    void SetCode(std::uint8_t code) { m_word = static_cast<std::uint16_t>((m_word & 0xFF00U) | code); }

private:
    std::uint16_t m_word = 0;
    std::size_t m_size = 0;
};

/// The index of a text in a cell's list of texts, 1 or 2 bytes.
class CParlaneStringIndex final : public CParlaneData {
public:
    explicit CParlaneStringIndex(std::span<const std::uint8_t> data);
    explicit CParlaneStringIndex(std::uint16_t index, std::size_t size = 2)
        : CParlaneData(kTypeStringIndex), m_index(index), m_size(size) {}

    std::uint32_t GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                               std::size_t& size) const override;
    std::size_t GetSize() const override { return m_size; }
    std::unique_ptr<CParlaneData> Clone() const override;
    std::unique_ptr<CParlaneData> CreateMinimum() const override;
    std::unique_ptr<CParlaneData> CreateMaximum() const override;
    std::unique_ptr<CParlaneData> CreateStep() const override;
    std::uint32_t GetUnsigned() const override { return m_index; }

    std::uint16_t GetIndex() const { return m_index; }
    void SetIndex(std::uint16_t index) { m_index = index; }

private:
    std::uint16_t m_index = 0;
    std::size_t m_size = 0;
};

} // namespace ruvo
