"""Kills the extractor at random moments of runs that append: crash_test.py [KILLS [SEED]]

After each kill all day files are read with ruvoctl: every earlier byte and record must be as it was. In every third case
what the killed run had added to its files is first cut at a random place, as a power failure may do that comes before the
bytes are on the disk. Then a run must complete, bring in what the journal has, store all its events, and say in the error
log of which torn files it left the events in the relay, and where they are damaged, unless the journal has mended them. The
moments come from SEED, as far as the machine runs alike.
"""

import datetime
import json
import os
import random
import subprocess
import sys
import tempfile
import time

from checks import check, count_checks, counts
from substation import Substation

ROUND = 5  # kills until the files start anew, so that reading them stays quick
REFUSED = "Failed to save event file Day file ", " does not end with a whole record: damage at byte ", "; no event was taken from the relay."
EVENTS = (1, 12, 187)  # of relays 1 to 3: without a state file every run gets all of them anew

RELAY = """[[relay]]
serial = {number}
identity = {{ model = "CR{number}", serial = "0000{number}", plant = "Yard", description = "Feeder {number}" }}
cells."05.02" = {{ number = 230.5, unit = "V" }}
cells."09.01" = {{ flags = 5, size = 1, strings = ["Start", "Trip", "Close"] }}
generate = {{ count = {count}, kinds = [0, 1, 4], seed = {number} }}
"""


class Killer:
    def __init__(self, folder, seed):
        self.random = random.Random(seed)
        self.site = Substation(folder)
        self.site.describe('[link]\nserial = ["COM1"]',
                           *(RELAY.format(number=at + 1, count=count) for at, count in enumerate(EVENTS)))
        self.site.write_ini("[RUVO_SERIAL]", "RV001=1", "RV002=2", "RV003=3")
        self.untouched = self.grown = self.cut = self.torn = self.torn_by_kill = self.recoveries = 0
        self.complaints = []
        self.run_time = 0.0
        self.start_anew()
        self.complete_run()

    def start_anew(self):
        self.site.start_anew()
        self.earlier = {}  # bytes of the day files
        self.records = set()  # JSON lines
        self.wanted = 0  # records that must be there
        self.expected = set()  # lines that the log must have, and no other
        self.sizes = {}
        self.torn_before = {}

    def take_sizes(self):
        return {file: file.stat().st_size for file in self.site.day_files()}

    def complete_run(self):
        begun = time.monotonic()
        if self.site.start().wait() != 0:
            self.complaints.append("a following run does not complete")
        self.run_time = time.monotonic() - begun
        wanted = sum(count for relay, count in enumerate(EVENTS, 1)
                     if not any(f"/CR{relay}-" in line for line in self.site.log() if REFUSED[1] in line))
        self.wanted += wanted
        sizes = self.take_sizes()
        if wanted > 0 and sizes == self.sizes:
            self.complaints.append("a following run stores nothing")
        self.sizes = sizes

    def kill_run(self):
        """False when the run was over before the kill."""
        moment = self.random.random() * self.run_time
        program = self.site.start()
        try:
            program.wait(moment)
        except subprocess.TimeoutExpired:
            program.kill()
        return program.wait() != 0

    def look_at_files(self):
        """And perhaps cuts what the killed run has added; true when it has."""
        now = self.take_sizes()
        if now == self.sizes:
            self.untouched += 1
            return False
        self.grown += 1
        if self.random.randrange(3) > 0:
            return False
        self.cut += 1
        for file, size in now.items():
            before = self.sizes.get(file, 0)
            if size > before:
                os.truncate(file, before + self.random.randrange(size - before))
        return True

    def look_at_records(self, is_cut=False):
        """Notes what the next run has to say."""
        files = {file: file.read_bytes() for file in self.site.day_files()}
        self.complaints += [f"earlier bytes of {file} are not what they were" for file, bytes_ in self.earlier.items()
                            if not files.get(file, b"").startswith(bytes_)]
        torn, records = {}, set()
        is_there = self.site.events.exists()  # a kill may come before the run has made it
        for line in self.site.ruvoctl("events", "--format", "json", self.site.events).splitlines() if is_there else ():
            item = json.loads(line)
            torn.pop(item["file"], None)  # what is followed by a record is no torn end
            if "error" not in item:
                records.add(line)
            elif item["length"] > 0:
                torn[item["file"]] = item["offset"]
        self.complaints += [f"a record is gone: {line}" for line in self.records - records]
        if len(records) < self.wanted:
            self.complaints.append(f"{len(records)} records are read; {self.wanted} were stored")
        self.wanted, self.records, self.earlier = len(records), records, files
        begin, middle, end = REFUSED
        self.expected |= {f"{begin}{file}{middle}{at}{end}" for file, at in torn.items()}
        new = torn.items() - self.torn_before.items()  # a refused file stays torn
        self.torn_before = torn
        self.torn += len(new)
        self.torn_by_kill += 0 if is_cut else len(new)

    def look_at_log(self):
        said = {line.split(" Connection details - ")[0] for line in self.site.log()}
        brought = {line for line in said if " of a visit that was ended " in line}
        self.recoveries += len(brought)
        mended = {line.split(" in day file ")[1].split(" now. Visit of ")[0] for line in brought}
        said -= brought
        self.expected -= {line for line in self.expected - said
                          if line.removeprefix(REFUSED[0]).split(REFUSED[1])[0] in mended}
        self.complaints += [f"the error log says: {line}" for line in said - self.expected]
        self.complaints += [f"the error log does not say: {line}" for line in self.expected - said]
        self.site.clear_log()
        self.expected = set()

    def try_kill(self, number):
        """Counts one kill; none when the run was over before it."""
        self.complaints = []
        if number % ROUND == 0:
            self.look_at_records()
            self.start_anew()
            if self.random.randrange(2) > 0:  # the other rounds begin with a kill among files that are still to be made
                self.complete_run()
        day = datetime.datetime.now(datetime.timezone.utc).date()
        if not self.kill_run():
            self.start_anew()
            self.complete_run()
            return
        self.look_at_records(self.look_at_files())
        self.complete_run()
        if day != datetime.datetime.now(datetime.timezone.utc).date():
            self.expected = set()  # after midnight the next run starts new files and says nothing of the old ones
        self.look_at_log()
        check(f"kill {number + 1}", not self.complaints, "\n".join(self.complaints))


def test():
    kills, seed = (int(word) for word in (sys.argv[1:] + ["60", "1"][len(sys.argv) - 1:]))
    begun = time.monotonic()
    with tempfile.TemporaryDirectory() as folder:
        killer = Killer(folder, seed)
        told = 0
        while (done := counts["passed"] + counts["failed"]) < kills:
            killer.try_kill(done)
            if done // 200 > told:
                told = done // 200
                print(f"{done} kills in {time.monotonic() - begun:.0f} s", flush=True)
        killer.look_at_records()
    print(f"Killed before a day file grew: {killer.untouched}; after: {killer.grown}, of which cut as by a power failure: "
          f"{killer.cut}.")
    print(f"Visits brought in from a journal: {killer.recoveries}.")
    print(f"Torn files repaired, or reported and read: {killer.torn}, of which {killer.torn_by_kill} by the kill alone. "
          f"{time.monotonic() - begun:.0f} s.")


if __name__ == "__main__":
    sys.exit(count_checks(test))
