// Reads the members of one table by name and type, and finds the members that were not asked for.
#pragma once

#include "link/seam/cell_address.h"
#include "sim/file/toml_document.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo::sim {

/// Borrows a table node. Every getter throws CSubstationError when the member is there but unusable.
class CTableReader {
public:
    /// `what` names the table in messages, such as "[link]".
    CTableReader(const STomlNode& node, std::string what);

    /// The member, or null; it counts as known from now on.
    const STomlNode* Find(std::string_view key);
    /// The member; throws when it is missing.
    const STomlNode& Require(std::string_view key);

    std::optional<std::string> Text(std::string_view key);
    std::optional<std::int64_t> Integer(std::string_view key, std::int64_t minimum, std::int64_t maximum);
    bool Flag(std::string_view key, bool fallback);
    /// The items of an array of tables, or of any array; none when the member is missing.
    const std::vector<STomlNode>& Items(std::string_view key);

    std::string RequireText(std::string_view key);
    std::int64_t RequireInteger(std::string_view key, std::int64_t minimum, std::int64_t maximum);

    /// Throws for the first member that was never asked for.
    void RejectUnknownKeys() const;

    std::size_t Line() const { return m_node.line; }
    const std::string& Name() const { return m_name; }

private:
    const STomlNode& m_node;
    std::string m_name;
    std::vector<bool> m_known;
};

inline constexpr std::int64_t kMaxUnsigned32 = std::numeric_limits<std::uint32_t>::max();

/// Throws unless the node is of the kind; `what` names it in the message.
void RequireKind(const STomlNode& node, ETomlKind kind, std::string_view what);
/// The node's integer; throws when it is none or out of range.
std::int64_t ReadInteger(const STomlNode& node, std::int64_t minimum, std::int64_t maximum,
                         std::string_view what);

/// A cell address written "CC.RR" in hexadecimal digits.
CellAddress ParseCellAddress(std::string_view text, std::size_t line);
/// A column number written "CC" in hexadecimal digits.
std::uint8_t ParseColumn(std::string_view text, std::size_t line);
/// Bytes written as pairs of hexadecimal digits; blanks between the pairs are allowed.
std::vector<std::uint8_t> ParseHexBytes(std::string_view text, std::size_t line);

} // namespace ruvo::sim
