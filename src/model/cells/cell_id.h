// Where an item of the relay's menu lives: a column and a row, as two numbers or packed into 16 bits.
#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <vector>

namespace ruvo {

/// Column and row of a cell. Only the low byte of each addresses the relay; all ones (shown FF.FF) is no
/// cell.
class CCellID {
public:
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;

    constexpr CCellID() = default;
    constexpr CCellID(std::uint32_t column, std::uint32_t row) : m_column(column), m_row(row) {}

    [[nodiscard]] constexpr std::uint32_t GetColumn() const { return m_column; }
    [[nodiscard]] constexpr std::uint32_t GetRow() const { return m_row; }
    /// "CC.RR", two upper-case hexadecimal digits each.
    [[nodiscard]] std::string GetText() const;

    friend constexpr bool operator==(const CCellID&, const CCellID&) = default;

private:
    std::uint32_t m_column = kNone;
    std::uint32_t m_row = kNone;
};

/// The same address packed as column x 256 + row; ordered by that number.
class CMenuLocation {
public:
    constexpr CMenuLocation() = default;
    explicit constexpr CMenuLocation(std::uint16_t location) : m_location(location) {}
    explicit constexpr CMenuLocation(const CCellID& id)
        : m_location(static_cast<std::uint16_t>(((id.GetColumn() & 0xFFU) << 8U) | (id.GetRow() & 0xFFU))) {}

    [[nodiscard]] constexpr std::uint16_t GetLocation() const { return m_location; }
    [[nodiscard]] constexpr std::uint8_t GetColumn() const {
        return static_cast<std::uint8_t>(m_location >> 8U);
    }
    [[nodiscard]] constexpr std::uint8_t GetRow() const {
        return static_cast<std::uint8_t>(m_location & 0xFFU);
    }
    [[nodiscard]] constexpr CCellID GetCellID() const { return {GetColumn(), GetRow()}; }

    friend constexpr auto operator<=>(const CMenuLocation&, const CMenuLocation&) = default;

private:
    std::uint16_t m_location = 0;
};

/// Addresses in the order in which they were collected.
using CCellIDList = std::vector<CCellID>;

} // namespace ruvo
