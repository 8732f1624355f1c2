#include "tools/schedule/task.h"

#include "base/digest.h"
#include "base/text.h"
#include "paths/path_utilities.h"
#include "platform/ini_text.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

namespace ruvo {

namespace {

struct SAccountRow {
    std::string_view name;
    std::string_view identifier;
};
constexpr std::array kServiceAccounts{SAccountRow{"SYSTEM", "S-1-5-18"},
                                      SAccountRow{"LOCAL SERVICE", "S-1-5-19"},
                                      SAccountRow{"NETWORK SERVICE", "S-1-5-20"}};

bool IsServiceAccount(std::string_view identifier) {
    return std::ranges::find(kServiceAccounts, identifier, &SAccountRow::identifier) !=
           kServiceAccounts.end();
}

std::string Element(std::string_view name, std::string_view utf8) {
    const std::string tag(name);
    return "<" + tag + ">" + EscapeMarkup(utf8) + "</" + tag + ">";
}

/// The date of the first day on which the time is still to come.
std::string FirstDay(const SCalendarTime& now, const SDailyTime& time) {
    using namespace std::chrono;
    const bool isOver = now.hour * 60 + now.minute >= time.hour * 60 + time.minute;
    const sys_days today =
        year(now.year) / month(static_cast<unsigned>(now.month)) / day(static_cast<unsigned>(now.day));
    const year_month_day first(today + days(isOver ? 1 : 0));
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", static_cast<int>(first.year()),
                  static_cast<unsigned>(first.month()), static_cast<unsigned>(first.day()));
    return text.data();
}

std::string Trigger(const SDailyTime& time, const SBothTimes& now) {
    std::array<char, 40> clock{};
    std::snprintf(clock.data(), clock.size(), "T%02d:%02d:00%s", time.hour, time.minute,
                  time.isUtc ? "Z" : "");
    return "    <CalendarTrigger>\n      " +
           Element("StartBoundary", FirstDay(time.isUtc ? now.utc : now.local, time) + clock.data()) +
           "\n      <ScheduleByDay><DaysInterval>1</DaysInterval></ScheduleByDay>\n    </CalendarTrigger>\n";
}

/// For an account of a person no password is stored; the service accounts have none.
std::string Principal(const std::string& account) {
    const std::string logon = IsServiceAccount(account) ? "" : Element("LogonType", "S4U");
    return "  <Principals>\n    <Principal id=\"Author\">" + Element("UserId", SystemTextToUtf8(account)) +
           logon + "<RunLevel>HighestAvailable</RunLevel></Principal>\n  </Principals>\n";
}

// Every value that differs from the scheduler's own default has its reason: a battery is no reason to miss
// events; a machine that slept through the time visits when it wakes, or is woken; two visits of a site never
// help; a visit that takes longer than twelve hours hangs.
constexpr std::string_view kSettings = R"(  <Settings>
    <MultipleInstancesPolicy>IgnoreNew</MultipleInstancesPolicy>
    <DisallowStartIfOnBatteries>false</DisallowStartIfOnBatteries>
    <StopIfGoingOnBatteries>false</StopIfGoingOnBatteries>
    <StartWhenAvailable>true</StartWhenAvailable>
    <WakeToRun>true</WakeToRun>
    <ExecutionTimeLimit>PT12H</ExecutionTimeLimit>
  </Settings>
)";

std::string Action(const STask& task) {
    std::string arguments = "visit";
    for (const std::string& option : task.options) {
        arguments += " " + option;
    }
    arguments += " -- \"" + SystemTextToUtf8(task.iniPath) + "\"";
    return "  <Actions Context=\"Author\">\n    <Exec>\n      " +
           Element("Command", SystemTextToUtf8(task.program)) + "\n      " + Element("Arguments", arguments) +
           "\n    </Exec>\n  </Actions>\n";
}

} // namespace

std::optional<SDailyTime> ParseDailyTime(std::string_view text) {
    constexpr std::string_view kForm = "00:00";
    SDailyTime time;
    if (time.isUtc = text.ends_with('Z'); time.isUtc) {
        text.remove_suffix(1);
    }
    const bool hasForm = std::ranges::equal(
        text, kForm, [](char c, char form) { return form == '0' ? IsDigit(c) : c == form; });
    if (!hasForm) {
        return std::nullopt;
    }
    const auto number = [&](std::size_t at) { return (text[at] - '0') * 10 + text[at + 1] - '0'; };
    time.hour = number(0);
    time.minute = number(3);
    return time.hour < 24 && time.minute < 60 ? std::optional(time) : std::nullopt;
}

std::string TaskName(const std::string& iniPath, const std::string& sitesFolder) {
    const SPathParts parts = SplitPath(iniPath);
    const bool isOfFolder = EqualIniNames(parts.drive + parts.folder, sitesFolder + "\\");
    // Letter case makes no other file.
    return "ruvo\\" + parts.name + (isOfFolder ? "" : "-" + DigestOf(ToUpperText(iniPath)).substr(0, 8));
}

std::string WhyNotScheduled(std::string_view iniPath) {
    for (const std::string_view special : {"%", "$(", "\""}) {
        if (iniPath.find(special) != std::string_view::npos) {
            return "a path with " + std::string(special) +
                   " cannot be scheduled: the task scheduler would replace it";
        }
    }
    return {};
}

std::string AccountOf(const std::string& name) {
    const auto* const row = std::ranges::find_if(
        kServiceAccounts, [&](const SAccountRow& known) { return EqualIniNames(known.name, name); });
    return row == kServiceAccounts.end() ? name : std::string(row->identifier);
}

std::string TaskXml(const STask& task, const SBothTimes& now) {
    std::string triggers;
    for (const SDailyTime& time : task.times) {
        triggers += Trigger(time, now);
    }
    return "<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n"
           "<Task version=\"1.2\" xmlns=\"http://schemas.microsoft.com/windows/2004/02/mit/task\">\n"
           "  <RegistrationInfo>" +
           Element("Description", "Visits the relays of " + SystemTextToUtf8(task.iniPath) + ".") +
           "</RegistrationInfo>\n  <Triggers>\n" + triggers + "  </Triggers>\n" + Principal(task.account) +
           std::string(kSettings) + Action(task) + "</Task>\n";
}

} // namespace ruvo
