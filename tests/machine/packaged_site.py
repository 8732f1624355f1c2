"""A site of the installed package, as docs/install.md makes it, over a relay that the test fills."""

from checks import equal, wait_for
from counted_relay import ENTRY, PASSWORD, REGISTRY, CountedRelay, CountedSite, texts

SERVICE = "ruvo@yard.service"
INI = "/etc/ruvo/yard.ini"
EVENTS = "/var/lib/ruvo/yard"
LOG = "/var/log/ruvo/yard.log"
SIMULATED = "/var/lib/ruvo/simulated"  # the substation, and its account of what it handed over


class Site(CountedSite):
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

    def start(self):
        self.system.must("systemctl", "start", "--no-block", SERVICE)

    def wait_for_end(self):
        wait_for("the visit's end", lambda: self.state() in ("inactive", "failed"))

    def state(self):
        return self.system.property_of(SERVICE, "ActiveState")

    def result(self):
        return self.system.property_of(SERVICE, "Result")

    def stored(self):
        return texts(self.system.said("ruvoctl", "events", "--format", "json", EVENTS))

    def visit_after_kill(self, what):
        under_way = self.relay.under_way()
        equal(f"{what}: the next run says what it found", self.visit(), 1)
        return self.check_after_kill(what, under_way)

    def log(self):
        log = self.system.path(LOG)
        return log.read_text("latin-1") if log.exists() else ""
