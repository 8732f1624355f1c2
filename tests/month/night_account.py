"""The exact account of all nights: each event that a relay handed over, and where it is."""

import collections
import hashlib
import re

from ledger import Ledger
from night_relays import UNKNOWN

EVENT = re.compile(r"R(\d+)E(\d+)")


class DayFiles:
    """What stands in day files, in files moved away and in set-aside files; only what has changed is read again."""

    def __init__(self, site):
        self.site = site
        self.known = {}   # path: (size, time, digest)
        self.events = {}  # path: its events in order
        self.torn = set()
        self.touched = set()  # by a person

    def look(self):
        """Reads what is new; complaints."""
        site, complaints = self.site, []
        there = {path: path.stat() for path in [*site.day_files(), *site.away.glob("*.evt"), *site.set_aside_files()]}
        for gone in set(self.known) - set(there):
            if gone.suffix == ".evt" and gone not in self.touched and self.known[gone][0] > 0:
                complaints.append(f"{gone} is gone")
            del self.known[gone], self.events[gone]
        changed = [path for path, now in there.items() if self.known.get(path, (None, None))[:2] != (now.st_size, now.st_mtime_ns)]
        for path in changed:
            content = path.read_bytes()
            if path in self.known and path not in self.touched:
                size, _, digest = self.known[path]
                if hashlib.sha256(content[:size]).digest() != digest:
                    complaints.append(f"earlier bytes of {path} have changed")
            self.known[path] = (there[path].st_size, there[path].st_mtime_ns, hashlib.sha256(content).digest())
        return complaints + self.read(changed)

    def read(self, changed):
        complaints = []
        self.events |= {path: [] for path in changed}
        self.torn -= set(changed)
        named = {str(path): path for path in changed}
        for at in range(0, len(changed), 500):
            for item in self.site.objects("events", "--format", "json", *changed[at:at + 500]):
                path = named[item["file"]]
                if "error" in item:
                    self.torn.add(path)
                    if path not in self.touched:
                        complaints.append(f"{path}: {item['error']}")
                else:
                    self.events[path].append(tuple(map(int, EVENT.fullmatch(item["event_text"]).groups())))
        self.touched -= set(changed)
        return complaints


class Account(Ledger):
    """Events are (number of the relay, number)."""

    def __init__(self, site, relays):
        super().__init__()
        self.site = site
        self.relays = {relay.number: relay for relay in relays}
        self.files = DayFiles(site)

    def handed_over(self):
        tonight = self.site.taken()
        return {(number, event) for number, relay in self.relays.items()
                for event in range(1, relay.taken + tonight.get(number, 0) + 1)}

    def close_night(self):
        """Tonight's events become earlier ones."""
        for number, count in self.site.taken().items():
            self.relays[number].taken += count
        (self.site.folder / "account").unlink(missing_ok=True)

    def check(self):
        """Of a morning; what may still wait is what recover lists as such."""
        self.complaints += self.files.look()
        given, lines = self.handed_over(), self.site.lines()
        stored = collections.Counter(event for events in self.files.events.values() for event in events)
        sound = {event for event in given if self.relays[event[0]].kind(event[1]) < UNKNOWN}
        self.check_stored(stored, sound, lines)
        waiting = sum(item["events"] for item in self.site.objects("recover", "--format", "json", self.site.folder / "site.ini")
                      if item["kind"] == "waiting")
        self.check_set_aside(self.site.set_aside_files(), lines)
        # (What a journal says to be lost is told by the run that closes its entry.)
        self.check_missing(given - set(stored) - self.may_be_gone, lines, waiting, bool(self.site.waiting_journals()))
        return len(given), sum(stored.values()), waiting
