"""The exact account of a round: what the relays handed over, and where each event is."""

import collections
import re

COUNTED = re.compile(r"(\d+) events? (?:taken from the relay, but not stored|of unknown kind passed over)\.")
AFTERWARDS = re.compile(r"(\d+) events? (?:taken from the relay, but not stored|of unknown kind passed over)\. Visit of ")
SET_ASIDE = re.compile(r" set aside in (.*?): ")
BROUGHT_IN = " of a visit that was ended "


class Ledger:
    """What is known of events, and what is wrong."""

    def __init__(self):
        self.under_way = []        # for each kill the events of which one may be lost
        self.may_be_twice = set()  # a person has moved their file
        self.may_be_gone = set()   # a person has cut them away
        self.complaints = []

    def complain(self, what):
        self.complaints.append(what)

    def check_stored(self, stored, sound, lines):
        """`sound`: what was handed over and can be recorded."""
        is_brought_in = any(BROUGHT_IN in line for line in lines)
        for event, count in stored.items():
            if event not in sound:
                self.complain(f"nobody handed over {event}")
            if count > 1 and not (count == 2 and event in self.may_be_twice and is_brought_in):
                self.complain(f"{event} is stored {count} times")

    def check_set_aside(self, files, lines):
        named = {match for line in lines for match in SET_ASIDE.findall(line)}
        for path in files:
            if str(path) not in named:
                self.complain(f"no line names {path}")

    def check_missing(self, missing, lines, waiting=0, may_be_told_later=False):
        self.told = sum(int(number) for line in lines for number in COUNTED.findall(line))
        self.lost = sum(1 for events in self.under_way if missing & events)
        afterwards = sum(int(number) for line in lines for number in AFTERWARDS.findall(line))
        if len(missing) > self.told + waiting + self.lost and not may_be_told_later:
            self.complain(f"missing: {len(missing)}, such as {sorted(missing)[-20:]}; counted by the log: {self.told}; waiting: "
                          f"{waiting}; under way at a kill: {self.lost}")
        # An end between the line and the closing of the entry lets the next run say it again. What a person has cut away
        # may have been counted before.
        if self.told - len(missing) > afterwards + len(self.may_be_gone):
            self.complain(f"the log counts {self.told}, but missing are {len(missing)}, such as {sorted(missing)[-20:]}")


class RoundLedger(Ledger):
    """Events are (folder of the relay, number)."""

    def __init__(self, yard):
        super().__init__()
        self.yard = yard

    def handed_over(self, site):
        counts = collections.Counter()
        for name, number, _ in site.account_lines():
            counts[name] += 1
            if int(number) != counts[name]:
                self.complain(f"the account says {number} of {name} after {counts[name] - 1}")
        return counts

    def read(self, site, *places):
        """The events in day files, set-aside files and folders of them, each as often as it stands there."""
        found = collections.Counter()
        there = [place for place in places if place.exists()]
        for item in site.objects("events", "--format", "json", *there) if there else []:
            if "error" not in item:
                found[f"CR{item['event_code']}-{item['event_code']}", int(item["event_text"][1:])] += 1
        return found

    def check(self, site):
        handed, lines = self.handed_over(site), site.lines()
        stored = self.read(site, site.events, site.folder / "away", *site.set_aside_files())
        given = {(relay.folder, number) for relay in self.yard.relays for number in range(1, handed[f"R{relay.number}"] + 1)}
        recordable = {(relay.folder, number) for relay in self.yard.relays
                      for number in range(1, len(relay.kinds) + 1) if relay.can_be_recorded(number)}
        self.check_stored(stored, given & recordable, lines)
        self.check_missing(given - set(stored) - self.may_be_gone, lines)
        self.check_set_aside(site.set_aside_files(), lines)
        return len(given), sum(stored.values())
