"""A site of the installed package, as docs/install.md makes it, over a relay that the test fills."""

from checks import check, equal
from counted_relay import ENTRY, PASSWORD, REGISTRY, CountedRelay, texts

SERVICE = "ruvo@yard.service"
INI = "/etc/ruvo/yard.ini"
EVENTS = "/var/lib/ruvo/yard"
LOG = "/var/log/ruvo/yard.log"
SIMULATED = "/var/lib/ruvo/simulated"  # the substation, and its account of what it handed over


class Site:
    """The site "yard" of a `System`."""

    def __init__(self, system):
        self.system = system
        self.relay = CountedRelay(system.path(f"{SIMULATED}/substation.toml"), system.path(f"{SIMULATED}/account"), "account")

    def make(self):
        system = self.system
        system.must("ruvoctl", "new", INI, "--link", "ethernet", "--relay", ENTRY)
        system.must("ruvoctl", "password", "set", INI, "RV001", input=f"{PASSWORD}\n")
        system.write("/etc/ruvo/registry.ini", REGISTRY)
        system.write("/etc/ruvo/yard.env", f"P32LS_SUBSTATION={SIMULATED}/substation.toml\n")
        system.must("install", "-d", "-o", "ruvo", "-g", "ruvo", SIMULATED)

    def visit(self):
        """The exit status of a start that waits for the visit's end."""
        return self.system.run("systemctl", "start", SERVICE).returncode

    def begin(self):
        """A visit that has taken some of its events, and will go on for a while."""
        before = self.relay.handed_over()
        self.system.must("systemctl", "start", "--no-block", SERVICE)
        self.system.wait_for("some events", lambda: self.relay.handed_over() >= before + 20)

    def wait_for_end(self):
        self.system.wait_for("the visit's end", lambda: self.state() in ("inactive", "failed"))

    def state(self):
        return self.system.property_of(SERVICE, "ActiveState")

    def result(self):
        return self.system.property_of(SERVICE, "Result")

    def stored(self):
        return texts(self.system.said("ruvoctl", "events", "--format", "json", EVENTS))

    def check_ledger(self, what):
        """What the relay handed over is in the day file, each event once and in order."""
        handed = self.relay.recordable(self.relay.handed_over())
        check(f"{what}: the relay handed over some", handed)
        equal(f"{what}: what the relay handed over is stored once", self.stored(), handed)

    def visit_after_kill(self, what):
        """The next visit stores what the journal has; the events that are missing then, which is at most the one under way at the kill."""
        under_way = self.relay.events[self.relay.handed_over() - 1][1]
        equal(f"{what}: the next run says what it found", self.visit(), 1)
        found = self.stored()
        missing = [text for text in self.relay.recordable(self.relay.handed_over()) if text not in found]
        equal(f"{what}: each event once", len(found), len(set(found)))
        check(f"{what}: at most the event that was under way is missing", missing in ([], [under_way]), missing)
        return missing

    def log(self):
        log = self.system.path(LOG)
        return log.read_text("latin-1") if log.exists() else ""
