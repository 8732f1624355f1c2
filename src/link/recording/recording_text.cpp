#include "link/recording/recording_text.h"

#include "base/text.h"
#include "link/seam/cell_address.h"
#include "model/values/type_codes.h"

#include <algorithm>
#include <cstdio>

namespace ruvo {

namespace {

/// Quoted; what is no ASCII is written as \xHH.
std::string QuotedText(std::span<const std::uint8_t> bytes) {
    constexpr std::uint8_t kFirst = ' ';
    constexpr std::uint8_t kLast = '~';
    std::string text = "\"";
    for (const std::uint8_t byte : bytes) {
        if (byte >= kFirst && byte <= kLast && byte != '"' && byte != '\\') {
            text += static_cast<char>(byte);
        } else {
            text += "\\x";
            AppendHexByte(text, byte);
        }
    }
    return text + "\"";
}

/// Digits, and what of them is a text once more in readable form.
std::string BytesText(std::span<const std::uint8_t> bytes) {
    constexpr std::size_t kHead = 2; // type code and length of a tagged value
    constexpr std::size_t kShortest = 3;
    std::string text;
    for (const std::uint8_t byte : bytes) {
        AppendHexByte(text, byte);
    }
    const bool isTagged = bytes.size() > kHead && bytes[0] == kTypeText && bytes[1] == bytes.size() - kHead;
    const auto isReadable = [](std::uint8_t byte) { return byte >= ' ' && byte <= '~'; };
    if (isTagged) {
        return text + " " + QuotedText(bytes.subspan(kHead));
    }
    if (bytes.size() >= kShortest && std::ranges::all_of(bytes, isReadable)) {
        return text + " " + QuotedText(bytes);
    }
    return text.empty() ? "-" : text;
}

std::string MaskedText(const SRecordedValue& value) {
    std::string text = "(masked";
    if (value.form == EMaskedForm::Tagged) {
        text += " ";
        AppendHexByte(text, value.type);
    }
    if (value.length) {
        text += ", " + Counted(*value.length, "byte");
    }
    return text + ")";
}

std::string CellText(std::int32_t number) {
    char text[8];
    const auto cell = static_cast<CellAddress>(number);
    std::snprintf(text, sizeof text, "%02X.%02X", ColumnOf(cell), RowOf(cell));
    return text;
}

std::string ListText(const SRecordedValue& list) {
    std::string text;
    for (const SRecordedValue& item : list.items) {
        text += text.empty() ? "" : ", ";
        text += list.kind == EValueKind::Words ? CellText(item.number) : ValueText(item);
    }
    return "[" + text + "]";
}

} // namespace

std::string ValueText(const SRecordedValue& value) {
    switch (value.kind) {
    case EValueKind::Empty:
        return "(empty)";
    case EValueKind::UI1:
        return "UI1(" + std::to_string(value.number) + ")";
    case EValueKind::I2:
        return "I2(" + std::to_string(value.number) + ")";
    case EValueKind::I4:
        return "I4(" + std::to_string(value.number) + ")";
    case EValueKind::Text:
        return QuotedText(value.bytes);
    case EValueKind::Bytes:
        return BytesText(value.bytes);
    case EValueKind::Words:
    case EValueKind::List:
        return ListText(value);
    case EValueKind::Other:
        return "(other)";
    case EValueKind::Masked:
        return MaskedText(value);
    }
    return {};
}

std::string CallText(const SOperationRow& operation, const std::vector<SRecordedValue>& inputs) {
    std::string text(operation.name);
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        const bool isCell = i == 1 && operation.target == ETarget::Cell && inputs[i].kind == EValueKind::I2;
        const bool isColumn =
            i == 1 && operation.target == ETarget::Column && inputs[i].kind == EValueKind::UI1;
        const bool isAddress =
            i == 0 && operation.target != ETarget::Link && inputs[i].kind == EValueKind::UI1;
        text += " ";
        if (isColumn) {
            AppendHexByte(text, static_cast<std::uint8_t>(inputs[i].number));
        } else if (isAddress) {
            text += std::to_string(inputs[i].number);
        } else {
            text += isCell ? CellText(inputs[i].number) : ValueText(inputs[i]);
        }
    }
    return text;
}

std::string StatusText(const SRecordedValue& status) {
    if (status.kind != EValueKind::I4) {
        return ValueText(status);
    }
    char text[16];
    std::snprintf(text, sizeof text, "0x%04X", static_cast<unsigned>(status.number));
    return text;
}

} // namespace ruvo
