// Times as people give them, in time zones whose clocks change.
#include "support/case_table.h"
#include "support/fake_system.h"
#include "tools/run_tool.h"

#include "platform/environment.h"
#include "tools/given_time.h"

namespace ruvo::test {
namespace {

std::int64_t Seconds(const std::string& text) {
    g_utcTime = CalendarTime(text);
    return NowSeconds();
}

TEST(GivenTime, NamesATimeAndAPeriod) {
    ForEachCase<6>("tools/given_time_cases.txt",
                   [](auto& zone, auto& now, auto& text, auto& time, auto& begin, auto& end) {
                       SetEnvironmentValue("TZ", zone);
                       g_utcTime = CalendarTime(now);
                       const auto period = ParsePeriod(text);
                       EXPECT_EQ(ParseGivenTime(text).value_or("-"), time);
                       ASSERT_EQ(period.has_value(), begin != "-");
                       if (period) {
                           EXPECT_EQ(period->begin, Seconds(begin));
                           EXPECT_EQ(period->end, Seconds(end));
                       }
                   });
}

} // namespace
} // namespace ruvo::test
