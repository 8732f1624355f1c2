#include "sim/file/toml_document.h"

#include "sim/file/substation_error.h"
#include "sim/file/toml_parser.h"

#include <array>

namespace ruvo::sim {
namespace {

constexpr std::array<std::string_view, 8> kKindNames{
    "a table",  "an array", "a text", "an integer",
    "a number", "a flag",   "a time", "a date, a time of day or a time with a zone"};

STomlTime TimeOf(const toml::date_time& value) {
    STomlTime time;
    time.year = value.date.year;
    time.month = value.date.month;
    time.day = value.date.day;
    time.hour = value.time.hour;
    time.minute = value.time.minute;
    constexpr unsigned kNanosecondsPerMillisecond = 1000000;
    time.milliseconds =
        value.time.second * 1000 + static_cast<int>(value.time.nanosecond / kNanosecondsPerMillisecond);
    return time;
}

STomlNode Convert(const toml::node& source);

void ConvertTable(const toml::table& source, STomlNode& node) {
    node.kind = ETomlKind::Table;
    for (const auto& [key, value] : source) {
        node.keys.push_back({std::string(key.str()), key.source().begin.line});
        node.items.push_back(Convert(value));
    }
}

void ConvertArray(const toml::array& source, STomlNode& node) {
    node.kind = ETomlKind::Array;
    for (const toml::node& item : source) {
        node.items.push_back(Convert(item));
    }
}

STomlNode Convert(const toml::node& source) {
    STomlNode node;
    node.line = source.source().begin.line;
    if (const toml::table* table = source.as_table()) {
        ConvertTable(*table, node);
    } else if (const toml::array* array = source.as_array()) {
        ConvertArray(*array, node);
    } else if (const auto* text = source.as_string()) {
        node.kind = ETomlKind::Text;
        node.text = text->get();
    } else if (const auto* integer = source.as_integer()) {
        node.kind = ETomlKind::Integer;
        node.integer = integer->get();
    } else if (const auto* real = source.as_floating_point()) {
        node.kind = ETomlKind::Real;
        node.real = real->get();
    } else if (const auto* flag = source.as_boolean()) {
        node.kind = ETomlKind::Flag;
        node.flag = flag->get();
    } else if (const auto* time = source.as_date_time(); time != nullptr && time->get().is_local()) {
        node.kind = ETomlKind::Time;
        node.time = TimeOf(time->get());
    }
    return node;
}

} // namespace

std::string_view KindName(ETomlKind kind) {
    return kKindNames[static_cast<std::size_t>(kind)];
}

STomlNode ParseToml(std::string_view text) {
    try {
        return Convert(toml::parse(text));
    } catch (const toml::parse_error& error) {
        throw CSubstationError(error.source().begin.line, std::string(error.description()));
    }
}

} // namespace ruvo::sim
