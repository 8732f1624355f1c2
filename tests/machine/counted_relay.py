"""A simulated relay whose events are numbered, and the account of what it handed over."""

import json
import pathlib

from checks import check, equal, wait_for

RELAY = """account = "%s"
[[relay]]
name = "Bay 1"
ethernet = { ip = "10.20.0.5", bus = 1, address = 2 }
[relay.identity]
model = "BY90-E"
serial = "00009001"
[relay.access]
password = "BAY1PASS"
length = 8
[relay.cells]
"00.DF" = { uint = 0, size = 1 }
"05.01" = { number = 400.1, unit = "V", label = "Voltage %%k" }
"""
EVENT = """[[relay.event]]
kind = %d
location = "05.01"
time = 2026-11-16T00:00:01
text = "%s"
value = { number = 1.0, unit = "A" }
"""
SLOW = '[[fault]]\noperation = "GetEvent"\ndelay = 20\n'
REGISTRY = "[CLSID\\{9A69E99F-E86F-455D-B971-355C1139963E}]\nInprocServer32=/usr/lib/ruvo/simulator/p32ls.so\n"
ENTRY = "10.20.0.5,2,1"
PASSWORD = "BAY1PASS"


class CountedRelay:
    def __init__(self, substation, account, account_inside=None):
        """Two files; the account's path as the server opens it, where that is another one than here."""
        self.substation, self.account = pathlib.Path(substation), pathlib.Path(account)
        self.account_inside = account_inside or account
        self.events = []  # in their order: each one's kind and text

    def fill(self, count, kind=0, faults="", top=""):
        """The relay gets that many further events; those of kind 9 are unknown to the extractor. `top` begins the file."""
        self.events += [(kind, f"E{len(self.events) + number}") for number in range(1, count + 1)]
        events = "".join(EVENT % event for event in self.events)
        self.substation.write_text(top + RELAY % self.account_inside + events + faults, "utf-8")

    def recordable(self, count):
        """The texts of the events that can be stored, among that many first ones."""
        return [text for kind, text in self.events[:count] if kind == 0]

    def under_way(self):
        """The text of the last event that was asked for."""
        return self.events[self.handed_over() - 1][1]

    def handed_over(self):
        return len(self.account.read_text("utf-8").splitlines()) if self.account.exists() else 0


def texts(told):
    """The events that `ruvoctl events --format json` tells of."""
    return [json.loads(line)["event_text"] for line in told.splitlines() if line.startswith("{")]


class CountedSite:
    """A site of one such `relay`. Those that derive from it `start` a visit in the background, and tell what is `stored`."""

    def begin(self):
        """A visit that has taken some of its events, and will go on for a while."""
        before = self.relay.handed_over()
        self.start()
        wait_for("some events", lambda: self.relay.handed_over() >= before + 20)

    def check_ledger(self, what):
        """What the relay handed over is in the day file, each event once and in order."""
        handed = self.relay.recordable(self.relay.handed_over())
        check(f"{what}: the relay handed over some", handed)
        equal(f"{what}: what the relay handed over is stored once", self.stored(), handed)

    def check_after_kill(self, what, under_way):
        """The events that are missing when the next visit has stored what the journal had: at most the one under way at the kill."""
        found = self.stored()
        missing = [text for text in self.relay.recordable(self.relay.handed_over()) if text not in found]
        equal(f"{what}: each event once", len(found), len(set(found)))
        check(f"{what}: at most the event that was under way is missing", missing in ([], [under_way]), missing)
        return missing
