#include "model/values/parlane_integers.h"

#include <limits>

namespace ruvo {

namespace {

std::unique_ptr<CParlaneData> MakeUint(std::uint32_t value, std::size_t size) {
    return std::make_unique<CParlaneUint>(value, size);
}

/// All ones in `size` bytes.
std::uint32_t AllOnes(std::size_t size) {
    return size < 4 ? (std::uint32_t{1} << (8 * size)) - 1 : std::numeric_limits<std::uint32_t>::max();
}

/// Sizes that have limits: an unsigned value of 3 bytes, say, exists but has none.
bool IsWholeWord(std::size_t size) {
    return size == 1 || size == 2 || size == 4;
}
bool IsWholeShortWord(std::size_t size) {
    return size == 1 || size == 2;
}

std::unique_ptr<CParlaneData> MakeUintIf(bool exists, std::uint32_t value, std::size_t size) {
    if (!exists) {
        return nullptr;
    }
    return MakeUint(value, size);
}

std::int32_t SignExtend(std::uint32_t word, std::size_t size) {
    switch (size) {
    case 1:
        return static_cast<std::int8_t>(word);
    case 2:
        return static_cast<std::int16_t>(word);
    default:
        return static_cast<std::int32_t>(word);
    }
}

} // namespace

CParlaneFlags::CParlaneFlags(std::span<const std::uint8_t> data)
    : CParlaneData(kTypeFlags), m_word(TakeWord(data, 4)), m_size(data.size()) {}

std::uint32_t CParlaneFlags::GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                                          std::size_t& size) const {
    return PutWord(m_word, m_size, buffer, typeCode, size);
}

std::unique_ptr<CParlaneData> CParlaneFlags::Clone() const {
    return std::make_unique<CParlaneFlags>(*this);
}

std::unique_ptr<CParlaneData> CParlaneFlags::CreateMinimum() const {
    return MakeUint(AllOnes(m_size), m_size);
}

std::unique_ptr<CParlaneData> CParlaneFlags::CreateMaximum() const {
    return MakeUint(static_cast<std::uint32_t>(8 * m_size), m_size);
}

std::unique_ptr<CParlaneData> CParlaneFlags::CreateStep() const {
    return MakeUint(1, m_size);
}

CParlaneUint::CParlaneUint(std::span<const std::uint8_t> data)
    : CParlaneData(kTypeUint), m_value(TakeWord(data, 4)), m_size(data.size()) {}

std::uint32_t CParlaneUint::GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                                         std::size_t& size) const {
    return PutWord(m_value, m_size, buffer, typeCode, size);
}

std::unique_ptr<CParlaneData> CParlaneUint::Clone() const {
    return std::make_unique<CParlaneUint>(*this);
}

std::unique_ptr<CParlaneData> CParlaneUint::CreateMinimum() const {
    return MakeUintIf(IsWholeWord(m_size), 0, m_size);
}

std::unique_ptr<CParlaneData> CParlaneUint::CreateMaximum() const {
    return MakeUintIf(IsWholeWord(m_size), AllOnes(m_size), m_size);
}

std::unique_ptr<CParlaneData> CParlaneUint::CreateStep() const {
    return MakeUintIf(IsWholeWord(m_size), 1, m_size);
}

CParlaneInt::CParlaneInt(std::span<const std::uint8_t> data)
    : CParlaneData(kTypeInt),
      m_value(IsWholeWord(data.size()) ? SignExtend(TakeWord(data, 4), data.size()) : 0),
      m_size(data.size()) {}

std::uint32_t CParlaneInt::GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                                        std::size_t& size) const {
    return PutWord(IsWholeWord(m_size) ? GetUnsigned() : 0, m_size, buffer, typeCode, size);
}

std::unique_ptr<CParlaneData> CParlaneInt::Clone() const {
    return std::make_unique<CParlaneInt>(*this);
}

std::unique_ptr<CParlaneData> CParlaneInt::CreateMinimum() const {
    // The value with only the sign bit set: the complement of the greatest one.
    return IsWholeWord(m_size)
               ? std::make_unique<CParlaneInt>(~static_cast<std::int32_t>(AllOnes(m_size) >> 1U), m_size)
               : nullptr;
}

std::unique_ptr<CParlaneData> CParlaneInt::CreateMaximum() const {
    return IsWholeWord(m_size)
               ? std::make_unique<CParlaneInt>(static_cast<std::int32_t>(AllOnes(m_size) >> 1U), m_size)
               : nullptr;
}

std::unique_ptr<CParlaneData> CParlaneInt::CreateStep() const {
    return IsWholeWord(m_size) ? std::make_unique<CParlaneInt>(1, m_size) : nullptr;
}

CParlaneUint CParlaneInt::ToUint() const {
    return {IsWholeWord(m_size) ? GetUnsigned() & AllOnes(m_size) : 0, m_size};
}

CParlaneTimer::CParlaneTimer(std::span<const std::uint8_t> data)
    : CParlaneData(kTypeTimer), m_value(TakeWord(data, 4)) {}

std::uint32_t CParlaneTimer::GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                                          std::size_t& size) const {
    return PutWord(m_value, 4, buffer, typeCode, size);
}

std::unique_ptr<CParlaneData> CParlaneTimer::Clone() const {
    return std::make_unique<CParlaneTimer>(*this);
}
std::unique_ptr<CParlaneData> CParlaneTimer::CreateMinimum() const {
    return MakeUint(0, 2);
}
std::unique_ptr<CParlaneData> CParlaneTimer::CreateMaximum() const {
    return MakeUint(0xFFFF, 2);
}
std::unique_ptr<CParlaneData> CParlaneTimer::CreateStep() const {
    return MakeUint(1, 2);
}

CParlaneReply::CParlaneReply(std::span<const std::uint8_t> data)
    : CParlaneData(kTypeReply), m_word(static_cast<std::uint16_t>(TakeWord(data, 2))), m_size(data.size()) {}

std::uint32_t CParlaneReply::GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                                          std::size_t& size) const {
    return PutWord(m_word, m_size, buffer, typeCode, size);
}

std::unique_ptr<CParlaneData> CParlaneReply::Clone() const {
    return std::make_unique<CParlaneReply>(*this);
}

std::unique_ptr<CParlaneData> CParlaneReply::CreateMinimum() const {
    return MakeUintIf(IsWholeShortWord(m_size), 0, m_size);
}

std::unique_ptr<CParlaneData> CParlaneReply::CreateMaximum() const {
    return MakeUintIf(IsWholeShortWord(m_size), AllOnes(m_size), m_size);
}

std::unique_ptr<CParlaneData> CParlaneReply::CreateStep() const {
    return MakeUintIf(IsWholeShortWord(m_size), 1, m_size);
}

CParlaneStringIndex::CParlaneStringIndex(std::span<const std::uint8_t> data)
    : CParlaneData(kTypeStringIndex), m_index(static_cast<std::uint16_t>(TakeWord(data, 2))),
      m_size(data.size()) {}

std::uint32_t CParlaneStringIndex::GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                                                std::size_t& size) const {
    return PutWord(m_index, m_size, buffer, typeCode, size);
}

std::unique_ptr<CParlaneData> CParlaneStringIndex::Clone() const {
    return std::make_unique<CParlaneStringIndex>(*this);
}

std::unique_ptr<CParlaneData> CParlaneStringIndex::CreateMinimum() const {
    return MakeUintIf(IsWholeShortWord(m_size), 0, m_size);
}

std::unique_ptr<CParlaneData> CParlaneStringIndex::CreateMaximum() const {
    return MakeUintIf(IsWholeShortWord(m_size), AllOnes(m_size), m_size);
}

std::unique_ptr<CParlaneData> CParlaneStringIndex::CreateStep() const {
    return MakeUintIf(IsWholeShortWord(m_size), 1, m_size);
}

} // namespace ruvo
