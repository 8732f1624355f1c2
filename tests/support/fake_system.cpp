#include "support/fake_system.h"

#include "platform/debug_output.h"
#include "platform/environment.h"
#include "platform/message_box.h"
#include "platform/standard_error.h"

#include <gtest/gtest.h>

namespace ruvo {

namespace {

/// Each test begins with the clock and the environment of the first, whatever others have set.
class CSameBeginning : public testing::EmptyTestEventListener {
    void OnTestEnd(const testing::TestInfo& /*test*/) override {
        g_unixSeconds = m_unixSeconds;
        g_localTime = m_localTime;
        g_utcTime = m_utcTime;
        if (WholeEnvironment() != m_environment) {
            for (const std::string& variable : WholeEnvironment())
                ClearEnvironmentValue(NameOf(variable));
            for (const std::string& variable : m_environment)
                SetEnvironmentValue(NameOf(variable), variable.substr(NameOf(variable).size() + 1));
        }
    }
    static std::string NameOf(const std::string& variable) {
        return variable.substr(0, variable.find('=', 1)); // Windows has names that begin with "="
    }

    const std::int64_t m_unixSeconds = g_unixSeconds;
    const std::optional<SCalendarTime> m_localTime = g_localTime;
    const SCalendarTime m_utcTime = g_utcTime;
    const std::vector<std::string> m_environment = WholeEnvironment();
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
