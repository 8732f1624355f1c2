#include "tools/recording/toml_text.h"

#include "base/text.h"
#include "model/values/type_codes.h"

#include <algorithm>

namespace ruvo {

namespace {

constexpr std::size_t kHead = 2; // type code and length of a tagged value
constexpr std::size_t kMaxData = 255;

bool IsPlainText(std::span<const std::uint8_t> bytes) {
    constexpr std::uint8_t kFirst = ' ';
    constexpr std::uint8_t kLast = '~';
    return std::ranges::all_of(bytes, [](std::uint8_t byte) { return byte >= kFirst && byte <= kLast; });
}

std::string HexText(std::span<const std::uint8_t> bytes) {
    std::string text = "\"";
    for (const std::uint8_t byte : bytes) {
        AppendHexByte(text, byte);
    }
    return text + "\"";
}

std::string_view ViewOf(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// A masked value has its length and zeros.
std::span<const std::uint8_t> BytesOf(const SRecordedValue& value, Variant::Bytes& filled) {
    if (value.kind != EValueKind::Masked) {
        return value.bytes;
    }
    const Variant variant = ToVariant(value);
    filled = variant.AsBytes() == nullptr ? Variant::Bytes() : *variant.AsBytes();
    return filled;
}

std::string ManyValues(std::uint8_t type, std::size_t size, std::span<const std::uint8_t> data) {
    std::string text;
    for (; !data.empty(); data = data.subspan(size)) {
        text += (text.empty() ? "{ " : ", { ") + TomlMembers(type, data.first(size)) + " }";
    }
    return "values = [" + text + "]";
}

} // namespace

std::string TomlText(std::string_view utf8) {
    constexpr unsigned char kFirst = ' ';
    constexpr unsigned char kDelete = 0x7F;
    std::string quoted = "\"";
    for (const char character : utf8) {
        const auto code = static_cast<unsigned char>(character);
        if (code < kFirst || code == kDelete) {
            quoted += "\\u00";
            AppendHexByte(quoted, code);
        } else {
            quoted += character == '"' || character == '\\' ? "\\" : "";
            quoted += character;
        }
    }
    return quoted + "\"";
}

std::string TomlColumn(std::uint8_t column) {
    std::string text;
    AppendHexByte(text, column);
    return text;
}

std::string TomlCell(CellAddress cell) {
    std::string text = TomlColumn(ColumnOf(cell)) + ".";
    AppendHexByte(text, RowOf(cell));
    return text;
}

std::string TomlMembers(std::uint8_t type, std::span<const std::uint8_t> data) {
    constexpr std::size_t kMostBytes = 4;
    if (type == kTypeText && IsPlainText(data)) {
        return "text = " + TomlText(ViewOf(data));
    }
    if (type == kTypeUint && !data.empty() && data.size() <= kMostBytes) {
        std::uint64_t number = 0;
        for (std::size_t i = data.size(); i-- > 0;) {
            number = number << 8U | data[i];
        }
        return "uint = " + std::to_string(number) + ", size = " + std::to_string(data.size());
    }
    return "type = " + std::to_string(type) + ", bytes = " + HexText(data);
}

std::string TomlValue(const SRecordedValue& value) {
    Variant::Bytes filled;
    const std::span<const std::uint8_t> bytes = BytesOf(value, filled);
    if (value.kind == EValueKind::Empty) {
        return "{ none = true }";
    }
    if (value.kind != EValueKind::Bytes && value.kind != EValueKind::Masked) {
        return "{ other = true }";
    }
    if (bytes.size() < kHead || bytes[1] != bytes.size() - kHead) {
        return "{ raw = " + HexText(bytes) + " }";
    }
    return "{ " + TomlMembers(bytes[0], bytes.subspan(kHead)) + " }";
}

std::string TomlValues(const SRecordedValue& list) {
    std::string text;
    for (const SRecordedValue& item : list.items) {
        text += (text.empty() ? "" : ", ") + TomlValue(item);
    }
    return "[" + text + "]";
}

std::string TomlPacked(const std::vector<SRecordedValue>& packed) {
    Variant::Bytes filled;
    const std::span<const std::uint8_t> data = BytesOf(packed[2], filled);
    const auto type = static_cast<std::uint8_t>(packed[0].number);
    const auto size = static_cast<std::size_t>(static_cast<std::uint8_t>(packed[1].number));
    if (data.size() > kMaxData) {
        return size > 0 && data.size() % size == 0 ? ManyValues(type, size, data) : "";
    }
    const std::string members = TomlMembers(type, data);
    return size == data.size() ? members : members + ", element_size = " + std::to_string(size);
}

} // namespace ruvo
