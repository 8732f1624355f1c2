// A clock that tests set, and catchers of debug output and message boxes. Exactly one file of a test program
// includes this: its definitions take the place of the platform's, which the linker then leaves out.
#pragma once

#include "platform/clock.h"
#include "platform/debug_output.h"
#include "platform/message_box.h"

#include <functional>
#include <string>

namespace ruvo {

inline std::int64_t g_unixSeconds = 1'700'000'000;
inline std::optional<SCalendarTime> g_localTime = SCalendarTime{2021, 3, 2, 14, 3, 7};
inline SCalendarTime g_utcTime{2026, 11, 16, 23, 30, 0};
inline bool g_daylight = false;
inline std::string g_debugOutput;
inline std::string g_messageBoxes;     ///< "TITLE|TEXT|" each, "warning " or "error " before some titles
inline std::function<void()> g_onTime; ///< called with each question for the time; may throw

std::int64_t UnixSeconds() {
    return g_unixSeconds;
}
std::optional<SCalendarTime> LocalTime() {
    if (g_onTime)
        g_onTime();
    return g_localTime;
}
SCalendarTime UtcTime() {
    if (g_onTime)
        g_onTime();
    return g_utcTime;
}
bool IsDaylightTime() {
    return g_daylight;
}
void WriteDebugOutput(const std::string& text) noexcept {
    g_debugOutput += text;
}
void ShowMessageBox(EMessageIcon icon, const std::string& title, const std::string& text) {
    constexpr const char* kIcons[] = {"", "warning ", "error "};
    g_messageBoxes += kIcons[static_cast<std::size_t>(icon)] + title + "|" + text + "|";
}

} // namespace ruvo
