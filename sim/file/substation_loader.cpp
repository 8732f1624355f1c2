#include "platform/full_path.h"
#include "platform/text_file.h"
#include "sim/file/load_tables.h"
#include "sim/file/substation.h"
#include "sim/file/substation_error.h"

#include <algorithm>

namespace ruvo::sim {
namespace {

constexpr std::int64_t kMaxSpeed = 1000000;

std::string ReadPath(CTableReader& table, std::string_view key, const std::string& folder) {
    const std::optional<std::string> name = table.Text(key);
    if (!name) {
        return {};
    }
    // A name that begins with a separator or a drive is complete, any other is relative to the folder.
    const bool complete = name->find_first_of("\\/") == 0 || name->find(':') == 1;
    std::string path = FullPath(complete ? *name : folder + "\\" + *name);
    if (path.empty()) {
        throw CSubstationError(table.Find(key)->line, std::string(key) + ": not the name of a file");
    }
    return path;
}

template <typename Address>
bool SameAddress(const std::optional<Address>& left, const std::optional<Address>& right) {
    return left && right && *left == *right;
}

// Two relays at one address would talk over each other, which no bus allows.
void RequireUniqueAddress(const SRelay& relay, const std::vector<SRelay>& others, std::size_t line) {
    for (const SRelay& other : others) {
        if (other.name == relay.name) {
            throw CSubstationError(line, "two relays are named \"" + relay.name + "\"");
        }
        if (SameAddress(relay.serial, other.serial) || SameAddress(relay.modem, other.modem) ||
            SameAddress(relay.ethernet, other.ethernet)) {
            throw CSubstationError(line, "\"" + relay.name + "\" is where \"" + other.name + "\" is");
        }
    }
}

void RequirePort(const SRelay& relay, const SLink& link, std::size_t line) {
    const auto named = [&](const SSerialPort& port) { return port.port == relay.serial->port; };
    if (relay.serial && !relay.serial->port.empty() &&
        std::none_of(link.serial.begin(), link.serial.end(), named)) {
        throw CSubstationError(line, "the link has no serial port \"" + relay.serial->port + "\"");
    }
}

// The state file has a line per name.
void RequirePlainName(const SRelay& relay, std::size_t line) {
    const auto control = [](char character) { return static_cast<unsigned char>(character) < ' '; };
    if (relay.name.empty() || std::any_of(relay.name.begin(), relay.name.end(), control)) {
        throw CSubstationError(line, "a relay's name has one character or more, and no control characters");
    }
}

std::unique_ptr<SSubstation> BuildSubstation(const STomlNode& root, const std::string& folder) {
    auto substation = std::make_unique<SSubstation>();
    CTableReader table(root, "a substation");
    substation->stateFile = ReadPath(table, "state", folder);
    substation->accountFile = ReadPath(table, "account", folder);
    if (!substation->stateFile.empty() && !substation->accountFile.empty()) {
        throw CSubstationError(table.Find("account")->line,
                               "a substation takes \"state\" or \"account\", not both");
    }
    substation->traceFile = ReadPath(table, "trace", folder);
    substation->speed = static_cast<std::uint32_t>(table.Integer("speed", 1, kMaxSpeed).value_or(1));
    if (const STomlNode* link = table.Find("link")) {
        substation->link = ReadLink(*link);
    }
    for (const STomlNode& node : table.Items("relay")) {
        SRelay relay = ReadRelay(node, substation->relays.size() + 1);
        RequirePlainName(relay, node.line);
        RequirePort(relay, substation->link, node.line);
        RequireUniqueAddress(relay, substation->relays, node.line);
        substation->relays.push_back(std::move(relay));
    }
    for (const STomlNode& node : table.Items("fault")) {
        substation->faults.push_back(ReadFault(node, substation->relays));
    }
    table.RejectUnknownKeys();
    return substation;
}

std::string FolderOf(const std::string& path) {
    return path.substr(0, path.find_last_of('\\'));
}

} // namespace

SLoadedSubstation ReadSubstation(std::string_view text, const std::string& name, const std::string& folder) {
    try {
        return {BuildSubstation(ParseToml(text), folder), {}};
    } catch (const CSubstationError& error) {
        return {nullptr, name + ":" + std::to_string(error.Line()) + ": " + error.what()};
    }
}

SLoadedSubstation LoadSubstation(const std::string& path) {
    const std::string fullPath = FullPath(path);
    std::string text;
    if (fullPath.empty() || !ReadTextFile(fullPath, text)) {
        return {nullptr, DisplayPath(path) + ":1: the file cannot be read"};
    }
    return ReadSubstation(text, DisplayPath(path), FolderOf(fullPath));
}

} // namespace ruvo::sim
