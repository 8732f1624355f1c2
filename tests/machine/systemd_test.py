"""The Debian package on a system that a real systemd runs: systemd_test.py IMAGE DEB. Needs root."""

import pathlib
import re
import shutil
import sys
import tempfile

from booted_system import BootedSystem
from checks import check, count_checks, equal, must, said, wait_for
from control_groups import removed_afterwards
from counted_relay import SLOW
from packaged_site import EVENTS, INI, LOG, SERVICE, Site

TIMER = "ruvo@yard.timer"
STAMP = f"/var/lib/systemd/timers/stamp-{TIMER}"
MANY = 400  # of a visit that something happens to
PASSED_OVER = "of unknown kind passed over"


def install(system, deb):
    shutil.copy(deb, system.path("/root"))
    system.must("dpkg", "-i", f"/root/{deb.name}")
    told = system.said("systemd-analyze", "security", "--no-pager", "ruvo@demo.service")
    exposure = float(re.search(r"exposure level for [^:]*: ([0-9.]*) ", told)[1])
    print(f"  exposure of the service: {exposure} of 10")
    check("install: exposure of the service", exposure <= 1.5, exposure)


def look_at_visits(system, site):
    site.make()
    site.relay.fill(3)
    equal("a good visit", (site.visit(), site.result()), (0, "success"))
    site.check_ledger("a good visit")
    equal("a good visit: nothing in the log", site.log(), "")
    # What becomes of a bad one: the unit fails, somebody is told, and the journal has the line with its priority.
    system.write("/etc/systemd/system/tell.service", "[Service]\nType=oneshot\nExecStart=/bin/touch /run/told\n")
    system.drop_in("ruvo@.service", "[Unit]\nOnFailure=tell.service\n")
    site.relay.fill(1, kind=9)
    equal("a visit with a problem", (site.visit(), site.result()), (1, "exit-code"))
    wait_for("somebody is told", lambda: system.run("test", "-e", "/run/told").returncode == 0)
    equal("a visit with a problem: told by systemctl", system.said("systemctl", "--failed", "--plain", "--no-legend").split()[:1], [SERVICE])
    check("a visit with a problem: its line in the journal", PASSED_OVER in system.journal(SERVICE))
    system.drop_in("ruvo@.service", "")
    system.must("systemctl", "reset-failed")
    # Its group reads events and logs, and no password.
    system.must("useradd", "-G", "ruvo-events", "watcher")
    watcher = ("setpriv", "--reuid=watcher", "--regid=watcher", "--init-groups", "--")
    check("the watchers' group reads events", "E3" in system.said(*watcher, "ruvoctl", "events", EVENTS))
    check("the watchers' group reads no site file", system.run(*watcher, "cat", INI).returncode != 0)
    check("the watchers' group reads no journal of a visit", system.run(*watcher, "ls", "/var/lib/ruvo-state").returncode != 0)


def look_at_priorities(system, site):
    """In the journal, a line has the priority that its relay has earned."""
    site.relay.fill(1)
    before = system.must("date", "+@%s.%6N").strip()
    site.visit()
    lines = {priority: system.journal(SERVICE, f"--since={before}", f"--priority={priority}..{priority}")
             for priority in ("info", "warning", "err")}
    equal("priorities: a good relay", [name for name, text in lines.items() if "(RV001): 1 event\n" in text + "\n"], ["info"])
    equal("priorities: nothing else of a good visit", (lines["warning"], lines["err"]), ("", ""))
    site.relay.fill(1, kind=9)
    site.visit()
    lost = system.journal(SERVICE, f"--since={before}", "--priority=err..err")
    check("priorities: a relay whose event is lost", "(RV001): 1 event, 1 lost" in lost, lost)
    warned = system.journal(SERVICE, f"--since={before}", "--priority=warning..warning")
    check("priorities: a line of the error log", PASSED_OVER in warned, warned)
    system.must("systemctl", "reset-failed")
    equal("the memory of a visit is limited", system.property_of(SERVICE, "MemoryMax"), str(128 * 1024 * 1024))


def look_at_starts_by_hand(system, site):
    """Of two visits of a site at a time the later one does nothing, and the service does not fail for it."""
    site.relay.fill(MANY, faults=SLOW)
    site.begin()
    done = system.run("/usr/lib/ruvo/run-site", "yard")
    check("by hand beside the service", done.returncode == 4 and "has been visiting this site since" in done.stdout, done.stdout)
    site.wait_for_end()
    equal("the service beside which one was started", site.result(), "success")
    site.relay.fill(MANY, faults=SLOW)
    before = site.relay.handed_over()
    system.must("systemd-run", "--quiet", "--unit=hand", "/usr/lib/ruvo/run-site", "yard")
    wait_for("some events by hand", lambda: site.relay.handed_over() >= before + 20)
    equal("the service beside one by hand", (site.visit(), site.result(), site.state()), (0, "success", "inactive"))
    equal("the service beside one by hand: its status", system.property_of(SERVICE, "ExecMainStatus"), "4")
    wait_for("the end of the visit by hand", lambda: system.property_of("hand.service", "ActiveState") in ("inactive", "failed"))
    site.check_ledger("two starts at a time")


def count_starts(system):
    return system.journal(SERVICE).count("Starting ")


def look_at_timer(system, site):
    system.drop_in(TIMER, "[Timer]\nOnCalendar=\nOnCalendar=*:*:0/1\nRandomizedDelaySec=0\nAccuracySec=100ms\n")
    site.relay.fill(2)
    before = count_starts(system)
    system.must("systemctl", "enable", "--now", TIMER)
    wait_for("a visit by the timer", lambda: count_starts(system) > before and site.state() != "activating")
    system.must("systemctl", "stop", TIMER)
    site.wait_for_end()
    site.check_ledger("a visit by the timer")
    # A night that the machine slept through is made good at the timer's next start.
    system.drop_in(TIMER, "[Timer]\nRandomizedDelaySec=0\n")
    before = count_starts(system)
    system.must("systemctl", "start", TIMER)
    equal("nothing is made good after a visit", (count_starts(system), site.state()), (before, "inactive"))
    system.must("systemctl", "stop", TIMER)
    system.must("touch", "--date=2 days ago", STAMP)
    site.relay.fill(2)
    system.must("systemctl", "start", TIMER)
    wait_for("a missed night is made good", lambda: count_starts(system) > before)
    site.wait_for_end()
    site.check_ledger("a missed night is made good")
    system.drop_in(TIMER, "")


def look_at_ends(system, site):
    """A visit that is stopped keeps what it has, and the next one takes the rest."""
    site.relay.fill(MANY, faults=SLOW)
    site.begin()
    system.must("systemctl", "stop", SERVICE)
    site.check_ledger("stopped")
    check("stopped: events are left with the relay", site.relay.handed_over() < len(site.relay.events))
    check("stopped: its line in the log", "Run ended by SIGTERM; 0 relays not visited." in site.log(), site.log())
    system.drop_in(SERVICE, "[Service]\nTimeoutStartSec=1\n")
    site.visit()
    equal("timed out", site.result(), "timeout")
    site.check_ledger("timed out")
    # Killed with all its processes: the next run stores what the journal has.
    system.drop_in(SERVICE, "")
    site.begin()
    system.must("systemctl", "kill", "--signal=KILL", SERVICE)
    site.wait_for_end()
    equal("killed", site.result(), "signal")
    return site.visit_after_kill("killed")


def upgrade(system, site, deb, work):
    tree = pathlib.Path(work) / "newer"
    must("dpkg-deb", "-R", deb, tree)
    control = tree / "DEBIAN/control"
    control.write_text(re.sub(r"(?m)^Version: .*", "Version: 999-1", control.read_text("utf-8")), "utf-8")
    must("dpkg-deb", "--root-owner-group", "-b", tree, system.path("/root/newer.deb"))
    site.relay.fill(MANY, faults=SLOW)
    before = site.relay.handed_over()
    site.begin()
    system.must("dpkg", "-i", "/root/newer.deb")
    equal("upgrade in mid-visit: the visit goes on", site.state(), "activating")
    site.wait_for_end()
    equal("upgrade in mid-visit: a good visit", site.result(), "success")
    equal("upgrade in mid-visit: all is taken", site.relay.handed_over() - before, MANY)
    equal("upgrade", system.said("dpkg-query", "-W", "-f", "${Version}", "ruvo"), "999-1")


def rotate(system, site):
    page = pathlib.Path("docs/install.md").read_text("utf-8")
    system.write("/etc/logrotate.d/ruvo", re.search(r"(?ms)^(/var/log/ruvo/\*\.log \{.*?^\})", page)[1] + "\n")
    before = site.log()
    system.must("logrotate", "--force", "/etc/logrotate.d/ruvo")
    equal("rotation: the old log stays beside it", system.path(f"{LOG}.1").read_text("latin-1"), before)
    site.relay.fill(1, kind=9)
    site.visit()
    check("rotation: a new log", PASSED_OVER in site.log(), site.log())
    equal("rotation: whose it is", system.said("stat", "-c", "%U %G %a", LOG), "ruvo ruvo-events 640")
    system.must("systemctl", "reset-failed")


def remove_and_come_back(system, site):
    system.must("systemctl", "start", TIMER)
    site.relay.fill(MANY, faults=SLOW)
    site.begin()
    system.must("dpkg", "-r", "ruvo")
    equal("removed: timer and visit have ended", (system.property_of(TIMER, "ActiveState"), site.state() in ("inactive", "failed")),
          ("inactive", True))
    equal("removed: programs are gone, sites, events and logs stay",
          [system.path(place).exists() for place in ("/usr/bin/ruvo", INI, EVENTS, LOG)], [False, True, True, True])
    system.must("dpkg", "-i", "/root/newer.deb")
    equal("back again: the enabled timer waits", system.property_of(TIMER, "ActiveState"), "active")
    site.visit()
    equal("back again: all is taken", site.relay.handed_over(), len(site.relay.events))
    found = site.stored()
    equal("back again: each event once", len(found), len(set(found)))
    return found


def purge(system, site):
    system.must("systemctl", "stop", TIMER)
    system.must("dpkg", "--purge", "ruvo")
    equal("purged: what is gone and what stays",
          [system.path(place).exists() for place in (STAMP, LOG, f"/etc/systemd/system/timers.target.wants/{TIMER}", INI, EVENTS)],
          [False, False, False, True, True])
    equal("purged: the user stays, who owns events", system.said("stat", "-c", "%U", EVENTS), "ruvo")


def test():
    image, deb = (pathlib.Path(word).resolve() for word in sys.argv[1:3])
    with tempfile.TemporaryDirectory(dir=image.parent) as work, removed_afterwards("payload", "supervisor"):
        system = BootedSystem(image, work)
        try:
            system.boot()
            site = Site(system)
            install(system, deb)
            look_at_visits(system, site)
            look_at_priorities(system, site)
            look_at_timer(system, site)
            look_at_starts_by_hand(system, site)
            missing = look_at_ends(system, site)
            upgrade(system, site, deb, work)
            rotate(system, site)
            found = remove_and_come_back(system, site)
            equal("in the end all is stored", [text for text in site.relay.recordable(len(site.relay.events)) if text not in found], missing)
            purge(system, site)
        finally:
            system.close()
    equal("nothing is left mounted", [line for line in said("cat", "/proc/mounts").splitlines() if str(work) in line], [])


if __name__ == "__main__":
    sys.exit(count_checks(test))
