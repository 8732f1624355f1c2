"""A site's nights: a day passes, runs end badly, a run without trouble of its own may follow, and in the morning all is counted."""

import collections
import datetime
import random
import re

from night_account import Account
from night_ends import Ends, all_ends
from night_relays import UNKNOWN, Relay

FIRST_DAY = datetime.date(2027, 3, 1)
NAMED = re.compile(r"(?:IP(?: address)?: |\"RPCDll\.Dll\",\")(10\.\d+\.\d+\.1)\b")


class Nights(Ends):
    def __init__(self, site, seed, count, relays):
        self.random = random.Random(seed)
        self.site, self.count = site, count
        self.relays = [Relay(random.Random(f"{seed}:{number}"), number) for number in range(relays)]
        self.by_number = {relay.number: relay for relay in self.relays}
        self.by_ip = {relay.ip: relay for relay in self.relays}
        self.account = Account(site, self.relays)
        self.day = FIRST_DAY
        self.ends = collections.Counter()
        self.failures = collections.Counter()
        self.whole = []  # of each night whose last run met nothing: night, seconds, figures
        self.plan = self.make_plan(all_ends(site.is_nobody))
        site.write_site(self.relays, site.password)

    def make_plan(self, ends):
        """Each end at least once, in a random order, as evenly as can be; the first and the last night have none."""
        nights = range(1, self.count - 1)
        plan = {night: [] for night in range(self.count)}
        cycle = []
        while len(cycle) < max(len(ends), len(nights)):
            cycle += self.random.sample(ends, len(ends))
        for at, end in enumerate(cycle[:max(len(ends), len(nights))]):
            plan[nights[at % len(nights)]].append(end)
        return plan

    def show(self, *more):
        links = ", ".join(filter(None, (relay.link() for relay in self.relays)))
        self.site.describe('account = "account"', f"[link]\nethernet = [{links}]", *(relay.text() for relay in self.relays), *more)

    def play(self, night):
        self.day = FIRST_DAY + datetime.timedelta(days=night)
        for relay in self.relays:
            relay.pass_day(night)
            if relay.failure:
                self.failures[relay.failure.name] += 1
        self.show()
        for end in self.plan[night]:
            self.ends[end] += 1
            self.site.set_clock(self.at())
            getattr(self, end)()
        self.site.set_clock(self.at(hours=1))
        if not self.plan[night] or self.random.random() < 0.7:
            self.run_without_trouble()
        given, stored, waiting = self.account.check()
        if self.random.random() < 0.3:
            self.store_what_is_set_aside()
        self.account.close_night()
        return given, stored, waiting

    def store_what_is_set_aside(self):
        # (To root of a namespace alone the folders above are another user's, and recover refuses.)
        files = self.site.set_aside_files() if self.site.is_nobody else []
        if files and self.site.recover(*files) not in (0, 1):
            self.account.complain("recover ended in another way")

    def run_without_trouble(self):
        """Whatever the relays do; what it promises of their day files, the log and the visit record is checked."""
        before, lines = self.site.taken(), len(self.site.log())
        self.account.complaints += self.account.files.look()
        torn = {path.parent.name for path in self.account.files.torn if f"{self.day}" in path.name}
        status, figures = self.site.run_watched()
        if status != 0:
            self.account.complain(f"the run ended with {status}")
        self.whole.append(figures)
        after = self.site.taken()
        self.check_record({number: after[number] - before.get(number, 0) for number in after})
        self.check_log(self.site.log()[lines:], before, torn)
        self.account.complaints += self.account.files.look()
        self.check_day_files(before, after, torn)

    def check_record(self, taken):
        record = self.site.last_visit()
        if record["ended"] != "whole":
            self.account.complain(f"the visit record says that the run ended: {record['ended']}")
        said = {}
        for item in record["relays"]:
            if "address" in item:
                said[int(item["key"][2:])] = item["taken"]
                parts = item["stored"] + item["lost"] + item["set_aside"] + item["waiting"]
                if parts != item["taken"]:
                    self.account.complain(f"visit record of {item['key']}: taken {item['taken']}, but accounted for {parts}")
        if sorted(said) != sorted(self.by_number):
            self.account.complain(f"the visit record has {len(said)} relays")
        for number in self.by_number:
            if said.get(number, 0) != taken.get(number, 0):
                self.account.complain(f"visit record of relay {number}: taken {said.get(number)}, handed over {taken.get(number, 0)}")

    def check_log(self, lines, before, torn):
        """It names each relay in trouble, and no other."""
        named = {ip for line in lines for ip in NAMED.findall(line)}
        for relay in self.relays:
            left = relay.kinds[relay.taken + before.get(relay.number, 0):]
            failure = relay.failure
            is_sure = failure and failure.is_noticed and (not failure.needs_events or relay.call <= len(left) + relay.has_login)
            is_odd = failure or relay.folder in torn or any(kind >= UNKNOWN for kind in left)
            if is_sure and relay.ip not in named:
                self.account.complain(f"no line tells of {relay.ip} ({failure.name})")
            elif relay.ip in named and not is_odd:
                self.account.complain(f"a line tells of {relay.ip}, which has no failure: "
                                      f"{[line for line in lines if relay.ip in line]}")

    def check_day_files(self, before, after, torn):
        """A relay without failure has handed over all, and they stand in the file of this day, in their order."""
        for relay in self.relays:
            if not relay.is_sound() or relay.folder in torn:
                continue
            first, last = before.get(relay.number, 0), after.get(relay.number, 0)
            if last != relay.pending:
                self.account.complain(f"relay {relay.number} has handed over {last} of {relay.pending}")
            wanted = [(relay.number, relay.taken + at) for at in range(first + 1, last + 1)]
            path = self.site.events / relay.folder / f"{relay.folder}-{self.day}-DEV.evt"
            got = self.account.files.events.get(path, [])
            if wanted and got[-len(wanted):] != wanted:
                self.account.complain(f"{path} ends with {got[-5:]} and not with {wanted[-5:]}")

    def end(self):
        """All relays are well again: whatever is left comes in, then set-aside files are stored."""
        self.day = FIRST_DAY + datetime.timedelta(days=self.count)
        for relay in self.relays:
            relay.failure = None
        for _ in range(60):  # each malformed event ends a visit
            self.site.set_clock(self.at())
            self.show()
            self.end_by_itself(self.site.start(), "the last night")
            self.store_what_is_set_aside()
            self.account.close_night()
            if not any(relay.pending for relay in self.relays) and not self.site.waiting_journals():
                break
            self.day += datetime.timedelta(days=1)
        left = [relay.number for relay in self.relays if relay.pending]
        if left or self.site.waiting_journals():
            self.account.complain(f"still with the relays {left}, and waiting {self.site.waiting_journals()}")
        return self.account.check()
