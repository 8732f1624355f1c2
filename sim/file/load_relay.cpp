// Relays: where they are reached, who they are, their cells and columns.
#include "link/seam/known_cells.h"
#include "model/values/type_codes.h"
#include "sim/file/load_tables.h"
#include "sim/file/substation_error.h"
#include "sim/file/tagged_value.h"
#include "sim/file/toml_values.h"

#include <array>

namespace ruvo::sim {
namespace {

constexpr std::int64_t kMaxAddress = 255;
constexpr std::int64_t kMaxBus = 32767;

struct SIdentityRow {
    std::string_view key;
    CellAddress cell;
};
constexpr std::array kIdentityRows{SIdentityRow{"description", cells::kDescription},
                                   SIdentityRow{"plant", cells::kPlant}, SIdentityRow{"model", cells::kModel},
                                   SIdentityRow{"serial", cells::kSerialNumber},
                                   SIdentityRow{"software", cells::kSoftware}};

std::uint8_t AddressOf(CTableReader& table) {
    return static_cast<std::uint8_t>(table.RequireInteger("address", 0, kMaxAddress));
}

void ReadSerialAddress(CTableReader& relay, SRelay& model) {
    const STomlNode* node = relay.Find("serial");
    if (node == nullptr) {
        return;
    }
    SSerialAddress place;
    if (node->kind == ETomlKind::Integer) {
        place.address = static_cast<std::uint8_t>(ReadInteger(*node, 0, kMaxAddress, "serial"));
    } else {
        CTableReader table(*node, "serial");
        place.port = table.Text("port").value_or("");
        place.address = AddressOf(table);
        table.RejectUnknownKeys();
    }
    model.serial = place;
}

void ReadModemAddress(CTableReader& relay, SRelay& model) {
    if (const STomlNode* node = relay.Find("modem")) {
        CTableReader table(*node, "modem");
        model.modem = SModemAddress{table.RequireText("number"), AddressOf(table)};
        table.RejectUnknownKeys();
    }
}

void ReadEthernetAddress(CTableReader& relay, SRelay& model) {
    if (const STomlNode* node = relay.Find("ethernet")) {
        CTableReader table(*node, "ethernet");
        const auto bus = static_cast<int>(table.Integer("bus", 0, kMaxBus).value_or(0));
        model.ethernet = SEthernetAddress{table.RequireText("ip"), bus, AddressOf(table)};
        table.RejectUnknownKeys();
    }
}

void ReadIdentity(CTableReader& relay, SRelay& model) {
    const STomlNode* node = relay.Find("identity");
    if (node == nullptr) {
        return;
    }
    CTableReader table(*node, "identity");
    for (const SIdentityRow& row : kIdentityRows) {
        if (const STomlNode* text = table.Find(row.key)) {
            model.cells[row.cell] = MakeValueCell(kTypeText, ReadRelayText(*text, row.key));
        }
    }
    table.RejectUnknownKeys();
}

// Several values of one cell travel with one type code and one size, so they must share them.
void ReadCellValues(CTableReader& table, SCell& cell) {
    const std::vector<STomlNode>& items = table.Items("values");
    for (const STomlNode& item : items) {
        const STypedBytes value = ReadTypedBytes(item, "values");
        if (&item == &items.front()) {
            cell.type = value.type;
            cell.size = static_cast<std::uint8_t>(value.bytes.size());
        } else if (value.type != cell.type || value.bytes.size() != cell.size) {
            throw CSubstationError(item.line, "the values of one cell have one type and one size");
        }
        cell.data.insert(cell.data.end(), value.bytes.begin(), value.bytes.end());
    }
}

void ReadCellValue(CTableReader& table, SCell& cell) {
    const std::optional<STypedBytes> value = FindValue(table);
    const bool several = table.Find("values") != nullptr;
    if (value.has_value() == several) {
        throw CSubstationError(table.Line(), table.Name() + " needs a value, or the key \"values\"");
    }
    if (several) {
        ReadCellValues(table, cell);
        return;
    }
    cell.type = value->type;
    cell.data = value->bytes;
    const auto whole = static_cast<std::int64_t>(value->bytes.size());
    cell.size = static_cast<std::uint8_t>(table.Integer("element_size", 0, kMaxAddress).value_or(whole));
}

SCell ReadCell(const STomlNode& node, const std::string& what) {
    if (node.kind == ETomlKind::Text) {
        return MakeValueCell(kTypeText, ReadRelayText(node, what));
    }
    CTableReader table(node, what);
    SCell cell;
    cell.replyCode = static_cast<std::uint8_t>(table.Integer("answers", 1, kMaxAddress).value_or(0));
    // A cell that only ever refuses has nothing to show.
    if (cell.replyCode == 0) {
        ReadCellValue(table, cell);
    }
    cell.limits = ReadValues(table, "limits");
    cell.strings = ReadValues(table, "strings");
    if (const STomlNode* label = table.Find("label")) {
        cell.label = ReadValue(*label, "label");
    }
    cell.writable = table.Flag("writable", false);
    cell.listed = table.Flag("listed", true);
    table.RejectUnknownKeys();
    return cell;
}

SListing ReadListing(CTableReader& table) {
    return {ReadValues(table, "locations"), ReadValues(table, "texts"), ReadValues(table, "values"),
            ReadValues(table, "limits")};
}

std::optional<SListing> FindListing(CTableReader& table) {
    const STomlNode* node = table.Find("listing");
    if (node == nullptr) {
        return std::nullopt;
    }
    CTableReader listing(*node, "listing");
    SListing result = ReadListing(listing);
    listing.RejectUnknownKeys();
    return result;
}

SColumn ReadColumn(const STomlNode& node, const std::string& what) {
    CTableReader table(node, what);
    SColumn column;
    const std::string form = table.Text("locations").value_or("menu");
    if (form != "menu" && form != "uint") {
        throw CSubstationError(table.Find("locations")->line,
                               "locations: expected \"menu\" or \"uint\", found \"" + form + "\"");
    }
    column.unsignedLocations = form == "uint";
    column.listing = FindListing(table);
    table.RejectUnknownKeys();
    return column;
}

SRecord ReadRecord(const STomlNode& node) {
    CTableReader table(node, "[[relay.record]]");
    SRecord record;
    record.column = ParseColumn(table.RequireText("column"), table.Line());
    record.number = static_cast<std::uint32_t>(table.RequireInteger("number", 0, kMaxUnsigned32));
    if (const STomlNode* cells = table.Find("cells")) {
        record.cells = ReadCells(*cells, "record");
    }
    for (const auto& [address, cell] : record.cells) {
        if (ColumnOf(address) != record.column || RowOf(address) == rows::kSelectRecord) {
            throw CSubstationError(table.Line(),
                                   "a record's cells are in its own column, in rows other than 01");
        }
    }
    record.listing = FindListing(table);
    table.RejectUnknownKeys();
    return record;
}

} // namespace

CellMap ReadCells(const STomlNode& node, const std::string& what) {
    RequireKind(node, ETomlKind::Table, "cells");
    CellMap cells;
    for (std::size_t i = 0; i < node.keys.size(); ++i) {
        const auto& [name, line] = node.keys[i];
        std::string cell = what;
        cell.append(" cell ").append(name);
        cells[ParseCellAddress(name, line)] = ReadCell(node.items[i], cell);
    }
    return cells;
}

void ReadColumns(CTableReader& table, SRelay& relay) {
    if (const STomlNode* columns = table.Find("columns")) {
        RequireKind(*columns, ETomlKind::Table, "columns");
        for (std::size_t i = 0; i < columns->keys.size(); ++i) {
            const auto& [name, line] = columns->keys[i];
            relay.columns[ParseColumn(name, line)] = ReadColumn(columns->items[i], "column " + name);
        }
    }
    for (const STomlNode& node : table.Items("record")) {
        SRecord record = ReadRecord(node);
        SCell selector = MakeValueCell(kTypeUint, LittleEndian(0, 2));
        selector.listed = false;
        selector.writable = true;
        // A selection cell that the file describes itself stays as it is.
        relay.cells.try_emplace(MakeCellAddress(record.column, rows::kSelectRecord), selector);
        relay.records.push_back(std::move(record));
    }
}

SRelay ReadRelay(const STomlNode& node, std::size_t number) {
    CTableReader table(node, "[[relay]]");
    SRelay relay;
    relay.name = table.Text("name").value_or("relay " + std::to_string(number));
    ReadSerialAddress(table, relay);
    ReadModemAddress(table, relay);
    ReadEthernetAddress(table, relay);
    if (!relay.serial && !relay.modem && !relay.ethernet) {
        throw CSubstationError(node.line, "[[relay]] needs \"serial\", \"modem\" or \"ethernet\"");
    }
    ReadIdentity(table, relay);
    if (const STomlNode* cells = table.Find("cells")) {
        for (auto& [address, cell] : ReadCells(*cells, "relay")) {
            relay.cells.insert_or_assign(address, cell);
        }
    }
    relay.statusByte = static_cast<std::uint8_t>(table.Integer("status_byte", 0, kMaxAddress).value_or(0));
    ReadColumns(table, relay);
    ReadAccess(table, relay);
    ReadEvents(table, relay);
    table.RejectUnknownKeys();
    return relay;
}

} // namespace ruvo::sim
