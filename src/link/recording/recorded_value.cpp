#include "link/recording/recorded_value.h"

#include <limits>
#include <string>

namespace ruvo {

namespace {

constexpr std::uint8_t kFill = '0'; // also a digit of a key

std::span<const std::uint8_t> BytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// A number's kind and value; false for what is no number.
bool FillNumber(const Variant& value, SRecordedValue& recorded) {
    std::uint8_t byte = 0;
    std::int16_t word = 0;
    std::int32_t number = 0;
    if (!value.ToI4(number)) {
        return false;
    }
    recorded.number = number;
    if (value.ToUI1(byte) && value == Variant::FromUI1(byte)) {
        recorded.kind = EValueKind::UI1;
    } else if (value.ToI2(word) && value == Variant::FromI2(word)) {
        recorded.kind = EValueKind::I2;
    } else if (value == Variant::FromI4(number)) {
        recorded.kind = EValueKind::I4;
    } else {
        return false;
    }
    return true;
}

SRecordedValue NumberValue(EValueKind kind, std::int32_t number) {
    SRecordedValue value;
    value.kind = kind;
    value.number = number;
    return value;
}

void FillLists(const Variant& value, SRecordedValue& recorded, unsigned depth) {
    if (const Variant::Words* words = value.AsWords()) {
        recorded.kind = EValueKind::Words;
        for (const std::int16_t word : *words) {
            recorded.items.push_back(NumberValue(EValueKind::I2, word));
        }
    } else if (const Variant::List* list = value.AsList(); list != nullptr && depth < kMaxValueDepth) {
        recorded.kind = EValueKind::List;
        recorded.items.reserve(list->size());
        for (const Variant& item : *list) {
            recorded.items.push_back(RecordedValue(item, depth + 1));
        }
    } else {
        recorded.kind = EValueKind::Other;
    }
}

void AppendBytes(Variant::Bytes& out, std::span<const std::uint8_t> bytes) {
    AppendNumber(out, bytes.size());
    out.insert(out.end(), bytes.begin(), bytes.end());
}

void AppendLittleEndian(Variant::Bytes& out, std::int32_t number, unsigned size) {
    for (unsigned i = 0; i < size; ++i) {
        out.push_back(static_cast<std::uint8_t>(static_cast<std::uint32_t>(number) >> (8U * i)));
    }
}

bool TakeBytes(CByteCursor& cursor, std::span<const std::uint8_t>& bytes) {
    std::uint64_t count = 0;
    return TakeNumber(cursor, count) && count <= cursor.Remaining() &&
           cursor.TakeBytes(static_cast<std::size_t>(count), bytes);
}

bool TakeMasked(CByteCursor& cursor, SRecordedValue& value) {
    std::uint8_t form = 0;
    std::uint64_t length = 0;
    if (!cursor.TakeByte(form) || form < static_cast<std::uint8_t>(EMaskedForm::Tagged) ||
        form > static_cast<std::uint8_t>(EMaskedForm::Other) || !cursor.TakeByte(value.type) ||
        !TakeNumber(cursor, length) || length > kMaxRecordingEntry) {
        return false;
    }
    value.form = static_cast<EMaskedForm>(form);
    value.length = length == 0 ? std::nullopt : std::optional(static_cast<std::size_t>(length - 1));
    return true;
}

bool TakeItems(CByteCursor& cursor, SRecordedValue& value, unsigned depth) {
    std::uint64_t count = 0;
    // Every item has a byte at least, so a count that cannot be true is not believed.
    if (!TakeNumber(cursor, count) || count > cursor.Remaining() || depth >= kMaxValueDepth) {
        return false;
    }
    for (std::uint64_t i = 0; i < count; ++i) {
        std::uint16_t word = 0;
        SRecordedValue item;
        if (value.kind == EValueKind::List ? !TakeValue(cursor, item, depth + 1) : !cursor.TakeWord(word)) {
            return false;
        }
        value.items.push_back(value.kind == EValueKind::List
                                  ? std::move(item)
                                  : NumberValue(EValueKind::I2, static_cast<std::int16_t>(word)));
    }
    return true;
}

bool TakeContents(CByteCursor& cursor, SRecordedValue& value, unsigned depth) {
    std::uint8_t byte = 0;
    std::uint16_t word = 0;
    std::uint32_t number = 0;
    bool isTaken = true;
    switch (value.kind) {
    case EValueKind::Empty:
    case EValueKind::Other:
        return true;
    case EValueKind::UI1:
        isTaken = cursor.TakeByte(byte);
        value.number = byte;
        return isTaken;
    case EValueKind::I2:
        isTaken = cursor.TakeWord(word);
        value.number = static_cast<std::int16_t>(word);
        return isTaken;
    case EValueKind::I4:
        isTaken = cursor.TakeDoubleWord(number);
        value.number = static_cast<std::int32_t>(number);
        return isTaken;
    case EValueKind::Text:
    case EValueKind::Bytes:
        return TakeBytes(cursor, value.bytes);
    case EValueKind::Words:
    case EValueKind::List:
        return TakeItems(cursor, value, depth);
    case EValueKind::Masked:
        return TakeMasked(cursor, value);
    }
    return false;
}

Variant MaskedVariant(const SRecordedValue& value) {
    constexpr std::size_t kHead = 2; // type code and length
    const std::size_t length = value.length.value_or(0);
    Variant::Bytes bytes(length, kFill);
    switch (value.form) {
    case EMaskedForm::Tagged:
        if (length >= kHead) {
            bytes[0] = value.type;
            bytes[1] = static_cast<std::uint8_t>(length - kHead);
        }
        return Variant::FromBytes(std::move(bytes));
    case EMaskedForm::Bytes:
        return Variant::FromBytes(std::move(bytes));
    case EMaskedForm::Text:
        return Variant::FromText(std::string(length, static_cast<char>(kFill)));
    case EMaskedForm::Other:
        break;
    }
    return Variant::Other();
}

Variant ListVariant(const SRecordedValue& value) {
    if (value.kind == EValueKind::Words) {
        Variant::Words words;
        for (const SRecordedValue& item : value.items) {
            words.push_back(static_cast<std::int16_t>(item.number));
        }
        return Variant::FromWords(std::move(words));
    }
    Variant::List list;
    list.reserve(value.items.size());
    for (const SRecordedValue& item : value.items) {
        list.push_back(ToVariant(item));
    }
    return Variant::FromList(std::move(list));
}

} // namespace

SRecordedValue RecordedValue(const Variant& value, unsigned depth) {
    SRecordedValue recorded;
    if (value.IsEmpty()) {
        return recorded;
    }
    if (const std::string* text = value.AsText()) {
        recorded.kind = EValueKind::Text;
        recorded.bytes = BytesOf(*text);
    } else if (const Variant::Bytes* bytes = value.AsBytes()) {
        recorded.kind = EValueKind::Bytes;
        recorded.bytes = *bytes;
    } else if (!FillNumber(value, recorded)) {
        FillLists(value, recorded, depth);
    }
    return recorded;
}

void AppendValue(Variant::Bytes& out, const SRecordedValue& value) {
    out.push_back(static_cast<std::uint8_t>(value.kind));
    switch (value.kind) {
    case EValueKind::Empty:
    case EValueKind::Other:
        break;
    case EValueKind::UI1:
        AppendLittleEndian(out, value.number, 1);
        break;
    case EValueKind::I2:
        AppendLittleEndian(out, value.number, 2);
        break;
    case EValueKind::I4:
        AppendLittleEndian(out, value.number, 4);
        break;
    case EValueKind::Text:
    case EValueKind::Bytes:
        AppendBytes(out, value.bytes);
        break;
    case EValueKind::Words:
        AppendNumber(out, value.items.size());
        for (const SRecordedValue& item : value.items) {
            AppendLittleEndian(out, item.number, 2);
        }
        break;
    case EValueKind::List:
        AppendNumber(out, value.items.size());
        for (const SRecordedValue& item : value.items) {
            AppendValue(out, item);
        }
        break;
    case EValueKind::Masked:
        out.push_back(static_cast<std::uint8_t>(value.form));
        out.push_back(value.type);
        AppendNumber(out, value.length ? *value.length + 1 : 0);
        break;
    }
}

bool TakeValue(CByteCursor& cursor, SRecordedValue& value, unsigned depth) {
    CByteCursor ahead = cursor;
    SRecordedValue taken;
    std::uint8_t kind = 0;
    if (!ahead.TakeByte(kind) || kind > static_cast<std::uint8_t>(EValueKind::Masked)) {
        return false;
    }
    taken.kind = static_cast<EValueKind>(kind);
    if (!TakeContents(ahead, taken, depth)) {
        return false;
    }
    value = std::move(taken);
    cursor = ahead;
    return true;
}

Variant ToVariant(const SRecordedValue& value) {
    switch (value.kind) {
    case EValueKind::Empty:
        return {};
    case EValueKind::UI1:
        return Variant::FromUI1(static_cast<std::uint8_t>(value.number));
    case EValueKind::I2:
        return Variant::FromI2(static_cast<std::int16_t>(value.number));
    case EValueKind::I4:
        return Variant::FromI4(value.number);
    case EValueKind::Text:
        return Variant::FromText(std::string(value.bytes.begin(), value.bytes.end()));
    case EValueKind::Bytes:
        return Variant::FromBytes(Variant::Bytes(value.bytes.begin(), value.bytes.end()));
    case EValueKind::Words:
    case EValueKind::List:
        return ListVariant(value);
    case EValueKind::Other:
        break;
    case EValueKind::Masked:
        return MaskedVariant(value);
    }
    return Variant::Other();
}

void AppendNumber(Variant::Bytes& out, std::uint64_t number) {
    constexpr unsigned kBits = 7;
    constexpr std::uint8_t kMore = 0x80;
    while (number >= kMore) {
        out.push_back(static_cast<std::uint8_t>(number) | kMore);
        number >>= kBits;
    }
    out.push_back(static_cast<std::uint8_t>(number));
}

bool TakeNumber(CByteCursor& cursor, std::uint64_t& number) {
    constexpr unsigned kBits = 7;
    constexpr std::uint8_t kMore = 0x80;
    constexpr unsigned kLastShift = 63;
    CByteCursor ahead = cursor;
    std::uint64_t taken = 0;
    for (unsigned shift = 0; shift <= kLastShift; shift += kBits) {
        std::uint8_t byte = 0;
        if (!ahead.TakeByte(byte) || (shift == kLastShift && byte > 1)) {
            return false;
        }
        taken |= static_cast<std::uint64_t>(byte & (kMore - 1U)) << shift;
        if ((byte & kMore) == 0) {
            number = taken;
            cursor = ahead;
            return true;
        }
    }
    return false;
}

} // namespace ruvo
