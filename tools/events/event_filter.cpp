#include "tools/events/event_filter.h"

#include "base/code_page.h"
#include "base/text.h"
#include "tools/events/event_fields.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace ruvo {

namespace {

TimeKey MakeKey(const STimeFields& fields) {
    // Each factor leaves room for all that the field can hold on the wire.
    TimeKey key = static_cast<TimeKey>(fields.year);
    key = key * 16 + static_cast<TimeKey>(fields.month);
    key = key * 32 + static_cast<TimeKey>(fields.day);
    key = key * 32 + static_cast<TimeKey>(fields.hour);
    key = key * 64 + static_cast<TimeKey>(fields.minute);
    key = key * 128 + static_cast<TimeKey>(fields.second);
    return key * 1000 + static_cast<TimeKey>(fields.milliseconds);
}

/// Takes exactly `digits` digits off the text.
bool ParseNumber(std::string_view& text, std::size_t digits, int& number) {
    if (text.size() < digits || !std::ranges::all_of(text.substr(0, digits), IsDigit)) {
        return false;
    }
    number = 0;
    for (const char digit : text.substr(0, digits)) {
        number = number * 10 + (digit - '0');
    }
    text.remove_prefix(digits);
    return true;
}

/// Tenths, hundredths or thousandths of a second, to the end of the text.
bool ParseFraction(std::string_view& text, int& milliseconds) {
    const std::size_t digits = text.size();
    if (digits < 1 || digits > 3 || !ParseNumber(text, digits, milliseconds)) {
        return false;
    }
    for (std::size_t missing = digits; missing < 3; ++missing) {
        milliseconds *= 10;
    }
    return true;
}

bool ParseMark(std::string_view& text, std::string_view marks) {
    const bool found = !text.empty() && marks.find(text.front()) != std::string_view::npos;
    text.remove_prefix(found ? 1 : 0);
    return found;
}

bool ParseDate(std::string_view& text, STimeFields& fields) {
    const bool good = ParseNumber(text, 4, fields.year) && ParseMark(text, "-") &&
                      ParseNumber(text, 2, fields.month) && ParseMark(text, "-") &&
                      ParseNumber(text, 2, fields.day);
    using namespace std::chrono;
    return good && year_month_day(year(fields.year), month(static_cast<unsigned>(fields.month)),
                                  day(static_cast<unsigned>(fields.day)))
                       .ok();
}

/// Hours and minutes, then seconds and milliseconds where they are given.
bool ParseTimeOfDay(std::string_view& text, STimeFields& fields) {
    if (!ParseNumber(text, 2, fields.hour) || !ParseMark(text, ":") || !ParseNumber(text, 2, fields.minute)) {
        return false;
    }
    if (ParseMark(text, ":") && !ParseNumber(text, 2, fields.second)) {
        return false;
    }
    if (ParseMark(text, ".") && !ParseFraction(text, fields.milliseconds)) {
        return false;
    }
    return text.empty() && fields.hour < 24 && fields.minute < 60 && fields.second < 60;
}

bool Matches(const std::string& cp1252, std::string_view part) {
    return ContainsText(Cp1252ToUtf8(cp1252), part);
}

bool AnyTextMatches(const CEventRecord& record, std::string_view part) {
    if (Matches(record.GetEventText(), part) || Matches(record.GetEventFormat(), part) ||
        Matches(record.GetText(), part) || Matches(record.GetAuxText1(), part) ||
        Matches(record.GetAuxText2(), part) || Matches(record.GetAuxText3(), part)) {
        return true;
    }
    const auto* const extended = AsExtended(record);
    return extended != nullptr && std::ranges::any_of(extended->GetCells(), [part](const auto& cell) {
               return Matches(cell->GetText(), part);
           });
}

} // namespace

TimeKey TimeKeyOf(const CParlaneIEC870& time) {
    return MakeKey(time.ToFields());
}

STimeFields FieldsOf(TimeKey key) {
    const auto take = [&key](TimeKey factor) {
        const auto field = static_cast<int>(key % factor);
        key /= factor;
        return field;
    };
    STimeFields fields;
    fields.milliseconds = take(1000);
    fields.second = take(128);
    fields.minute = take(64);
    fields.hour = take(32);
    fields.day = take(32);
    fields.month = take(16);
    fields.year = static_cast<int>(key);
    return fields;
}

std::optional<TimeKey> ParseTimeKey(std::string_view text, EDayEdge edge) {
    STimeFields fields;
    if (!ParseDate(text, fields)) {
        return std::nullopt;
    }
    if (text.empty()) {
        if (edge == EDayEdge::End) {
            fields.hour = 31; // whatever the day's stamps hold
            fields.minute = 63;
            fields.second = 127;
        }
        return MakeKey(fields);
    }
    return ParseMark(text, "T ") && ParseTimeOfDay(text, fields) ? std::optional(MakeKey(fields))
                                                                 : std::nullopt;
}

bool SEventFilter::MatchesRecord(const CEventRecord& record) const {
    const TimeKey key = TimeKeyOf(record.GetTimeStamp());
    return (!since || key >= *since) && (!until || key <= *until) &&
           (match.empty() || AnyTextMatches(record, match));
}

} // namespace ruvo
