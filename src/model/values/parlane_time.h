// Time stamps: the seven-octet binary time of IEC 60870-5.
#pragma once

#include "model/records/block_layout.h"
#include "model/values/parlane_data.h"

#include <array>
#include <compare>

namespace ruvo {

/// A time stamp's calendar fields, as they are: nothing says that they name a real date.
struct STimeFields {
    int year = 0; ///< full year, 1980 to 2079
    int month = 0;
    int dayOfWeek = 0; ///< 0 to 6; the wire's 7 is 0
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int milliseconds = 0; ///< within the second
};

/// A time stamp as a calendar date; all 0 but `milliseconds` when it names none.
struct SVariantDate {
    bool valid = false;
    double date = 0.0; ///< days since 1899-12-30, the time of day as the fraction
    int year = 0;
    int weekday = 0; ///< 1 = Monday to 7 = Sunday
    int milliseconds = 0;
};

/// A time stamp. Bytes: milliseconds within the minute (16 bits), minute and invalid flag, hour and
/// summer-time flag, day and day of week, month, year of the century.
class CParlaneIEC870 final : public CParlaneData {
public:
    using Octets = std::array<std::uint8_t, kTimeStampSize>;

    /// 00:00 on day 1, month 1, year 98.
    CParlaneIEC870() : CParlaneIEC870(Octets{0, 0, 0, 0, 1, 1, 98}) {}
    explicit CParlaneIEC870(std::span<const std::uint8_t> data);
    explicit CParlaneIEC870(const Octets& octets) : CParlaneData(kTypeIEC870), m_octets(octets) {}

    std::uint32_t GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                               std::size_t& size) const override;
    std::size_t GetSize() const override { return m_octets.size(); }
    std::unique_ptr<CParlaneData> Clone() const override;
    std::unique_ptr<CParlaneData> CreateMinimum() const override;
    std::unique_ptr<CParlaneData> CreateMaximum() const override;
    std::unique_ptr<CParlaneData> CreateStep() const override;

    const Octets& GetOctets() const { return m_octets; }
    unsigned GetMilliseconds() const { return m_octets[0] + m_octets[1] * 256U; } ///< within the minute
    unsigned GetMinute() const { return m_octets[2] & 0x3FU; }
    bool IsInvalid() const { return (m_octets[2] & 0x80U) != 0; }
    unsigned GetHour() const { return m_octets[3] & 0x1FU; }
    bool IsSummerTime() const { return (m_octets[3] & 0x80U) != 0; }
    unsigned GetDay() const { return m_octets[4] & 0x1FU; }
    unsigned GetDayOfWeek() const { return m_octets[4] >> 5U; } ///< 1 = Monday to 7 = Sunday, 0 not given
    unsigned GetMonth() const { return m_octets[5] & 0x0FU; }
    unsigned GetYear() const { return m_octets[6] & 0x7FU; } ///< 0 to 127

    /// Each setter leaves the other bits of its byte alone; values beyond the field lose their upper bits.
    void SetMilliseconds(unsigned value);
    void SetMinute(unsigned value) { SetField(2, 0x3F, value); }
    void SetInvalid(bool flag) { SetField(2, 0x80, flag ? 0x80 : 0); }
    void SetHour(unsigned value) { SetField(3, 0x1F, value); }
    void SetSummerTime(bool flag) { SetField(3, 0x80, flag ? 0x80 : 0); }
    void SetDay(unsigned value) { SetField(4, 0x1F, value); }
    void SetDayOfWeek(unsigned value) { SetField(4, 0xE0, value << 5U); }
    void SetMonth(unsigned value) { SetField(5, 0x0F, value); }
    void SetYear(unsigned value) { SetField(6, 0x7F, value); }

    STimeFields ToFields() const;
    SVariantDate ToVariantDate() const;

    /// Compares the calendar fields; day of week and flags do not count, so equal stamps may differ in bytes.
    std::weak_ordering operator<=>(const CParlaneIEC870& other) const;
    bool operator==(const CParlaneIEC870& other) const { return std::is_eq(*this <=> other); }

private:
    void SetField(std::size_t octet, std::uint8_t mask, unsigned value);

    Octets m_octets;
};

} // namespace ruvo
