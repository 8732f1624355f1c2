#include "model/values/parlane_data.h"

#include <algorithm>

namespace ruvo {

std::uint32_t CParlaneData::PutWireBytes(std::span<const std::uint8_t> bytes, std::span<std::uint8_t> buffer,
                                         std::uint32_t& typeCode, std::size_t& size) const {
    std::copy_n(bytes.begin(), std::min(bytes.size(), buffer.size()), buffer.begin());
    size = bytes.size();
    typeCode = m_typeCode;
    return m_typeCode;
}

std::uint32_t CParlaneData::PutWord(std::uint32_t word, std::size_t wordSize, std::span<std::uint8_t> buffer,
                                    std::uint32_t& typeCode, std::size_t& size) const {
    for (std::uint8_t& octet : buffer.first(std::min(wordSize, buffer.size()))) {
        octet = static_cast<std::uint8_t>(word);
        word >>= 8U;
    }
    size = wordSize;
    typeCode = m_typeCode;
    return m_typeCode;
}

std::uint32_t CParlaneData::TakeWord(std::span<const std::uint8_t> data, std::size_t count) {
    std::uint32_t word = 0;
    for (std::size_t i = std::min({data.size(), count, sizeof(word)}); i-- > 0;) {
        word = word << 8U | data[i];
    }
    return word;
}

std::uint32_t CParlaneInvalid::GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                                            std::size_t& size) const {
    return PutWireBytes({}, buffer, typeCode, size);
}

std::unique_ptr<CParlaneData> CParlaneInvalid::Clone() const {
    return std::make_unique<CParlaneInvalid>(*this);
}

} // namespace ruvo
