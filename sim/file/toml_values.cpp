#include "sim/file/toml_values.h"

#include "model/values/parlane_number.h"
#include "model/values/parlane_time.h"
#include "model/values/type_codes.h"
#include "sim/file/relay_text.h"
#include "sim/file/substation_error.h"
#include "sim/file/tagged_value.h"

#include <array>
#include <bit>
#include <cmath>

namespace ruvo::sim {
namespace {

constexpr std::size_t kMaxData = 255;

struct SValueRow;
// Everything that an encoder looks at: the value's own node and, for its options, the table around it.
struct SSource {
    const STomlNode& node;
    CTableReader& table;
    const SValueRow& row;
};

struct SValueRow {
    std::string_view key;
    std::uint32_t type;
    std::size_t minimumSize; ///< of an integer kind; the kinds without a choice of size have 0
    std::size_t size;
    std::size_t maximumSize;
    STypedBytes (*encode)(const SSource& source);
};

STypedBytes Typed(const SSource& source, Variant::Bytes bytes) {
    return {static_cast<std::uint8_t>(source.row.type), std::move(bytes)};
}

Variant::Bytes WireBytesOf(const CParlaneData& value) {
    Variant::Bytes bytes(value.GetSize());
    std::uint32_t type = 0;
    std::size_t size = 0;
    value.GetWireBytes(bytes, type, size);
    return bytes;
}

std::size_t ReadSize(const SSource& source) {
    const SValueRow& row = source.row;
    const auto size =
        static_cast<std::size_t>(source.table
                                     .Integer("size", static_cast<std::int64_t>(row.minimumSize),
                                              static_cast<std::int64_t>(row.maximumSize))
                                     .value_or(static_cast<std::int64_t>(row.size)));
    if (row.type == kTypeInt && size == 3) {
        throw CSubstationError(source.node.line, "size: an int has 1, 2 or 4 bytes");
    }
    return size;
}

STypedBytes EncodeUnsigned(const SSource& source) {
    const std::size_t size = ReadSize(source);
    const std::int64_t maximum = (std::int64_t{1} << (8 * size)) - 1;
    const std::int64_t value = ReadInteger(source.node, 0, maximum, source.row.key);
    return Typed(source, LittleEndian(static_cast<std::uint64_t>(value), size));
}

STypedBytes EncodeSigned(const SSource& source) {
    const std::size_t size = ReadSize(source);
    const std::int64_t limit = std::int64_t{1} << (8 * size - 1);
    const std::int64_t value = ReadInteger(source.node, -limit, limit - 1, source.row.key);
    return Typed(source, LittleEndian(static_cast<std::uint64_t>(value), size));
}

// With "width", a text is padded with blanks, as the texts of a relay's display are.
Variant::Bytes Padded(const SSource& source, Variant::Bytes bytes) {
    const auto width = source.table.Integer("width", 0, kMaxData);
    if (width && bytes.size() > static_cast<std::size_t>(*width)) {
        throw CSubstationError(source.node.line, std::string(source.row.key) + ": longer than its width");
    }
    if (width) {
        bytes.resize(static_cast<std::size_t>(*width), ' ');
    }
    return bytes;
}

STypedBytes EncodeText(const SSource& source) {
    return Typed(source, Padded(source, ReadRelayText(source.node, source.row.key)));
}

STypedBytes EncodePassword(const SSource& source) {
    const std::string text = ReadPasswordText(source.node);
    return Typed(source, Padded(source, Variant::Bytes(text.begin(), text.end())));
}

double ReadReal(const STomlNode& node, std::string_view what) {
    if (node.kind == ETomlKind::Integer) {
        return static_cast<double>(node.integer);
    }
    RequireKind(node, ETomlKind::Real, what);
    return node.real;
}

std::uint8_t ReadUnit(const SSource& source) {
    const STomlNode* unit = source.table.Find("unit");
    if (unit == nullptr) {
        return 15; // the unit without a name that takes no prefix
    }
    if (unit->kind == ETomlKind::Integer) {
        return static_cast<std::uint8_t>(ReadInteger(*unit, 0, kMaxData, "unit"));
    }
    RequireKind(*unit, ETomlKind::Text, "unit");
    for (std::size_t code = 0; code < kUnits.size(); ++code) {
        if (kUnits[code].name == unit->text) {
            return static_cast<std::uint8_t>(code);
        }
    }
    throw CSubstationError(unit->line, "there is no unit \"" + unit->text + "\"");
}

STypedBytes EncodeNumber(const SSource& source) {
    const bool longForm = source.table.Flag("long", false);
    const double value = ReadReal(source.node, source.row.key);
    if (!std::isfinite(value)) {
        throw CSubstationError(source.node.line, "number: expected a finite number");
    }
    const CParlaneNumber number(value, ReadUnit(source), longForm ? ENumberForm::Long : ENumberForm::Short);
    return {static_cast<std::uint8_t>(longForm ? kTypeLongNumber : kTypeShortNumber), WireBytesOf(number)};
}

STypedBytes EncodeFloat(const SSource& source) {
    const auto value = static_cast<float>(ReadReal(source.node, source.row.key));
    return Typed(source, LittleEndian(std::bit_cast<std::uint32_t>(value), sizeof value));
}

void RequireRelayTime(const STomlNode& node) {
    RequireKind(node, ETomlKind::Time, "time");
    constexpr int kFirstYear = 1980;
    constexpr int kLastYear = 2079;
    if (node.time.year < kFirstYear || node.time.year > kLastYear) {
        throw CSubstationError(node.line, "time: expected a year from 1980 to 2079");
    }
}

CParlaneIEC870 RelayTime(const STomlTime& time) {
    CParlaneIEC870 value;
    value.SetMilliseconds(static_cast<unsigned>(time.milliseconds));
    value.SetMinute(static_cast<unsigned>(time.minute));
    value.SetHour(static_cast<unsigned>(time.hour));
    value.SetDay(static_cast<unsigned>(time.day));
    value.SetMonth(static_cast<unsigned>(time.month));
    value.SetYear(static_cast<unsigned>(time.year) % 100);
    return value;
}

STypedBytes EncodeTime(const SSource& source) {
    RequireRelayTime(source.node);
    CParlaneIEC870 time = RelayTime(source.node.time);
    time.SetInvalid(source.table.Flag("invalid_time", false));
    time.SetSummerTime(source.table.Flag("summer_time", false));
    return Typed(source, WireBytesOf(time));
}

STypedBytes EncodeMenu(const SSource& source) {
    RequireKind(source.node, ETomlKind::Text, source.row.key);
    return Typed(source, LittleEndian(ParseCellAddress(source.node.text, source.node.line), 2));
}

STypedBytes EncodeBytes(const SSource& source) {
    RequireKind(source.node, ETomlKind::Text, source.row.key);
    return Typed(source, ParseHexBytes(source.node.text, source.node.line));
}

STypedBytes EncodeInvalid(const SSource& source) {
    RequireKind(source.node, ETomlKind::Flag, source.row.key);
    return Typed(source, {});
}

STypedBytes EncodeAnyType(const SSource& source) {
    const auto type = static_cast<std::uint8_t>(ReadInteger(source.node, 0, kMaxData, source.row.key));
    return {type, ParseHexBytes(source.table.RequireText("bytes"), source.node.line)};
}

constexpr std::array kValueRows{
    SValueRow{"text", kTypeText, 0, 0, 0, EncodeText},
    SValueRow{"password", kTypePassword, 0, 0, 0, EncodePassword},
    SValueRow{"flags", kTypeFlags, 1, 2, 4, EncodeUnsigned},
    SValueRow{"uint", kTypeUint, 1, 2, 4, EncodeUnsigned},
    SValueRow{"int", kTypeInt, 1, 2, 4, EncodeSigned},
    SValueRow{"number", kTypeShortNumber, 0, 0, 0, EncodeNumber},
    SValueRow{"float", kTypeFloat, 0, 0, 0, EncodeFloat},
    SValueRow{"timer", kTypeTimer, 4, 4, 4, EncodeUnsigned},
    SValueRow{"time", kTypeIEC870, 0, 0, 0, EncodeTime},
    SValueRow{"menu", kTypeMenu, 0, 0, 0, EncodeMenu},
    SValueRow{"reply", kTypeReply, 1, 1, 2, EncodeUnsigned},
    SValueRow{"index", kTypeStringIndex, 1, 2, 2, EncodeUnsigned},
    SValueRow{"hex", kTypeHex, 0, 0, 0, EncodeBytes},
    SValueRow{"modem", kTypeModem, 0, 0, 0, EncodeBytes},
    SValueRow{"encrypted", kTypeEncryptedPassword, 0, 0, 0, EncodeBytes},
    SValueRow{"invalid", kTypeInvalid, 0, 0, 0, EncodeInvalid},
    SValueRow{"type", 0, 0, 0, 0, EncodeAnyType},
};

std::optional<Variant> FindUntypedValue(CTableReader& table) {
    if (const auto raw = table.Text("raw")) {
        return Variant::FromBytes(ParseHexBytes(*raw, table.Line()));
    }
    if (table.Flag("none", false)) {
        return Variant();
    }
    return table.Flag("other", false) ? std::optional(Variant::Other()) : std::nullopt;
}

std::string WantedValue(std::string_view what) {
    return std::string(what) + ": expected a value such as \"a text\" or { uint = 1 }";
}

} // namespace

std::optional<STypedBytes> FindValue(CTableReader& table) {
    std::optional<STypedBytes> value;
    for (const SValueRow& row : kValueRows) {
        const STomlNode* node = table.Find(row.key);
        if (node == nullptr) {
            continue;
        }
        if (value) {
            throw CSubstationError(node->line, table.Name() + " has more than one value");
        }
        value = row.encode(SSource{*node, table, row});
        if (value->bytes.size() > kMaxData) {
            throw CSubstationError(node->line, std::string(row.key) + ": a value has at most 255 bytes");
        }
    }
    return value;
}

STypedBytes ReadTypedBytes(const STomlNode& node, std::string_view what) {
    if (node.kind == ETomlKind::Text) {
        return {kTypeText, ReadRelayText(node, what)};
    }
    if (node.kind != ETomlKind::Table) {
        throw CSubstationError(node.line, WantedValue(what));
    }
    CTableReader table(node, std::string(what));
    std::optional<STypedBytes> value = FindValue(table);
    table.RejectUnknownKeys();
    if (!value) {
        throw CSubstationError(node.line, WantedValue(what));
    }
    return *value;
}

Variant ReadValue(const STomlNode& node, std::string_view what) {
    if (node.kind == ETomlKind::Time) {
        RequireRelayTime(node);
        return TaggedValue(kTypeIEC870, WireBytesOf(RelayTime(node.time)));
    }
    if (node.kind == ETomlKind::Table) {
        CTableReader table(node, std::string(what));
        if (const std::optional<Variant> noValue = FindUntypedValue(table)) {
            table.RejectUnknownKeys();
            return *noValue;
        }
    }
    const STypedBytes value = ReadTypedBytes(node, what);
    return TaggedValue(value.type, value.bytes);
}

Variant::List ReadValues(CTableReader& table, std::string_view key) {
    Variant::List values;
    for (const STomlNode& item : table.Items(key)) {
        values.push_back(ReadValue(item, key));
    }
    return values;
}

Variant::Bytes ReadRelayText(const STomlNode& node, std::string_view what) {
    RequireKind(node, ETomlKind::Text, what);
    std::optional<Variant::Bytes> text = EncodeRelayText(node.text);
    if (!text) {
        throw CSubstationError(node.line, std::string(what) + ": has a character that relays lack");
    }
    if (text->size() > kMaxData) {
        throw CSubstationError(node.line, std::string(what) + ": a text has at most 255 characters");
    }
    return std::move(*text);
}

std::string ReadPasswordText(const STomlNode& node) {
    RequireKind(node, ETomlKind::Text, "password");
    std::optional<std::string> text = Utf8ToCp1252(node.text);
    if (!text) {
        throw CSubstationError(node.line, "password: has a character that code page 1252 lacks");
    }
    return std::move(*text);
}

} // namespace ruvo::sim
