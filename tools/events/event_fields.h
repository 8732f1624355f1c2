// Fields of event records as the printers write them.
#pragma once

#include "model/records/event_record.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace ruvo {

/// True when the stamp's fields name a real date and time of day.
[[nodiscard]] bool IsRealTime(const CParlaneIEC870& time);
/// "2026-11-16T03:12:45.123", with the separator given in the place of the T; the fields as they are.
void AppendTime(std::string& out, const CParlaneIEC870& time, char separator);
/// Milliseconds since 1970 of a real time, as if the clock showed UTC.
[[nodiscard]] std::int64_t MillisecondsOf(const STimeFields& fields);
[[nodiscard]] std::int64_t MillisecondsOf(const CParlaneIEC870& time);
/// The stamp of such a moment, without flags.
[[nodiscard]] CParlaneIEC870 StampOf(std::int64_t milliseconds);
/// "2026-11-16T02:12:45.123Z".
void AppendUtc(std::string& out, std::int64_t milliseconds);
void AppendHex(std::string& out, std::span<const std::uint8_t> bytes);
/// "CC.RR".
void AppendLocation(std::string& out, std::uint16_t location);
void AppendNumber(std::string& out, std::uint64_t number);

/// True for a value that is there and is not the explicit "none".
[[nodiscard]] bool IsValue(const CParlaneData* value);
/// The value's data as upper-case hexadecimal digits.
void AppendWireHex(std::string& out, const CParlaneData& value);

/// Null for a record of the other kind.
[[nodiscard]] const CSimpleEventRecord* AsSimple(const CEventRecord& record);
[[nodiscard]] const CExtendedEventRecord* AsExtended(const CEventRecord& record);
/// The names of a cell's bits; none for a cell that has no bits.
[[nodiscard]] const std::vector<std::string>& BitNamesOf(const CCell& cell);

} // namespace ruvo
