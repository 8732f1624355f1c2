// The loader of substation files. Input: the file's text.
#include "fuzz/support/require.h"

#include "sim/file/substation.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace ruvo::fuzz {

namespace {

using namespace ruvo::sim;

/// A generator may be asked for a million events, which would say nothing about the loader and take all day.
bool AsksForMany(const std::string& text) {
    for (std::size_t at = text.find("count"); at != std::string::npos; at = text.find("count", at + 1)) {
        const std::size_t number = text.find_first_not_of(" \t=\"'+", at + 5);
        if (number == std::string::npos) {
            return false;
        }
        const std::size_t end = text.find_first_not_of("0123456789abcdefABCDEFxo_", number);
        if ((end == std::string::npos ? text.size() : end) - number > 2) {
            return true;
        }
    }
    return text.find("\\u") != std::string::npos && text.find("generate") != std::string::npos;
}

void CheckCells(const CellMap& cells) {
    for (const auto& [address, cell] : cells) {
        Require(cell.size > 0 ? cell.data.size() % cell.size == 0 : cell.data.empty(),
                "a cell's data is values of its size");
    }
}

void CheckSubstation(const SSubstation& substation) {
    for (auto relay = substation.relays.begin(); relay != substation.relays.end(); ++relay) {
        Require(!relay->name.empty(), "a relay has a name");
        Require(std::none_of(substation.relays.begin(), relay,
                             [&](const SRelay& other) { return other.name == relay->name; }),
                "no two relays have one name");
        Require(std::none_of(substation.relays.begin(), relay,
                             [&](const SRelay& other) {
                                 return (relay->serial && relay->serial == other.serial) ||
                                        (relay->modem && relay->modem == other.modem) ||
                                        (relay->ethernet && relay->ethernet == other.ethernet);
                             }),
                "no two relays are in one place");
        CheckCells(relay->cells);
        for (const SRecord& record : relay->records) {
            CheckCells(record.cells);
        }
    }
    for (const SFault& fault : substation.faults) {
        Require(fault.firstCall >= 1 && fault.firstCall <= fault.lastCall, "a fault has calls to hit");
    }
    for (const std::string* path : {&substation.stateFile, &substation.traceFile}) {
        Require(path->empty() || path->size() < 260, "a file has a full path");
    }
}

void CheckError(const std::string& text, const std::string& error) {
    Require(error.starts_with("f:"), "an error begins with the file");
    const auto line = std::strtoull(error.c_str() + 2, nullptr, 10);
    const auto lines = static_cast<std::size_t>(std::ranges::count(text, '\n')) + 1;
    Require(line >= 1 && line <= lines + 1, "an error names a line of the file");
    Require(error.find(": ") != std::string::npos && error.find(": ") + 2 < error.size(),
            "an error has a reason");
}

void Check(const std::string& text) {
    if (AsksForMany(text)) {
        return;
    }
    const SLoadedSubstation loaded = ReadSubstation(text, "f", "C:\\sub");
    Require((loaded.substation != nullptr) == loaded.error.empty(), "there is a substation or a reason");
    if (loaded.substation != nullptr) {
        CheckSubstation(*loaded.substation);
    } else {
        CheckError(text, loaded.error);
    }
}

} // namespace

} // namespace ruvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ruvo::fuzz::Check(std::string(data, data + size));
    return 0;
}
