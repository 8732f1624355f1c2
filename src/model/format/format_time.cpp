#include "model/format/format_conversions.h"

#include <array>

namespace ruvo {
namespace {

/// Longer than any date and time with the names of any locale.
constexpr std::size_t kTimeRoom = 200;

/// Appends the parts of a date or time to a fixed room.
class CTimeText {
public:
    CTimeText() : m_output(m_room.data(), m_room.size()) {}

    void Put(std::string_view text) { m_output.PutText(text); }
    void Put(char c) { m_output.PutChar(c); }
    void PutDigits(unsigned value, unsigned count) {
        std::array<char, 3> digits{};
        for (unsigned i = count; i-- > 0; value /= 10) {
            digits.at(i) = static_cast<char>('0' + value % 10);
        }
        m_output.PutText({digits.data(), count});
    }
    [[nodiscard]] std::string_view Get() const { return {m_room.data(), m_output.GetLength()}; }

private:
    std::array<char, kTimeRoom> m_room;
    CFormatOutput m_output;
};

bool IsTime(const CParlaneIEC870& time) {
    return time.GetMinute() <= 59 && time.GetHour() <= 23 && time.GetDay() != 0 && time.GetMonth() != 0 &&
           time.GetMonth() <= 12 && time.GetYear() <= 99;
}

void PutWeekday(CTimeText& text, const SLocale& locale, const CParlaneIEC870& time,
                const SVariantDate& date) {
    unsigned dayOfWeek = time.GetDayOfWeek();
    if (!locale.showWeekday || dayOfWeek == 0) {
        return;
    }
    // Relays that do not know the weekday send Monday.
    if (dayOfWeek == 1 && date.valid) {
        dayOfWeek = static_cast<unsigned>(date.weekday);
    }
    text.Put((locale.longWeekdays ? locale.weekdays : locale.shortWeekdays).at(dayOfWeek - 1));
    text.Put(' ');
}

void PutDatePart(CTimeText& text, const SLocale& locale, EDatePart part, const CParlaneIEC870& time,
                 const SVariantDate& date) {
    switch (part) {
    case EDatePart::Day:
        text.PutDigits(time.GetDay(), 2);
        break;
    case EDatePart::Month:
        text.Put((locale.longMonths ? locale.months : locale.shortMonths).at(time.GetMonth() - 1));
        break;
    case EDatePart::Year:
        if (locale.showCentury) {
            text.PutDigits(date.valid ? static_cast<unsigned>(date.year) / 100 : 0, 2);
        }
        text.PutDigits(time.GetYear(), 2);
        break;
    }
    text.Put(' ');
}

unsigned ShownHour(const SLocale& locale, unsigned hour) {
    return locale.clock24 ? hour : (hour + 11) % 12 + 1;
}

void PutClock(CTimeText& text, const SLocale& locale, const CParlaneIEC870& time, bool milliseconds) {
    text.PutDigits(ShownHour(locale, time.GetHour()), 2);
    text.Put(locale.timeSeparator);
    text.PutDigits(time.GetMinute(), 2);
    text.Put(locale.timeSeparator);
    text.PutDigits(time.GetMilliseconds() / 1000, 2);
    if (milliseconds) {
        text.Put(locale.fractionSeparator);
        text.PutDigits(time.GetMilliseconds() % 1000, 3);
    }
    if (!locale.clock24 && locale.showAmPm) {
        text.Put(' ');
        text.Put(time.GetHour() < 12 ? locale.am : locale.pm);
    }
    text.Put(' ');
    text.Put(time.IsSummerTime() ? locale.summerTime : locale.standardTime);
}

void PutTime(CTimeText& text, const SLocale& locale, const CParlaneIEC870& time,
             const SConversion& conversion) {
    const SVariantDate date = time.ToVariantDate();
    if (conversion.sharp) {
        text.Put(locale.dateCaption);
        text.Put(' ');
    }
    PutWeekday(text, locale, time, date);
    for (const EDatePart part : locale.dateOrder) {
        PutDatePart(text, locale, part, time, date);
    }
    if (conversion.sharp) {
        text.Put(locale.timeCaption);
        text.Put(' ');
    }
    PutClock(text, locale, time, conversion.size == 'l');
}

} // namespace

void ConvertTime(const SFormatContext& context, const SConversion& conversion) {
    const CParlaneIEC870 time = context.arguments.TakeTime();
    CTimeText text;
    if (IsTime(time)) {
        PutTime(text, context.locale, time, conversion);
    } else {
        text.Put(context.locale.badTime);
    }
    CFieldText field;
    field.AddText(text.Get());
    field.Write(context.output, conversion);
}

} // namespace ruvo
