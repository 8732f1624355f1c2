// Menu locations as data values.
#pragma once

#include "model/values/parlane_data.h"

namespace ruvo {

/// A location in the relay's menu; on the wire the row comes first, then the column.
class CParlaneMenu final : public CParlaneData {
public:
    explicit CParlaneMenu(std::span<const std::uint8_t> data);
    CParlaneMenu(std::uint8_t column, std::uint8_t row)
        : CParlaneData(kTypeMenu), m_column(column), m_row(row) {}

    std::uint32_t GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                               std::size_t& size) const override;
    std::size_t GetSize() const override { return 2; }
    std::unique_ptr<CParlaneData> Clone() const override;
    std::unique_ptr<CParlaneData> CreateMinimum() const override;
    std::unique_ptr<CParlaneData> CreateMaximum() const override;
    std::unique_ptr<CParlaneData> CreateStep() const override;

    std::uint8_t GetColumn() const { return m_column; }
    std::uint8_t GetRow() const { return m_row; }
    /// Mind the order: row first.
    void Set(std::uint8_t row, std::uint8_t column);
    /// column x 256 + row.
    std::uint16_t GetLocation() const { return static_cast<std::uint16_t>(m_column * 256U + m_row); }

private:
    std::uint8_t m_column = 0;
    std::uint8_t m_row = 0;
};

} // namespace ruvo
