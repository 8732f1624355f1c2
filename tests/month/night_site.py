"""The place of the nights: programs, two disks, a clock of their own, and runs whose memory and descriptors are watched."""

import dataclasses
import datetime
import json
import os
import pathlib
import re
import time

from site_of_round import LOCKS, NOBODY, AccountedSite, ended, limit, may_be_nobody
from small_disk import SmallDisk

CLOCKS = [pathlib.Path(folder) / "faketime/libfaketimeMT.so.1" for folder in pathlib.Path("/usr/lib").glob("*-linux-gnu")]
SIZE, INODES = 2 << 30, 400_000
DESCRIPTORS = 16  # that a run may have at a time, however many relays it visits


@dataclasses.dataclass
class Figures:
    """The most that a run had of each."""

    memory: int = 0  # KB
    descriptors: int = 0
    threads: int = 0

    def look(self, process):
        try:
            place = pathlib.Path(f"/proc/{process}")
            found = dict(re.findall(r"(?m)^(VmHWM|Threads):\s+(\d+)", (place / "status").read_text("utf-8")))
            self.memory = max(self.memory, int(found.get("VmHWM", 0)))
            self.threads = max(self.threads, int(found.get("Threads", 0)))
            self.descriptors = max(self.descriptors, len(list((place / "fd").iterdir())))
        except OSError:
            pass  # it has ended


class NightSite(AccountedSite):
    def __init__(self, folder, programs):
        super().__init__(folder, programs)
        self.event_disk = SmallDisk(self.folder / "event-disk", SIZE, INODES)
        self.state_disk = SmallDisk(self.folder / "state-disk", SIZE, INODES)
        self.events = self.event_disk.folder / "ev"
        self.state = self.state_disk.folder / "state"
        self.states = [self.state]
        self.away = self.folder / "away"
        self.clock = self.folder / "clock"
        self.is_nobody = may_be_nobody()
        self.away.mkdir()
        if self.is_nobody:
            for place in (self.folder, self.folder / "log", self.event_disk.folder, self.state_disk.folder,
                          *(self.folder / name for name in LOCKS)):
                os.chown(place, NOBODY.pw_uid, NOBODY.pw_gid)
        self.environment |= {"LD_PRELOAD": str(next(path for path in CLOCKS if path.exists())), "NO_FAKE_STAT": "1",
                             "FAKETIME_TIMESTAMP_FILE": str(self.clock), "FAKETIME_NO_CACHE": "1",
                             "FAKETIME_DONT_FAKE_MONOTONIC": "1",
                             "RUVO_STATE_DIR": str(self.state), "RUVO_LOCK_DIR": str(self.folder / LOCKS[0])}

    def set_clock(self, moment: datetime.datetime):
        """The clock of programs that start from now on, and of those that run."""
        fresh = self.clock.with_suffix(".new")
        fresh.write_text(f"@{moment:%Y-%m-%d %H:%M:%S}\n", "ascii")
        os.chmod(fresh, 0o644)
        fresh.rename(self.clock)

    def write_site(self, relays, password):
        self.write_ini("UseEthernet=1", "[RUVO_ETHERNET]", *(f"{relay.key}={relay.ip},2" for relay in relays),
                       "[RUVO_PASSWORDS]", *(f"{relay.key}={password}" for relay in relays))

    def start(self, at=0, **more):
        return self.start_program("ruvo", self.folder / "site.ini", RUVO_LOCK_DIR=str(self.folder / LOCKS[at]), **more)

    def recover(self, *files):
        return ended(self.start_program("ruvoctl", "recover", self.folder / "site.ini", *files))

    def run_watched(self):
        """A whole run: its status, and the most it had."""
        program, figures = self.start(), Figures()
        limit(program, self.is_nobody, "nofile", DESCRIPTORS)
        while program.poll() is None:
            figures.look(program.pid)
            time.sleep(0.005)
        return program.returncode, figures

    def taken(self):
        """How many events each relay has handed over tonight, by its number."""
        counts = {}
        for relay, number, _ in self.account_lines():
            if int(number) != counts.get(int(relay), 0) + 1:
                raise ValueError(f"the account says {number} of {relay} after {counts.get(int(relay), 0)}")
            counts[int(relay)] = int(number)
        return counts

    def last_visit(self):
        """The record of the last run that has ended."""
        lines = [path.read_text("utf-8").splitlines() for path in self.state.glob("*/visits.ndjson")]
        return json.loads(lines[0][-1]) if lines and lines[0] else {"relays": [], "ended": ""}
