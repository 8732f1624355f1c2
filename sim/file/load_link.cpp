#include "sim/file/load_tables.h"
#include "sim/file/substation_error.h"

#include <algorithm>

namespace ruvo::sim {
namespace {

constexpr std::int64_t kMaxStatus = 255;

LinkStatus ReadStatus(CTableReader& table) {
    return static_cast<LinkStatus>(table.Integer("status", 0, kMaxStatus).value_or(0));
}

SSerialPort ReadPort(const STomlNode& node) {
    SSerialPort port;
    if (node.kind == ETomlKind::Text) {
        port.port = node.text;
        return port;
    }
    CTableReader table(node, "serial port");
    port.port = table.RequireText("port");
    port.parameters = table.Text("parameters");
    port.status = ReadStatus(table);
    table.RejectUnknownKeys();
    return port;
}

std::vector<SDestination> ReadDestinations(CTableReader& link, std::string_view list, std::string_view key) {
    std::vector<SDestination> destinations;
    for (const STomlNode& node : link.Items(list)) {
        SDestination destination;
        if (node.kind == ETomlKind::Text) {
            destination.name = node.text;
        } else {
            CTableReader table(node, std::string(list) + " entry");
            destination.name = table.RequireText(key);
            destination.status = ReadStatus(table);
            table.RejectUnknownKeys();
        }
        destinations.push_back(std::move(destination));
    }
    return destinations;
}

} // namespace

SLink ReadLink(const STomlNode& node) {
    SLink link;
    CTableReader table(node, "[link]");
    for (const STomlNode& item : table.Items("serial")) {
        link.serial.push_back(ReadPort(item));
    }
    for (const STomlNode& item : table.Items("modems")) {
        RequireKind(item, ETomlKind::Text, "modems");
        link.modems.push_back(item.text);
    }
    link.numbers = ReadDestinations(table, "numbers", "number");
    link.ethernet = ReadDestinations(table, "ethernet", "ip");
    table.RejectUnknownKeys();
    return link;
}

} // namespace ruvo::sim
