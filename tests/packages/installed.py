"""Every step of docs/install.md on this machine, and what it must have led to."""

import glob
import grp
import hashlib
import os
import pathlib
import pwd
import re
import shutil

import contents
import visits
from checks import check, ends_with, equal, fails, must, run, said, silent, succeeds
from visits import ENVIRONMENT, EVENTS, count_events, visit

ENABLED = pathlib.Path("/etc/systemd/system/timers.target.wants/ruvo@yard.timer")
STAMP = pathlib.Path("/var/lib/systemd/timers/stamp-ruvo@yard.timer")
UNITS = "/lib/systemd/system/ruvo@"
EXAMPLES = "/usr/share/doc/ruvo/examples"
SUBSTATION = f"P32LS_SUBSTATION={EXAMPLES}/simulator/substation.toml"


class Steps:
    """The commands of docs/install.md, one after the other."""

    def __init__(self, machine):
        self.machine = machine
        self.place = machine.work / "place"
        (self.place / "build/release").mkdir(parents=True)
        shutil.copy(machine.deb, self.place / "build/release")
        machine.stand_in("systemctl", pathlib.Path("tests/packages/stand_in_systemctl").read_text("utf-8"))
        machine.stand_in("journalctl", '#!/bin/sh\necho "journalctl $*" >>"$ASKED"\n')
        self.commands = re.findall(r"(?m)^# ([a-z].*)$", pathlib.Path("docs/install.md").read_text("utf-8"))
        self.taken = 0
        self.shown = ""

    def take(self, what, status, start, **options):
        """The next command, which begins with these words; what it shows is kept."""
        command = self.commands[self.taken]
        self.taken += 1
        if command.startswith(start):
            done = run("bash", "-c", command, cwd=self.place, env={**os.environ, "PATH": self.machine.path}, **options)
            self.shown = done.stdout
            check(what, done.returncode == status, f"ended with {done.returncode}\n{done.stdout}")
        else:
            check(what, False, f"the document goes on with: {command}")


def modes(*paths):
    """Who may what: mode, owner and group."""
    found = [os.stat(path) for path in paths]
    return [f"{status.st_mode & 0o7777:o} {pwd.getpwuid(status.st_uid).pw_name} {grp.getgrgid(status.st_gid).gr_name}"
            for status in found]


def nights(noon):
    """The UTC times of the visits from noon of that day on."""
    schedule = re.search(r"(?m)^OnCalendar=(.*)", pathlib.Path(f"{UNITS}.timer").read_text("utf-8"))[1]
    told = said("systemd-analyze", "calendar", f"--base-time={noon} 12:00", "--iterations=3", schedule,
                env={**os.environ, "TZ": "Europe/Berlin"})
    return re.findall(r"(?m)^ *\(in UTC\): [A-Z][a-z]* (.*) 02:00:00 UTC", told)


def look_at_installation():
    equal("folders", modes("/etc/ruvo", "/var/lib/ruvo", "/var/log/ruvo", "/run/ruvo"),
          ["2750 root ruvo", "2750 ruvo ruvo-events", "2750 ruvo ruvo-events", "755 ruvo ruvo"])
    equal("groups", said("id", "-nG", "ruvo"), "ruvo dialout ruvo-events")
    silent("units", "systemd-analyze", "verify", "--man=yes", f"{UNITS}.service", f"{UNITS}.timer")
    # The last Sunday of March leaves out an hour; that of October has one twice.
    equal("a visit in the night when summer time begins", nights("2027-03-27"), ["2027-03-28", "2027-03-29", "2027-03-30"])
    equal("a visit in the night when summer time ends", nights("2027-10-30"), ["2027-10-31", "2027-11-01", "2027-11-02"])
    told = said("systemd-analyze", "security", "--offline=true", "--no-pager", f"{UNITS}.service")
    exposure = float(re.search(r"exposure level for [^:]*: ([0-9.]*) ", told)[1])
    print(f"  exposure of the service: {exposure} of 10")
    check("exposure of the service", exposure < 2, exposure)
    for page in ("ruvo", "ruvoctl", "ruvo.ini", "ruvo-events", "ruvo-exports", "ruvo-substation"):
        check(f"man {page}", said("man", "-w", page, stderr=None).startswith("/"))
    equal("libraries of what is installed", contents.libraries("/usr/bin/ruvo"), contents.RUNTIME)


def look_for_no_server(work):
    """A check as the documented one, which takes no server for granted."""
    (work / "alone.ini").write_text(f"[RUVO_GENERAL]\nEventRootDir={work}/events\nErrorLogPathname={work}/alone.log\n"
                                    "[RUVO_SERIAL]\nRV001=1\n", "utf-8")
    told = said("ruvo", "-t", work / "alone.ini")
    check("without a server named there is none", "P32LS failed to open" in told, told)


def visit_demo(steps):
    steps.take("demo: its file", 0, "cp ")
    steps.take("demo: its environment", 0, "cp ")
    steps.take("demo: check", 0, "runuser")
    steps.take("demo: a visit with problems", 1, "runuser")
    check("demo: the problems are shown", "Invalid password" in steps.shown, steps.shown)
    steps.take("demo: events", 0, "ruvoctl events")
    equal("demo: as many as the serial relays have", count_events("/var/lib/ruvo/demo"), 9)
    equal("demo: whose files they are",
          said("find", "/var/lib/ruvo/demo", "/var/log/ruvo/demo.log", "-not", "-user", "ruvo"), "")


def make_yard(steps):
    for name in ("two words", "süd", "-x"):
        ends_with(f"a name that no timer can have: {name}", 1, "ruvoctl", "new", f"/etc/ruvo/{name}.ini", "--link", "serial",
                  "--relay", "5")
    equal("none of these was made", sorted(os.listdir("/etc/ruvo")), ["demo.env", "demo.ini", "registry.ini"])
    steps.take("yard: its file", 0, "ruvoctl new")
    equal("yard: read by its group", modes("/etc/ruvo/yard.ini"), ["640 root ruvo"])
    steps.take("yard: password", 0, "ruvoctl password set", input="BAY1PASS\n")
    equal("yard: read by its group still", modes("/etc/ruvo/yard.ini"), ["640 root ruvo"])
    steps.take("yard: relays", 0, "ruvoctl list")
    check("yard: the relay and its password", re.search("RV001.*10.20.0.5", steps.shown), steps.shown)
    # The site's server: here the simulated one, named as a real one would be.
    with open("/etc/ruvo/registry.ini", "a", encoding="utf-8") as registry:
        registry.write("[CLSID\\{9A69E99F-E86F-455D-B971-355C1139963E}]\nInprocServer32=/usr/lib/ruvo/simulator/p32ls.so\n")
    ENVIRONMENT.write_text(SUBSTATION + "\n", "utf-8")


def visit_yard(steps):
    steps.take("yard: check", 0, "runuser")
    steps.take("yard: paths", 0, "ruvoctl paths")
    equal("yard: where things go", steps.shown, f"events: {EVENTS}\nlog: /var/log/ruvo/yard.log\n")
    steps.take("yard: scheduled", 0, "systemctl enable")
    steps.take("yard: visited, one event passed over", 1, "systemctl start")
    equal("yard: events", count_events(), 500)
    equal("yard: lock", len(glob.glob("/run/ruvo/*@yard.lock")), 1)
    steps.take("timers", 0, "systemctl list-timers")
    steps.take("failed units", 0, "systemctl --failed")
    steps.take("journal", 0, "journalctl")
    steps.take("nothing is set aside", 0, "ruvoctl recover")
    steps.take("a set-aside file that is not there", 1, "ruvoctl events")
    steps.take("which cannot be stored, as the user of the visits", 1, "ruvoctl recover")
    check("recover: as the user of the visits", "/var/lib/ruvo-state/" in steps.shown, steps.shown)
    equal("recover: whose files it makes", said("find", "/var/lib/ruvo-state", "-not", "-user", "ruvo"), "")
    steps.take("report", 0, "ruvoctl report")
    check("report: a page", "</html>" in (steps.place / "yard.html").read_text("utf-8"))
    for what, start, status, verdict in (("with the visits", "runuser", 2, "CRITICAL"), ("without them", "ruvoctl status", 1, "WARNING")):
        steps.take(f"status {what}: the event passed over, or its line in the log", status, start)
        check(f"status {what}: the verdict", re.search(f"(?m)^{verdict}", steps.shown), steps.shown)
        check(f"status {what}: the relays reached", ("1 of 1 relay reached" in steps.shown) == (start == "runuser"), steps.shown)


def watcher(group, *command):
    return "setpriv", "--reuid=nobody", "--regid=nogroup", f"--groups={group}", "--", *command


def watch_yard(steps):
    log = "/var/log/ruvo/yard.log"
    ends_with("who watches has the group for it", 1, *watcher("ruvo-events", "ruvoctl", "status", EVENTS, log))
    succeeds("and can read the events, but no site file",
             *watcher("ruvo-events", "sh", "-c", f"ruvoctl events {EVENTS} && ! cat /etc/ruvo/yard.ini"))
    fails("who has not, reads nothing", *watcher("nogroup", "ls", "/var/lib/ruvo", "/var/log/ruvo"))
    equal("what a visit makes is for its group", said("find", EVENTS, log, "-not", "-group", "ruvo-events"), "")
    equal("and for nobody else", said("find", EVENTS, "-perm", "/o=rwx"), "")
    steps.take("archive", 0, "ruvoctl archive")
    steps.take("find", 0, "ruvoctl find")
    steps.take("taken off the schedule", 0, "systemctl disable")
    equal("nothing of the document is left out", steps.taken, len(steps.commands))


def complete(*words, cwd=None):
    """What is offered for the last of these words."""
    script = ('source "/usr/share/bash-completion/completions/$1"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); "_$1"; '
              "echo ${COMPREPLY[*]}")
    return said("bash", "-c", script, "_", *words, cwd=cwd).split()


def look_at_completion():
    equal("completion: commands", complete("ruvoctl", "ch"), ["check"])
    equal("completion: options", complete("ruvoctl", "events", "--so"), ["--sort"])
    equal("completion: choices", complete("ruvoctl", "events", "--format", ""), ["text", "json", "csv"])
    equal("completion: first words", complete("ruvoctl", "password", "e"), ["encrypt"])
    equal("completion: sites", complete("ruvoctl", "status", "/etc/ruvo/ya"), ["/etc/ruvo/yard.ini"])
    equal("completion: keys", complete("ruvoctl", "mute", "/etc/ruvo/yard.ini", "RV0"), ["RV001"])
    equal("completion: keys of a site's name", complete("ruvoctl", "visit", "yard", "--test", ""), ["RV001"])
    equal("completion: INI files", complete("ruvo", "y", cwd="/etc/ruvo"), ["yard.ini"])
    succeeds("completion: found by the shell's own loader", "bash", "-c",
             "source /usr/share/bash-completion/bash_completion; _completion_loader ruvoctl; complete -p ruvoctl")
    commands = re.findall(r"(?m)^  ([a-z]+) ", said("ruvoctl", "--help").split("\nSubcommands:", 1)[1])
    for command in commands:
        told = said("ruvoctl", command, "--help")
        options = re.findall(r"(?m)^ +(?:-[a-z],)?(--[a-z-]+)", told)
        equal(f"completion: options of {command}", sorted(set(complete("ruvoctl", command, "--"))), sorted(set(options)))


def look_at_example(work):
    must("cc", "-I/usr/include", "-o", work / "check_relay", f"{EXAMPLES}/c/check_relay.c", "-L/usr/lib/ruvo", "-lruvo",
         "-Wl,-rpath,/usr/lib/ruvo")
    succeeds("the example in C", "env", SUBSTATION, work / "check_relay", "/etc/ruvo/yard.ini", "RV001")


def sums():
    files = [os.path.join(folder, name) for top in ("/etc/ruvo", "/var/lib/ruvo") for folder, _, names in os.walk(top)
             for name in names]
    return {file: hashlib.sha256(pathlib.Path(file).read_bytes()).hexdigest() for file in files}


def upgrade(work):
    before = sums()
    newer = said("dpkg-query", "-W", "-f", "${Version}", "ruvo").split("-")[0] + ".1"
    must("cmake", "-E", "chdir", "build/release", "cpack", "-G", "DEB", "-D", f"CPACK_PACKAGE_VERSION={newer}", "-B",
         work / "newer")
    succeeds("upgrade", "dpkg", "-i", *glob.glob(f"{work}/newer/ruvo_{newer}-1_*.deb"))
    equal("upgrade: version", said("dpkg-query", "-W", "-f", "${Version}", "ruvo"), f"{newer}-1")
    equal("upgrade: sites, registry and events stay", sums(), before)
    equal("upgrade: no copies of files", glob.glob("/etc/ruvo/*.dpkg-*"), [])
    succeeds("upgrade: a visit", *visit("yard"))


def remove_and_come_back(machine):
    # The machine's own systemctl can enable without a running systemd.
    succeeds("enable", "systemctl", "enable", "ruvo@yard.timer")
    check("enable: its link", ENABLED.is_symlink())
    if not STAMP.parent.is_dir():
        STAMP.parent.mkdir(parents=True)
        machine.made_stamps = True
    STAMP.touch()
    succeeds("remove", "dpkg", "-r", "ruvo")
    left = [path for path in ("/usr/bin/ruvo", "/usr/lib/ruvo", f"{UNITS}.service", "/usr/share/doc/ruvo")
            if os.path.exists(path)]
    equal("remove: programs and units are gone", left, [])
    kept = ["/etc/ruvo/registry.ini", "/etc/ruvo/yard.ini", EVENTS, "/var/log/ruvo/yard.log", str(ENABLED)]
    equal("remove: the rest stays", [path for path in kept if os.path.lexists(path)], kept)
    # Comes back on a machine that systemd runs, as far as the package's scripts see.
    booted = pathlib.Path("/run/systemd/system")
    pretends = not booted.is_dir()
    if pretends:
        booted.mkdir(parents=True)
    machine.stand_in("deb-systemd-invoke", '#!/bin/sh\necho "invoke $*" >>"$ASKED"\n')
    succeeds("reinstall", "dpkg", "-i", machine.deb, env={**os.environ, "PATH": machine.path})
    if pretends:
        booted.rmdir()
    asked = pathlib.Path(os.environ["ASKED"]).read_text("utf-8").splitlines()
    equal("reinstall: the timer begins again", asked[-1], "invoke start ruvo@yard.timer")


def purge(deb):
    succeeds("purge", "dpkg", "--purge", "ruvo")
    check("purge: day files and sites stay", os.path.isfile("/etc/ruvo/yard.ini") and os.path.isdir(EVENTS))
    for left in ("/etc/ruvo/registry.ini", "/var/log/ruvo", ENABLED, STAMP):
        check(f"purge: {left} is gone", not os.path.lexists(left))
    # Again, with nothing to keep.
    shutil.rmtree("/etc/ruvo")
    shutil.rmtree("/var/lib/ruvo")
    must("dpkg", "-i", deb)
    succeeds("purge of an unused package", "dpkg", "--purge", "ruvo")
    left = [path for path in ("/etc/ruvo", "/var/lib/ruvo", "/var/log/ruvo", "/run/ruvo") if os.path.exists(path)]
    equal("purge: nothing is left", left, [])


def test(machine):
    print("Installing, visiting, upgrading, removing", flush=True)
    os.environ["ASKED"] = str(machine.work / "asked")
    os.environ["DEBIAN_FRONTEND"] = "noninteractive"
    steps = Steps(machine)
    steps.take("install", 0, "apt install")
    look_at_installation()
    look_for_no_server(machine.work)
    visit_demo(steps)
    make_yard(steps)
    visit_yard(steps)
    watch_yard(steps)
    visits.test(machine.work)
    look_at_completion()
    look_at_example(machine.work)
    upgrade(machine.work)
    remove_and_come_back(machine)
    purge(machine.deb)
