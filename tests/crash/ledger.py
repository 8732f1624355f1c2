"""The exact account of a round: what the relays handed over, and where each event is."""

import collections
import json
import re

COUNTED = re.compile(r"(\d+) events? (?:taken from the relay, but not stored|of unknown kind passed over)\.")
AFTERWARDS = re.compile(r"(\d+) events? (?:taken from the relay, but not stored|of unknown kind passed over)\. Visit of ")
SET_ASIDE = re.compile(r" set aside in (.*?): ")
BROUGHT_IN = " of a visit that was ended "


class Ledger:
    """Events are (folder of the relay, number)."""

    def __init__(self, yard):
        self.yard = yard
        self.under_way = []        # for each kill the events of which one may be lost
        self.may_be_twice = set()  # a person has moved their file
        self.may_be_gone = set()   # a person has cut them away
        self.complaints = []

    def complain(self, what):
        self.complaints.append(what)

    def handed_over(self, site):
        counts = collections.Counter()
        if (site.folder / "account").exists():
            for line in (site.folder / "account").read_text("utf-8").splitlines():
                name, number, _ = line.split(";")
                counts[name] += 1
                if int(number) != counts[name]:
                    self.complain(f"the account says {line} after {counts[name] - 1}")
        return counts

    def read(self, site, *places):
        """The events in day files, set-aside files and folders of them, each as often as it stands there."""
        found = collections.Counter()
        there = [place for place in places if place.exists()]
        for line in site.ruvoctl("events", "--format", "json", *there).splitlines() if there else []:
            try:
                item = json.loads(line)
            except ValueError:
                continue
            if "error" not in item:
                found[f"CR{item['event_code']}-{item['event_code']}", int(item["event_text"][1:])] += 1
        return found

    def check(self, site, places, lines):
        handed = self.handed_over(site)
        stored = self.read(site, *places)
        given = {(relay.folder, number) for relay in self.yard.relays for number in range(1, handed[f"R{relay.number}"] + 1)}
        recordable = {(relay.folder, number) for relay in self.yard.relays
                      for number in range(1, len(relay.kinds) + 1) if relay.can_be_recorded(number)}
        text = "\n".join(lines)
        for event, count in stored.items():
            if event not in given & recordable:
                self.complain(f"nobody handed over {event}")
            twice = count == 2 and event in self.may_be_twice and BROUGHT_IN in text
            if count > 1 and not twice:
                self.complain(f"{event} is stored {count} times")
        self.check_missing(given - set(stored) - self.may_be_gone, lines)
        for path in site.set_aside_files():
            if str(path) not in {match for line in lines for match in SET_ASIDE.findall(line)}:
                self.complain(f"no line names {path}")
        return len(given), sum(stored.values())

    def check_missing(self, missing, lines):
        told = sum(int(number) for line in lines for number in COUNTED.findall(line))
        afterwards = sum(int(number) for line in lines for number in AFTERWARDS.findall(line))
        lost = sum(1 for events in self.under_way if missing & events)
        if len(missing) - told > lost:
            self.complain(f"missing: {sorted(missing)}; counted by the log: {told}; under way at a kill: {lost}")
        # An end between the line and the closing of the entry lets the next run say it again. What a person has cut away
        # may have been counted before.
        if told - len(missing) > afterwards + len(self.may_be_gone):
            self.complain(f"the log counts {told}, but missing are {sorted(missing)}")
