#include "support/fake_system.h"

#include "platform/debug_output.h"
#include "platform/environment.h"
#include "platform/message_box.h"
#include "platform/standard_error.h"

#include <gtest/gtest.h>

namespace ruvo {

namespace {

/// Each test begins with the clock and the time zone of the first, whatever others have set.
class CSameBeginning : public testing::EmptyTestEventListener {
    void OnTestEnd(const testing::TestInfo& /*test*/) override {
        g_unixSeconds = m_unixSeconds;
        g_localTime = m_localTime;
        g_utcTime = m_utcTime;
        m_zone ? SetEnvironmentValue("TZ", *m_zone) : ClearEnvironmentValue("TZ");
    }

    const std::int64_t m_unixSeconds = g_unixSeconds;
    const std::optional<SCalendarTime> m_localTime = g_localTime;
    const SCalendarTime m_utcTime = g_utcTime;
    const std::optional<std::string> m_zone = EnvironmentValue("TZ");
};
const bool g_isSame = (testing::UnitTest::GetInstance()->listeners().Append(new CSameBeginning), true);

} // namespace

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
