"""The installed package's visits and their limit of memory, which containers that systemd boots do not have: memory_limit_test.py DEB,
on a machine that is there for this test alone."""

import pathlib
import sys

from booted_system import System
from checks import check, count_checks, equal
from counted_relay import SLOW
from packaged_site import SERVICE, Site

GROUP = "/sys/fs/cgroup/system.slice/system-ruvo.slice"  # of all sites
MANY = 400  # of a visit that something happens to
LARGE = 20000  # more than fits into a visit that keeps its events in memory
MEGABYTE = 1 << 20
KILLED = "killed by the OOM killer"


def visit_within_limit(system, site):
    """As the package limits it."""
    site.relay.fill(LARGE)
    system.drop_in(SERVICE, f"[Service]\nExecStopPost=+/bin/sh -c \"cat {GROUP}/{SERVICE}/memory.peak >/run/peak\"\n")
    limit = int(system.property_of(SERVICE, "MemoryMax"))
    equal("within the limit: a good visit", (site.visit(), site.result()), (0, "success"))
    equal("within the limit: all is taken", site.relay.handed_over(), LARGE)
    site.check_ledger("within the limit")
    peak = int(system.path("/run/peak").read_text("ascii"))
    print(f"  {LARGE} events, the simulator's among them: at most {peak / MEGABYTE:.1f} of {limit / MEGABYTE:.0f} MB")
    # (A cache of files counts as well and is given back, so that only zero or the limit itself would be wrong.)
    check("within the limit: its memory", 0 < peak < limit, (peak, limit))
    system.drop_in(SERVICE, "")


def lower_limit_in_visit(system, site):
    site.relay.fill(MANY, faults=SLOW)
    site.begin()
    system.must("systemctl", "set-property", "--runtime", SERVICE, "MemoryMax=1M")
    site.wait_for_end()
    equal("lowered in mid-visit: how it ended", site.result(), "oom-kill")
    check("lowered in mid-visit: said by the journal", KILLED in system.journal(SERVICE), system.journal(SERVICE))
    check("lowered in mid-visit: events are left with the relay", site.relay.handed_over() < len(site.relay.events))
    system.must("systemctl", "set-property", "--runtime", SERVICE, "MemoryMax=128M")
    told = system.said("ruvoctl", "status", "/etc/ruvo/yard.ini")
    check("lowered in mid-visit: said by the status", "killed" in told, told)
    return site.visit_after_kill("lowered in mid-visit")


def start_without_memory(system, site):
    """A visit that cannot even start takes nothing."""
    site.relay.fill(3)
    before = site.relay.handed_over()
    system.must("systemctl", "set-property", "--runtime", SERVICE, "MemoryMax=256K")
    check("no memory: the visit fails", site.visit() != 0)
    equal("no memory: how it ended", site.result(), "oom-kill")
    equal("no memory: nothing is taken", site.relay.handed_over(), before)
    system.must("systemctl", "set-property", "--runtime", SERVICE, "MemoryMax=128M")
    site.visit()
    equal("no memory: the next visit takes all", site.relay.handed_over(), len(site.relay.events))


def test():
    deb = pathlib.Path(sys.argv[1]).resolve()
    system = System()
    system.must("dpkg", "-i", deb)
    site = Site(system)
    site.make()
    visit_within_limit(system, site)
    missing = lower_limit_in_visit(system, site)
    start_without_memory(system, site)
    found = site.stored()
    equal("in the end all is stored", [text for text in site.relay.recordable(len(site.relay.events)) if text not in found], missing)
    equal("in the end each event once", len(found), len(set(found)))


if __name__ == "__main__":
    sys.exit(count_checks(test))
