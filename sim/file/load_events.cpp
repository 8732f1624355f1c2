#include "link/seam/cell_address.h"
#include "model/records/event_kinds.h"
#include "sim/file/event_generator.h"
#include "sim/file/load_tables.h"
#include "sim/file/substation_error.h"
#include "sim/file/tagged_value.h"
#include "sim/file/toml_values.h"

namespace ruvo::sim {
namespace {

constexpr std::int64_t kMaxByte = 255;

Variant ReadMenu(const STomlNode& node, std::string_view what) {
    if (node.kind != ETomlKind::Text) {
        return ReadValue(node, what);
    }
    return TaggedMenu(ParseCellAddress(node.text, node.line));
}

Variant ReadId(const STomlNode& node) {
    if (node.kind != ETomlKind::Integer) {
        return ReadValue(node, "id");
    }
    return TaggedUnsigned(static_cast<std::uint32_t>(ReadInteger(node, 0, kMaxUnsigned32, "id")), 4);
}

void AddRecordReference(const STomlNode& node, Variant::List& values) {
    constexpr std::int64_t kMaxWord = 65535;
    CTableReader table(node, "record");
    const std::uint8_t column = ParseColumn(table.RequireText("column"), node.line);
    values.push_back(TaggedMenu(MakeCellAddress(column, 0)));
    values.push_back(
        TaggedUnsigned(static_cast<std::uint32_t>(table.RequireInteger("number", 0, kMaxWord)), 2));
    table.RejectUnknownKeys();
}

Variant::List ReadElements(CTableReader& table, const SEventKind& row) {
    Variant::List values;
    values.push_back(ReadMenu(table.Require("location"), "location"));
    values.push_back(ReadValue(table.Require("time"), "time"));
    values.push_back(ReadValue(table.Require("text"), "text"));
    values.push_back(ReadValue(table.Require("value"), "value"));
    if (row.hasId) {
        values.push_back(ReadId(table.Require("id")));
    }
    if (row.hasRecord) {
        AddRecordReference(table.Require("record"), values);
    }
    if (row.hasFormatText) {
        values.push_back(ReadValue(table.Require("format"), "format"));
    }
    if (row.hasFormatCell) {
        values.push_back(ReadMenu(table.Require("text_cell"), "text_cell"));
    }
    if (row.hasFormatText || row.hasFormatCell) {
        const Variant::List further = ReadValues(table, "values");
        values.insert(values.end(), further.begin(), further.end());
    }
    return values;
}

SEvent ReadEvent(const STomlNode& node) {
    CTableReader table(node, "[[relay.event]]");
    SEvent event;
    event.kind = static_cast<std::uint8_t>(table.RequireInteger("kind", 0, kMaxByte));
    if (table.Find("elements") != nullptr) {
        event.values = ReadValues(table, "elements");
    } else {
        event.values =
            ReadElements(table, event.kind < kEventKinds.size() ? kEventKinds[event.kind] : SEventKind{});
    }
    if (table.Find("more") != nullptr) {
        event.more = table.Flag("more", false);
    }
    table.RejectUnknownKeys();
    return event;
}

void ReadGenerator(const STomlNode& node, SRelay& relay) {
    constexpr std::int64_t kMaxCount = 1000000;
    CTableReader table(node, "generate");
    SGeneratorPlan plan;
    plan.count = static_cast<std::size_t>(table.RequireInteger("count", 0, kMaxCount));
    plan.seed = static_cast<std::uint64_t>(table.Integer("seed", 0, INT64_MAX).value_or(1));
    for (const STomlNode& item : table.Items("kinds")) {
        plan.kinds.push_back(static_cast<std::uint8_t>(
            ReadInteger(item, 0, static_cast<std::int64_t>(kEventKinds.size()) - 1, "kinds")));
    }
    if (plan.kinds.empty()) {
        plan.kinds.push_back(0);
    }
    relay.endless = table.Flag("endless", false);
    table.RejectUnknownKeys();
    if (const std::string error = GenerateEvents(plan, relay); !error.empty()) {
        throw CSubstationError(node.line, error);
    }
}

} // namespace

void ReadEvents(CTableReader& table, SRelay& relay) {
    for (const STomlNode& node : table.Items("event")) {
        relay.events.push_back(ReadEvent(node));
    }
    if (const STomlNode* generator = table.Find("generate")) {
        ReadGenerator(*generator, relay);
    }
}

} // namespace ruvo::sim
