#include "model/records/event_block.h"

#include "model/values/character_set.h"

#include <algorithm>
#include <string>

namespace ruvo {
namespace {

std::string UnwritableText(EUnwritable item, std::optional<std::size_t> position) {
    static constexpr std::array<const char*, 5> kTexts{
        "the event value is too long", "a value of the record is too long",
        "a cell's value is too long or its index selects no text", "the event block is too long",
        "the cells are too long for a block"};
    std::string text = kTexts.at(static_cast<std::size_t>(item));
    if (position) {
        text += " (position " + std::to_string(*position) + ")";
    }
    return text;
}

} // namespace

CUnwritableRecord::CUnwritableRecord(EUnwritable item, std::optional<std::size_t> position)
    : std::invalid_argument(UnwritableText(item, position)) {}

std::size_t StoredValueSize(const CParlaneData* value) {
    return kValueHeadSize + (value != nullptr ? value->GetSize() : 0);
}

void CBlockWriter::ThrowPastEnd() {
    throw std::length_error("an event block is larger than its stated size");
}

void CBlockWriter::WriteText(std::string_view text) {
    const std::string_view stored = text.substr(0, kMaxStoredText);
    WriteByte(static_cast<std::uint8_t>(stored.size()));
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(stored.data());
    std::copy_n(bytes, stored.size(), Take(stored.size()).begin());
}

void CBlockWriter::WriteValueHead(std::uint32_t typeCode, std::size_t size) {
    if (size > kMaxStoredData) {
        throw std::length_error("a value is larger than its length byte can state");
    }
    WriteByte(static_cast<std::uint8_t>(typeCode));
    WriteByte(static_cast<std::uint8_t>(size));
}

void CBlockWriter::WriteValue(const CParlaneData* value) {
    if (value == nullptr) {
        WriteValueHead(kTypeInvalid, 0);
        return;
    }
    std::size_t size = value->GetSize();
    WriteValueHead(value->GetTypeCode(), size);
    std::uint32_t typeCode = 0;
    value->GetWireBytes(Take(size), typeCode, size);
}

void CBlockWriter::WriteTextValue(std::string_view text) {
    WriteValueHead(kTypeText, text.size());
    std::transform(text.begin(), text.end(), Take(text.size()).begin(),
                   [](char c) { return static_cast<std::uint8_t>(EncodeDeviceChar(c)); });
}

void CBlockWriter::WriteBlockHead(EBlockTag tag, std::size_t blockSize) {
    WriteByte(static_cast<std::uint8_t>(tag));
    WriteWord(static_cast<std::uint16_t>(blockSize));
}

} // namespace ruvo
