#include "support/fake_system.h"

#include "platform/debug_output.h"
#include "platform/message_box.h"
#include "platform/standard_error.h"

namespace ruvo {

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
void WriteStandardError(std::string_view line) noexcept {
    g_standardError += line;
}
void ShowMessageBox(EMessageIcon icon, const std::string& title, const std::string& text) {
    constexpr const char* kIcons[] = {"", "warning ", "error "};
    g_messageBoxes += kIcons[static_cast<std::size_t>(icon)] + title + "|" + text + "|";
}

} // namespace ruvo
