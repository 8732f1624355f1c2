#include "model/values/parlane_time.h"

#include <algorithm>
#include <chrono>
#include <tuple>

namespace ruvo {

namespace {

// Two-digit years up to here belong to this century.
constexpr int kLastYearOf2000 = 79;

std::tuple<int, int, int, int, int, int, int> ComparedFields(const CParlaneIEC870& time) {
    const STimeFields fields = time.ToFields();
    return {fields.year,   fields.month,  fields.day,         fields.hour,
            fields.minute, fields.second, fields.milliseconds};
}

} // namespace

CParlaneIEC870::CParlaneIEC870(std::span<const std::uint8_t> data) : CParlaneData(kTypeIEC870), m_octets{} {
    std::copy_n(data.begin(), std::min(data.size(), m_octets.size()), m_octets.begin());
}

std::uint32_t CParlaneIEC870::GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                                           std::size_t& size) const {
    return PutWireBytes(m_octets, buffer, typeCode, size);
}

std::unique_ptr<CParlaneData> CParlaneIEC870::Clone() const {
    return std::make_unique<CParlaneIEC870>(*this);
}

std::unique_ptr<CParlaneData> CParlaneIEC870::CreateMinimum() const {
    return std::make_unique<CParlaneIEC870>(Octets{});
}

std::unique_ptr<CParlaneData> CParlaneIEC870::CreateMaximum() const {
    return std::make_unique<CParlaneIEC870>(Octets{59999 & 0xFF, 59999 >> 8, 59, 23, 31, 12, 99});
}

std::unique_ptr<CParlaneData> CParlaneIEC870::CreateStep() const {
    return std::make_unique<CParlaneIEC870>(Octets{1, 0, 0, 0, 0, 0, 0});
}

void CParlaneIEC870::SetMilliseconds(unsigned value) {
    SetField(0, 0xFF, value);
    SetField(1, 0xFF, value >> 8U);
}

void CParlaneIEC870::SetField(std::size_t octet, std::uint8_t mask, unsigned value) {
    m_octets[octet] = static_cast<std::uint8_t>((m_octets[octet] & ~unsigned{mask}) | (value & mask));
}

STimeFields CParlaneIEC870::ToFields() const {
    STimeFields fields;
    const int year = static_cast<int>(GetYear());
    fields.year = year + (year <= kLastYearOf2000 ? 2000 : 1900);
    fields.month = static_cast<int>(GetMonth());
    fields.dayOfWeek = static_cast<int>(GetDayOfWeek() % 7);
    fields.day = static_cast<int>(GetDay());
    fields.hour = static_cast<int>(GetHour());
    fields.minute = static_cast<int>(GetMinute());
    fields.second = static_cast<int>(GetMilliseconds() / 1000);
    fields.milliseconds = static_cast<int>(GetMilliseconds() % 1000);
    return fields;
}

SVariantDate CParlaneIEC870::ToVariantDate() const {
    using namespace std::chrono;
    const STimeFields fields = ToFields();
    SVariantDate result;
    result.milliseconds = fields.milliseconds;
    const year_month_day date{year{fields.year}, month{GetMonth()}, day{GetDay()}};
    // Fields that the calendar would carry over (31 April, hour 24) do not come back as they were.
    if (!date.ok() || fields.hour > 23 || fields.minute > 59 || fields.second > 59) {
        return result;
    }
    constexpr sys_days kOrigin{year{1899} / December / 30};
    const int seconds = (fields.hour * 60 + fields.minute) * 60 + fields.second;
    result.valid = true;
    result.date = static_cast<double>((sys_days{date} - kOrigin).count()) + seconds / 86400.0;
    result.year = fields.year;
    result.weekday = static_cast<int>(weekday{sys_days{date}}.iso_encoding());
    return result;
}

std::weak_ordering CParlaneIEC870::operator<=>(const CParlaneIEC870& other) const {
    return ComparedFields(*this) <=> ComparedFields(other);
}

} // namespace ruvo
