// ruvoctl schedule: makes, shows and removes the task that visits a site every day (Windows).
#include "base/code_page.h"
#include "platform/child_program.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/modules.h"
#include "platform/sites_folder.h"
#include "platform/task_scheduler.h"
#include "platform/text_file.h"
#include "tools/command.h"
#include "tools/schedule/task.h"
#include "tools/sites/given_site.h"
#include "tools/text_encoding.h"
#include "tools/visit/visit_options.h"
#include "tools/whole_file.h"

#include <array>

namespace ruvo {

namespace {

constexpr std::array kOptions{
    SOption{EOptionKind::Positional, "SITE",
            "a site of the folder for sites, %ProgramData%\\ruvo\\SITE.ini, or a path, as in ./SITE.ini"},
    SOption{EOptionKind::Repeated, "--at",
            "visit the site every day at this time (repeatable): 02:00 is local time, 02:00Z is UTC",
            "HH:MM"},
    SOption{EOptionKind::Text, "--user",
            "account of the visits: a name, or SYSTEM, LOCAL SERVICE, NETWORK SERVICE (default: yours)",
            "ACCOUNT"},
    kRetryOption,
    kAfterOption,
    kEventLogOption,
    SOption{EOptionKind::Text, "--xml",
            "with --at: only write the task into this file, for schtasks /create /xml FILE", "FILE"},
    SOption{EOptionKind::Flag, "--show",
            "show the task: next and last visit, and what that one has ended with"},
    SOption{EOptionKind::Flag, "--remove", "remove the task"},
};

constexpr std::string_view kNotes =
    R"(Windows only; on Linux a site is visited by its timer (systemctl enable --now ruvo@SITE.timer).
Makes the task "ruvo\SITE" in the task scheduler, in place of one of that name; for a file outside the
folder for sites, a digest of its path follows the name. The task runs "ruvoctl visit": whether or not
somebody is logged on, also on battery; it wakes the machine, makes up for a visit that was missed because
the machine was off, never starts a second one beside one that is going on, and ends a visit after
12 hours. Needs a command prompt that runs as administrator.
The local time 02:30 may not exist, or exist twice, on the day when summer time begins or ends; UTC has
each time once.
No password is stored: the visits can use this machine's files and registry, but no file server. For an
event folder on one, open the task in the task scheduler, and have it store the password. An account of
its own needs the right to log on as a batch job, access to the site's file, events and log, and the right
to start the comms server (docs\windows.md).
Exit status: 0 on success, 1 on failure, 2 on a usage error.

Example: every night, then look at what has come of it
  ruvoctl schedule yard --at 02:00
  ruvoctl schedule yard --show)";

constexpr std::string_view kElsewhere =
    "ruvoctl: this system has no task scheduler; a site is visited by its timer:\n"
    "  systemctl enable --now ruvo@SITE.timer\n"
    "  systemctl list-timers 'ruvo@*'\n"
    "  systemctl disable --now ruvo@SITE.timer\n";

int Fail(SConsole& console, std::string_view why) {
    console.error.Write("ruvoctl: " + EscapeControls(SystemTextToUtf8(why)) + "\n");
    return kExitFailed;
}

/// What the scheduler's program says is shown.
int RunScheduler(const STaskScheduler& scheduler, std::vector<std::string> arguments, SConsole& console) {
    CChildProgram program;
    const std::string failure = program.Start({.path = scheduler.program,
                                               .arguments = std::move(arguments),
                                               .environment = WholeEnvironment(),
                                               .input = {}});
    if (!failure.empty()) {
        return Fail(console, scheduler.program + ": " + failure);
    }
    std::string printed;
    const SChildEnd end = program.Await({.take = [&printed](std::string_view piece) { printed += piece; }});
    std::erase(printed, '\r');
    console.out.Write(EscapeControls(SystemTextToUtf8(printed), ELineFeeds::Keep));
    return end.status == 0 ? kExitGood : kExitFailed;
}

/// False after a complaint about an option.
bool ReadTask(const CArguments& arguments, SConsole& console, STask& task) {
    for (const std::string& text : arguments.GetAll("--at")) {
        const std::optional<SDailyTime> time = ParseDailyTime(text);
        if (!time) {
            Fail(console, "--at: expected a time such as 02:00, or 02:00Z for UTC");
            return false;
        }
        task.times.push_back(*time);
    }
    if (!ReadRetry(arguments)) {
        Fail(console, kRetryMistake);
        return false;
    }
    for (const char* const name : {"--retry", "--after", "--event-log"}) {
        if (arguments.Has(name)) {
            task.options.push_back(name + ("=" + arguments.Get(name)));
        }
    }
    return true;
}

/// As the scheduler reads it. A readable reason on failure, else an empty text.
std::string WriteTask(const std::string& path, const STask& task) {
    const SBothTimes now{LocalTime().value_or(UtcTime()), UtcTime()};
    return ReplaceWholeFile(path, std::string(kUtf16Mark) + Utf8ToUtf16(TaskXml(task, now)));
}

int MakeTask(const STaskScheduler& scheduler, const std::string& name, const STask& task, SConsole& console) {
    const std::string file = MakeUniqueFile(TemporaryFolder(), "ruvo");
    if (file.empty()) {
        return Fail(console, "a temporary file cannot be created");
    }
    const std::string why = WriteTask(file, task);
    const int status = why.empty()
                           ? RunScheduler(scheduler, {"/create", "/tn", name, "/xml", file, "/f"}, console)
                           : Fail(console, file + ": " + why);
    RemoveFile(file);
    if (status == kExitGood) {
        console.out.Write("Task " + SystemTextToUtf8(name) + ": created. Test it now: schtasks /run /tn \"" +
                          SystemTextToUtf8(name) + "\"\n");
    }
    return status;
}

int RunSchedule(const CArguments& arguments, SConsole& console) {
    const int actions = static_cast<int>(arguments.Has("--at")) + static_cast<int>(arguments.Has("--show")) +
                        static_cast<int>(arguments.Has("--remove"));
    if (actions != 1) {
        console.error.Write("ruvoctl: expected one of --at, --show and --remove\n");
        return kExitUsage;
    }
    STask task;
    if (!ReadTask(arguments, console, task)) {
        return kExitUsage;
    }
    const std::string typed = arguments.Get("SITE");
    task.iniPath = GivenSitePath(typed);
    if (task.iniPath.empty()) {
        return Fail(console, typed + ": the name of an INI file must end in .ini");
    }
    const std::optional<STaskScheduler> scheduler = FindTaskScheduler();
    if (!scheduler) {
        console.error.Write(kElsewhere);
        return kExitFailed;
    }
    const std::string name = TaskName(task.iniPath, OwnSpelling(SitesFolder()));
    if (arguments.Has("--show")) {
        return RunScheduler(*scheduler, {"/query", "/tn", name, "/v", "/fo", "LIST"}, console);
    }
    if (arguments.Has("--remove")) {
        return RunScheduler(*scheduler, {"/delete", "/tn", name, "/f"}, console);
    }
    if (GetPathKind(task.iniPath) != EPathKind::File) {
        return Fail(console, DisplayPath(task.iniPath) + ": no such file");
    }
    if (const std::string why = WhyNotScheduled(task.iniPath); !why.empty()) {
        return Fail(console, DisplayPath(task.iniPath) + ": " + why);
    }
    task.program = SystemPath(ProgramPath());
    task.account = arguments.Has("--user") ? AccountOf(arguments.Get("--user")) : scheduler->account;
    if (arguments.Has("--xml")) {
        const std::string file = FullPath(arguments.Get("--xml"));
        const std::string why = WriteTask(file, task);
        return why.empty() ? kExitGood : Fail(console, DisplayPath(file) + ": " + why);
    }
    return MakeTask(*scheduler, name, task, console);
}

} // namespace

SCommand ScheduleCommand() {
    return {"schedule", "Visit a site every day, by the task scheduler of Windows", kNotes, kOptions,
            RunSchedule};
}

} // namespace ruvo
