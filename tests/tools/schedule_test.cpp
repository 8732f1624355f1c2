// The task that visits a site on Windows, and the entry that a visit leaves in the event log there.
#include "support/case_table.h"
#include "tools/run_tool.h"

#include "base/code_page.h"
#include "tools/schedule/task.h"
#include "tools/visit/visit_event.h"

#include <gtest/gtest.h>

#include <iterator>

namespace ruvo::test {

TEST(Schedule, BeginsWithTheNextOccurrence) {
    ForEachCase<4>("tools/schedule_times.txt", [](auto& given, auto& local, auto& utc, auto& begin) {
        const auto time = ParseDailyTime(given);
        ASSERT_EQ(time.has_value(), begin != "-");
        STask task;
        task.times = {time.value_or(SDailyTime())};
        const std::string xml = time ? TaskXml(task, {CalendarTime(local), CalendarTime(utc)}) : "";
        EXPECT_NE(xml.find("<StartBoundary>" + begin + "</StartBoundary>"), time ? std::string::npos : 0);
    });
}

TEST(Schedule, HasTheWholeTask) {
    const STask task{.program = R"(C:\Program Files\ruvo\ruvoctl.exe)",
                     .iniPath = "C:\\sites\\S\374d & <x>.ini",
                     .options = {"--retry=2", "--event-log=bad"},
                     .times = {{2, 0, false}, {14, 30, true}},
                     .account = "S-1-5-21-1-2-3-1001"};
    const SBothTimes now{{2026, 12, 31, 23, 59, 0}, {2027, 1, 1, 4, 59, 0}};
    std::ifstream file(RUVO_TEST_DATA "/tools/schedule_task.xml");
    const std::string wanted{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(TaskXml(task, now), wanted);
    STask service = task;
    service.account = AccountOf("local service");
    const std::string xml = TaskXml(service, now);
    EXPECT_TRUE(Contains(xml, "<UserId>S-1-5-19</UserId><RunLevel>")) << "without a password";
    EXPECT_EQ(AccountOf("SITE\\visitor"), "SITE\\visitor");
    EXPECT_EQ(Utf8ToUtf16("A\u00FC\U0001F600\xFF"), std::string("A\0\xFC\0\x3D\xD8\0\xDE\xFD\xFF", 10));
}

TEST(Schedule, NamesEachSitesTask) {
    const std::string folder = R"(C:\ProgramData\ruvo)";
    EXPECT_EQ(TaskName(folder + R"(\yard.ini)", R"(c:\programdata\ruvo)"), R"(ruvo\yard)");
    const std::string other = TaskName(R"(D:\a\yard.ini)", folder);
    EXPECT_EQ(other.size(), std::string(R"(ruvo\yard-12345678)").size());
    EXPECT_EQ(other, TaskName(R"(d:\A\yard.ini)", folder));
    EXPECT_NE(other, TaskName(R"(D:\b\yard.ini)", folder));
    EXPECT_EQ(WhyNotScheduled(R"(C:\a b\$x(1).ini)"), "");
    for (const char* const path : {R"(C:\100%\a.ini)", R"(C:\$(Arg0)\a.ini)"})
        EXPECT_NE(WhyNotScheduled(path), "") << path;
}

TEST(Schedule, SaysWhatElseThereIs) {
    const SOutcome elsewhere = RunTool({"schedule", "yard", "--at", "02:00"});
    EXPECT_EQ(elsewhere.status, 1);
    EXPECT_TRUE(Contains(elsewhere.error, "systemctl enable --now ruvo@SITE.timer"));
    for (const auto& options : std::vector<std::vector<std::string>>{
             {}, {"--at", "2:00"}, {"--at", "02:00", "--remove"}, {"--at", "02:00", "--retry", "10"}}) {
        std::vector<std::string> words{"schedule", "yard"};
        words.insert(words.end(), options.begin(), options.end());
        EXPECT_EQ(RunTool(words).status, 2) << testing::PrintToString(options);
    }
}

TEST(VisitEvent, SaysWhatCameOfTheVisit) {
    ForEachCase<6>("tools/visit_events.txt", [](auto& status, auto& reached, auto& lines, auto& more,
                                                auto& entry, auto& text) {
        const SVisitEvent event = EventOfVisit(std::stoi(status), "yard", reached, {lines, std::stoul(more)});
        static constexpr std::string_view kKinds = "IWE";
        EXPECT_EQ(kKinds[static_cast<std::size_t>(event.kind)] + std::to_string(event.number), entry);
        EXPECT_EQ(event.text, text);
    });
}

TEST(VisitEvent, HoldsWhatTheVisitSaidOfProblems) {
    std::istringstream in;
    std::ostringstream text;
    CTextOutput out(text), error(text);
    SConsole console{.in = in, .out = out, .error = error};
    CVisitOutput output(console, false, false);
    output.Say(EPriority::Notice, "progress\n");
    output.Say(EPriority::Warning, "a\x1B[2J\r\nb\n");
    output.Complain("c");
    EXPECT_EQ(output.Said().lines, "a[2J\nb\nruvoctl: c\n");
    output.Say(EPriority::Warning, std::string(9000, 'x') + "\nshort\n");
    EXPECT_EQ(output.Said().lines, "a[2J\nb\nruvoctl: c\n");
    EXPECT_EQ(output.Said().more, 2U) << "none after a gap";
}

} // namespace ruvo::test
