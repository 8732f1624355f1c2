"""Every step of docs/windows.md in a new Windows, and what it must have led to."""

import pathlib
import re
import shutil
import xml.etree.ElementTree

from checks import check, equal

FOLDER, DATA = "Program Files/ruvo", "ProgramData/ruvo"
TASK = "{http://schemas.microsoft.com/windows/2004/02/mit/task}"
SETTINGS = {"WakeToRun": "true", "StartWhenAvailable": "true", "ExecutionTimeLimit": "PT12H",
            "MultipleInstancesPolicy": "IgnoreNew", "StopIfGoingOnBatteries": "false",
            "DisallowStartIfOnBatteries": "false"}
SUBSTATION = r"C:\Program Files\ruvo\substation.toml"


class Steps:
    """The commands of the page, one after the other, as at the prompt of the start menu."""

    def __init__(self, windows):
        self.windows = windows
        self.commands = re.findall(r"(?m)^> (.*)$", pathlib.Path("docs/windows.md").read_text("utf-8"))
        self.taken = 0
        self.shown = ""

    def type(self, command, text=""):
        """As one types it, and what is typed when it asks. The status; none after too long."""
        answers = self.windows.work / "answers"
        answers.write_text(text, "ascii")
        # A session of its own for each that starts the server: Wine may still offer the one that is about to end.
        if re.search(r"\b(visit|check)\b", command):
            self.windows.end_session()

        def attempt():
            with open(answers, "rb") as stdin:
                return self.windows.type("step", 180, command, stdin=stdin, WINEPATH=r"C:\Program Files\ruvo", WINEDEBUG="-all,+eventlog")

        status = self.windows.insist(command, attempt)
        self.shown = self.windows.read("step.log")
        return status

    def take(self, what, status, start, text=""):
        """The next command of the page, which begins with these words; what it shows is kept."""
        command = self.commands[self.taken]
        self.taken += 1
        if command.startswith(start):
            ended = self.type(command, text)
            calls = self.windows.read("step.calls")
            check(what, ended == status, f"ended with {ended}\n{self.shown}\n{calls}")
        else:
            check(what, False, f"the page goes on with: {command}")

    def entries(self):
        """What the last step has left in the event log: kind and text."""
        kinds = {"err": "Error", "warn": "Warning", "trace": "Information"}
        calls = self.windows.read("step.calls")
        return [(kinds[kind], text) for kind, text in re.findall(r':(\w+):eventlog:ReportEventW L"(.*)"', calls)]


def register_server(steps):
    """The site's server: here the simulated one, registered as a real one would have done it."""
    steps.windows.run("register", 60, steps.windows.drive / FOLDER / "p32ls-sim.exe", "/RegServer", SUBSTATION)


def events(folder):
    return len(list(folder.rglob("*.evt")))


def try_simulated(steps):
    data = steps.windows.drive / DATA
    steps.take("demo: the simulated server", 0, "p32ls-sim.exe /RegServer")
    steps.take("demo: a site", 0, "ruvoctl new")
    steps.take("demo: a visit", 0, "ruvoctl visit")
    said = steps.entries()
    check("demo: one entry in the event log", len(said) == 1 and said[0][0] == "Information" and
          "2 of 2 relays reached" in said[0][1], said)
    steps.take("demo: its events", 0, "ruvoctl events")
    equal("demo: the day file of the relay that had some", events(data / "demo"), 1)
    steps.take("demo: the server goes", 0, "p32ls-sim.exe /UnregServer")


def set_up_site(steps):
    steps.take("yard: its file", 0, "ruvoctl new")
    steps.take("yard: password", 0, "ruvoctl password set", "BAY1PASS\n")
    steps.take("yard: relays", 0, "ruvoctl list")
    check("yard: the relay and its password", re.search("RV001.*10.20.0.5", steps.shown), steps.shown)
    steps.take("yard: paths", 0, "ruvoctl paths")
    equal("yard: where things go", steps.shown,
          "events: C:\\ProgramData\\ruvo\\yard\nlog: C:\\ProgramData\\ruvo\\yard.log\n")
    status = steps.type("ruvoctl check %ProgramData%\\ruvo\\yard.ini")
    told = steps.shown + steps.windows.read("step.calls")
    check("yard: a check without a server says what COM says", status != 0 and "80040154" in told, told)
    register_server(steps)
    steps.take("yard: check", 0, "ruvoctl visit yard --check")
    steps.take("yard: the connection to a relay", 0, "ruvoctl visit yard --test")
    equal("yard: checks leave no entry in the event log", steps.entries(), [])
    steps.take("yard: a visit, one event passed over", 1, "ruvoctl visit yard")
    said = steps.entries()
    check("yard: one entry in the event log", len(said) == 1 and said[0][0] == "Warning" and
          "yard: visited, with problems (status 1); 1 of 1 relay reached" in said[0][1], said)
    journals = list((steps.windows.drive / DATA / "state").glob("*/visits.ndjson"))
    equal("records of the visits of both sites are in the machine's state", len(journals), 2)


def task_file(windows):
    return windows.drive / "windows/system32/tasks/ruvo/yard"


def elements(text):
    """The texts of a task's elements, by their names."""
    task = xml.etree.ElementTree.fromstring(text[text.index("<Task "):])
    return {element.tag.removeprefix(TASK): element.text for element in task.iter()}


def schedule(steps):
    steps.take("scheduled", 0, "ruvoctl schedule yard --at")
    # (The scheduler here keeps the settings alone; what it was given is seen in a file.)
    stored = elements(task_file(steps.windows).read_text("utf-8-sig"))
    equal("task: written into a file", steps.type("ruvoctl schedule yard --at 02:00 --xml task.xml"), 0)
    given = (steps.windows.work / "task.xml").read_bytes()
    check("task: its encoding", given.startswith(b"\xff\xfe<\0?\0"), given[:20])
    found = elements(given.decode("utf-16"))
    equal("task: the settings arrive", {name: stored[name] for name in SETTINGS}, SETTINGS)
    wanted = {**SETTINGS, "LogonType": "S4U", "RunLevel": "HighestAvailable", "DaysInterval": "1",
              "Command": r"C:\Program Files\ruvo\ruvoctl.exe", "Arguments": r'visit -- "C:\ProgramData\ruvo\yard.ini"'}
    equal("task: what it says", {name: found.get(name) for name in wanted}, wanted)
    check("task: its time", re.fullmatch(r"20\d\d-\d\d-\d\dT02:00:00", found["StartBoundary"]), found["StartBoundary"])
    check("task: its account", found["UserId"].startswith("S-1-5-21-"), found["UserId"])
    # What the scheduler would start.
    status = steps.type(f'"{found["Command"]}" {found["Arguments"]}')
    equal("task: its command line visits", (status, len(steps.entries())), (1, 1))
    steps.take("task: shown", 0, "ruvoctl schedule yard --show")
    steps.take("task: started by hand", 0, "schtasks /run")
    status = steps.type("ruvoctl schedule missing --at 02:00")
    check("task: not of a missing site", status == 1 and "no such file" in steps.windows.read("step.calls"))


def visit_badly(steps):
    """What a scheduler's log, a person and the event log see."""
    steps.type("ruvoctl visit missing")
    entries = steps.entries()
    check("event log: a site that is not there", entries[0][0] == "Error" and "missing.ini" in entries[0][1], entries)
    equal("event log: good visits can be left out",
          (steps.type("ruvoctl visit demo --event-log bad"), steps.entries()), (0, []))
    steps.type("ruvoctl visit missing --event-log bad")
    equal("event log: but no bad ones", len(steps.entries()), 1)


def watch(steps):
    steps.take("status: the event passed over", 2, "ruvoctl status")
    check("status: the verdict", steps.shown.startswith("CRITICAL"), steps.shown)
    steps.take("digest", 0, "ruvoctl digest")
    steps.take("report", 0, "ruvoctl report")
    check("report: a page", "</html>" in (steps.windows.drive / DATA / "yard.html").read_text("utf-8"))
    steps.take("nothing is set aside", 0, "ruvoctl recover")


def upgrade_and_remove(steps):
    windows = steps.windows
    windows.end_session()  # the server may still await its next client
    steps.take("upgrade", 0, "ruvo-")
    check("upgrade: the task stays", task_file(windows).is_file())
    steps.take("task: removed", 0, "ruvoctl schedule yard --remove")
    check("task: is gone", not task_file(windows).exists())
    steps.take("removal", 0, '"%ProgramFiles%')
    windows.run("wait", 60, "cmd", "/c", "ping -n 5 127.0.0.1")  # it goes on in a copy of itself
    check("removal: the programs are gone", not (windows.drive / FOLDER / "RUVO.exe").exists())
    kept = ["yard.ini", "yard.log", "demo.ini"]
    equal("removal: sites and logs stay", [name for name in kept if (windows.drive / DATA / name).is_file()], kept)
    check("removal: events stay", events(windows.drive / DATA / "yard") > 0)
    equal("nothing of the page is left out", steps.taken, len(steps.commands))


def test(windows, packages):
    print("Taking the steps of docs/windows.md under Wine", flush=True)
    shutil.copy(packages["windows-x64"][1], windows.work)
    steps = Steps(windows)
    steps.take("install", 0, "ruvo-")
    try_simulated(steps)
    set_up_site(steps)
    schedule(steps)
    visit_badly(steps)
    watch(steps)
    upgrade_and_remove(steps)
