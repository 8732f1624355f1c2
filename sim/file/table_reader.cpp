#include "sim/file/table_reader.h"

#include "base/text.h"
#include "sim/file/substation_error.h"

#include <algorithm>

namespace ruvo::sim {
namespace {

std::optional<std::uint8_t> HexByte(std::string_view text) {
    if (text.size() != 2 || HexDigitValue(text[0]) < 0 || HexDigitValue(text[1]) < 0) {
        return std::nullopt;
    }
    return static_cast<std::uint8_t>(HexDigitValue(text[0]) * 16 + HexDigitValue(text[1]));
}

std::string Quoted(std::string_view text) {
    return "\"" + std::string(text) + "\"";
}

} // namespace

CTableReader::CTableReader(const STomlNode& node, std::string what) : m_node(node), m_name(std::move(what)) {
    RequireKind(node, ETomlKind::Table, m_name);
    m_known.resize(node.keys.size(), false);
}

// Tables are small, so a walk is as good as an index and keeps the order of the keys.
const STomlNode* CTableReader::Find(std::string_view key) {
    for (std::size_t i = 0; i < m_node.keys.size(); ++i) {
        if (m_node.keys[i].name == key) {
            m_known[i] = true;
            return &m_node.items[i];
        }
    }
    return nullptr;
}

const STomlNode& CTableReader::Require(std::string_view key) {
    const STomlNode* member = Find(key);
    if (member == nullptr) {
        throw CSubstationError(m_node.line, m_name + " needs the key " + Quoted(key));
    }
    return *member;
}

std::optional<std::string> CTableReader::Text(std::string_view key) {
    const STomlNode* member = Find(key);
    if (member == nullptr) {
        return std::nullopt;
    }
    RequireKind(*member, ETomlKind::Text, key);
    return member->text;
}

std::optional<std::int64_t> CTableReader::Integer(std::string_view key, std::int64_t minimum,
                                                  std::int64_t maximum) {
    const STomlNode* member = Find(key);
    if (member == nullptr) {
        return std::nullopt;
    }
    return ReadInteger(*member, minimum, maximum, key);
}

bool CTableReader::Flag(std::string_view key, bool fallback) {
    const STomlNode* member = Find(key);
    if (member == nullptr) {
        return fallback;
    }
    RequireKind(*member, ETomlKind::Flag, key);
    return member->flag;
}

const std::vector<STomlNode>& CTableReader::Items(std::string_view key) {
    static const std::vector<STomlNode> kNone;
    const STomlNode* member = Find(key);
    if (member == nullptr) {
        return kNone;
    }
    RequireKind(*member, ETomlKind::Array, key);
    return member->items;
}

std::string CTableReader::RequireText(std::string_view key) {
    Require(key);
    return *Text(key);
}

std::int64_t CTableReader::RequireInteger(std::string_view key, std::int64_t minimum, std::int64_t maximum) {
    return ReadInteger(Require(key), minimum, maximum, key);
}

void CTableReader::RejectUnknownKeys() const {
    const auto unknown = std::find(m_known.begin(), m_known.end(), false);
    if (unknown != m_known.end()) {
        const auto index = static_cast<std::size_t>(unknown - m_known.begin());
        throw CSubstationError(m_node.keys[index].line,
                               m_name + " has no key " + Quoted(m_node.keys[index].name));
    }
}

void RequireKind(const STomlNode& node, ETomlKind kind, std::string_view what) {
    if (node.kind != kind) {
        throw CSubstationError(node.line, std::string(what) + ": expected " + std::string(KindName(kind)) +
                                              ", found " + std::string(KindName(node.kind)));
    }
}

std::int64_t ReadInteger(const STomlNode& node, std::int64_t minimum, std::int64_t maximum,
                         std::string_view what) {
    RequireKind(node, ETomlKind::Integer, what);
    if (node.integer < minimum || node.integer > maximum) {
        throw CSubstationError(node.line, std::string(what) + ": expected " + std::to_string(minimum) +
                                              " to " + std::to_string(maximum) + ", found " +
                                              std::to_string(node.integer));
    }
    return node.integer;
}

CellAddress ParseCellAddress(std::string_view text, std::size_t line) {
    const bool shaped = text.size() == 5 && text[2] == '.';
    const auto column = shaped ? HexByte(text.substr(0, 2)) : std::nullopt;
    const auto row = shaped ? HexByte(text.substr(3)) : std::nullopt;
    if (!column || !row) {
        throw CSubstationError(line, "expected a cell such as \"0A.1F\", found " + Quoted(text));
    }
    return MakeCellAddress(*column, *row);
}

std::uint8_t ParseColumn(std::string_view text, std::size_t line) {
    const auto column = HexByte(text);
    if (!column) {
        throw CSubstationError(line, "expected a column such as \"0A\", found " + Quoted(text));
    }
    return *column;
}

std::vector<std::uint8_t> ParseHexBytes(std::string_view text, std::size_t line) {
    std::vector<std::uint8_t> bytes;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] == ' ') {
            ++at;
            continue;
        }
        const auto byte = HexByte(text.substr(at, 2));
        if (!byte) {
            throw CSubstationError(line, "expected pairs of hexadecimal digits, found " + Quoted(text));
        }
        bytes.push_back(*byte);
        at += 2;
    }
    return bytes;
}

} // namespace ruvo::sim
