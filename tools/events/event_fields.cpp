#include "tools/events/event_fields.h"

#include "base/text.h"
#include "model/cells/binary_cell.h"
#include "tools/text_encoding.h"

#include <charconv>
#include <chrono>
#include <typeinfo>

namespace ruvo {

namespace {

void AppendDigits(std::string& out, int number, std::size_t digits) {
    const std::size_t start = out.size();
    out.append(digits, '0');
    for (std::size_t at = start + digits; at > start; --at, number /= 10) {
        out[at - 1] = static_cast<char>('0' + number % 10);
    }
}

} // namespace

bool IsRealTime(const CParlaneIEC870& time) {
    constexpr unsigned kLastYear = 99; // the field holds more than a year of the century
    return time.GetYear() <= kLastYear && time.ToVariantDate().valid;
}

std::int64_t MillisecondsOf(const STimeFields& fields) {
    using namespace std::chrono;
    const sys_days date = year(fields.year) / month(static_cast<unsigned>(fields.month)) /
                          day(static_cast<unsigned>(fields.day));
    const milliseconds since = date.time_since_epoch() + hours(fields.hour) + minutes(fields.minute) +
                               seconds(fields.second) + milliseconds(fields.milliseconds);
    return since.count();
}

std::int64_t MillisecondsOf(const CParlaneIEC870& time) {
    return MillisecondsOf(time.ToFields());
}

CParlaneIEC870 StampOf(std::int64_t moment) {
    using namespace std::chrono;
    constexpr std::int64_t kMinute = 60'000;
    const sys_time<milliseconds> time{milliseconds(moment)};
    const sys_days date = floor<days>(time);
    const year_month_day day(date);
    const std::int64_t inDay = (time - date).count();
    CParlaneIEC870 stamp;
    stamp.SetYear(static_cast<unsigned>(static_cast<int>(day.year()) % 100));
    stamp.SetMonth(static_cast<unsigned>(day.month()));
    stamp.SetDay(static_cast<unsigned>(day.day()));
    stamp.SetHour(static_cast<unsigned>(inDay / (60 * kMinute)));
    stamp.SetMinute(static_cast<unsigned>(inDay / kMinute % 60));
    stamp.SetMilliseconds(static_cast<unsigned>(inDay % kMinute));
    return stamp;
}

void AppendTime(std::string& out, const CParlaneIEC870& time, char separator) {
    const STimeFields fields = time.ToFields();
    AppendDigits(out, fields.year, 4);
    out += '-';
    AppendDigits(out, fields.month, 2);
    out += '-';
    AppendDigits(out, fields.day, 2);
    out += separator;
    AppendDigits(out, fields.hour, 2);
    out += ':';
    AppendDigits(out, fields.minute, 2);
    out += ':';
    AppendDigits(out, fields.second, 2);
    out += '.';
    AppendDigits(out, fields.milliseconds, 3);
}

void AppendUtc(std::string& out, std::int64_t milliseconds) {
    AppendTime(out, StampOf(milliseconds), 'T');
    out += 'Z';
}

void AppendHex(std::string& out, std::span<const std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes) {
        AppendHexByte(out, byte);
    }
}

void AppendLocation(std::string& out, std::uint16_t location) {
    AppendHexByte(out, location >> 8U);
    out += '.';
    AppendHexByte(out, location & 0xFFU);
}

void AppendNumber(std::string& out, std::uint64_t number) {
    std::array<char, 20> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    out.append(digits.data(), end);
}

bool IsValue(const CParlaneData* value) {
    return value != nullptr && value->GetTypeCode() != kTypeInvalid;
}

void AppendWireHex(std::string& out, const CParlaneData& value) {
    std::array<std::uint8_t, kMaxStoredData> buffer;
    std::uint32_t typeCode = 0;
    std::size_t size = 0;
    value.GetWireBytes(buffer, typeCode, size);
    AppendHex(out, std::span<const std::uint8_t>(buffer).first(std::min(size, buffer.size())));
}

// A record is just one of the two. The library's cast, which looks for classes derived from them, was a
// fifteenth of the time that a record as JSON takes.
const CSimpleEventRecord* AsSimple(const CEventRecord& record) {
    return typeid(record) == typeid(CSimpleEventRecord) ? static_cast<const CSimpleEventRecord*>(&record)
                                                        : nullptr;
}

const CExtendedEventRecord* AsExtended(const CEventRecord& record) {
    return typeid(record) == typeid(CExtendedEventRecord) ? static_cast<const CExtendedEventRecord*>(&record)
                                                          : nullptr;
}

const std::vector<std::string>& BitNamesOf(const CCell& cell) {
    static const std::vector<std::string> kNone;
    return cell.GetKind() == ECellKind::Binary ? static_cast<const CBinaryCell&>(cell).GetBitNames() : kNone;
}

} // namespace ruvo
