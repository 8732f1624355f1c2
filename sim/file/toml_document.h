// A TOML text as a tree of nodes that know their lines. The parser's own types stay inside the .cpp file: its
// header is slow to compile.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo::sim {

enum class ETomlKind : std::uint8_t { Table, Array, Text, Integer, Real, Flag, Time, Other };

/// A local date and time as written; milliseconds count from the start of the minute, as relays count them.
struct STomlTime {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int milliseconds = 0;
};

struct STomlKey {
    std::string name;
    std::size_t line = 0; ///< from 1
};

/// One value of the file. Only the member that belongs to the kind is filled.
struct STomlNode {
    ETomlKind kind = ETomlKind::Other;
    std::size_t line = 0; ///< from 1
    std::string text;     ///< UTF-8
    std::int64_t integer = 0;
    double real = 0.0;
    bool flag = false;
    STomlTime time;
    std::vector<STomlKey> keys;   ///< of a table, sorted
    std::vector<STomlNode> items; ///< of an array; of a table the value of each key
};

/// What a node is, for messages: "a text", "a table".
std::string_view KindName(ETomlKind kind);

/// Parses the text; throws CSubstationError when it is no TOML.
STomlNode ParseToml(std::string_view text);

} // namespace ruvo::sim
