// A clock that is set for the time of a test, and catchers of debug output, standard error and message boxes.
// In a test program built with fake_system.cpp they take the place of the platform's, which the linker then
// leaves out.
#pragma once

#include "platform/clock.h"

#include <functional>
#include <string>

namespace ruvo {

inline std::int64_t g_unixSeconds = 1'700'000'000;
inline std::optional<SCalendarTime> g_localTime = SCalendarTime{2021, 3, 2, 14, 3, 7};
inline SCalendarTime g_utcTime{2026, 11, 16, 23, 30, 0};
inline bool g_daylight = false;
inline std::string g_debugOutput;
inline std::string g_standardError;
inline std::string g_messageBoxes;     ///< "TITLE|TEXT|" each, "warning " or "error " before some titles
inline std::function<void()> g_onTime; ///< called with each question for the time; may throw

} // namespace ruvo
