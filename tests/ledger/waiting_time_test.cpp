// When events that cannot be stored have waited for long enough.
#include "ledger/waiting_time.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

namespace ruvo::test {

TEST(WaitingTime, NoClockIsBelievedAlone) {
    const std::set<std::string> week{"1", "2", "3", "4", "5", "6", "7"};
    const std::set<std::string> six{"1", "2", "3", "4", "5", "6"};
    const SCalendarTime now{2026, 11, 23, 23, 30, 0};
    const struct {
        const char* name;
        const char* begun;
        const std::set<std::string>& dates;
        bool want;
    } cases[] = {{"a week", "2026-11-16 23:30:00 UTC", week, true},
                 {"a second less", "2026-11-16 23:30:01 UTC", week, false},
                 {"a minute less", "2026-11-16 23:31:00 UTC", week, false},
                 {"half an hour more", "2026-11-16 22:59:00 UTC", week, true},
                 {"a visit dated in the future", "2036-01-01 00:00:00 UTC", week, false},
                 {"a visit whose clock stood in the past", "1970-01-01 00:00:00 UTC", six, false},
                 {"a run whose clock is ahead for a night", "2026-11-01 00:00:00 UTC", six, false},
                 {"no time", "2026-11-16", week, false},
                 {"no date", "2026-02-31 25:00:00 UT", week, false}};
    for (const auto& row : cases)
        EXPECT_EQ(HasWaitedForAWeek(row.begun, row.dates, now), row.want) << row.name;
    EXPECT_EQ(UtcDateText(now), "2026-11-23");
}

} // namespace ruvo::test
