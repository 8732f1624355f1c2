"""The place of the nights: programs, two disks, a clock of their own, and runs whose memory and descriptors are watched."""

import dataclasses
import datetime
import json
import os
import pathlib
import shutil
import subprocess
import time

from site_of_round import NOBODY, ended, limit, may_be_nobody, user_options
from small_disk import SmallDisk
from substation import Substation

CLOCKS = [pathlib.Path(folder) / "faketime/libfaketimeMT.so.1" for folder in pathlib.Path("/usr/lib").glob("*-linux-gnu")]
SIZE, INODES = 2 << 30, 400_000
DESCRIPTORS = 16  # that a run may have at a time, however many relays it visits
LOCKS = ("lock0", "lock1")


@dataclasses.dataclass
class Figures:
    """The most that a run had of each."""

    memory: int = 0  # KB
    descriptors: int = 0
    threads: int = 0

    def look(self, process):
        try:
            place = pathlib.Path(f"/proc/{process}")
            for line in (place / "status").read_text("utf-8").splitlines():
                name, _, value = line.partition(":")
                if name == "VmHWM":
                    self.memory = max(self.memory, int(value.split()[0]))
                elif name == "Threads":
                    self.threads = max(self.threads, int(value))
            self.descriptors = max(self.descriptors, len(list((place / "fd").iterdir())))
        except OSError:
            pass  # it has ended


class NightSite(Substation):
    def __init__(self, folder, programs):
        super().__init__(folder, programs)
        shutil.copy(os.path.join(programs, "HalvexCryptoKit.so"), self.bin)
        self.event_disk = SmallDisk(self.folder / "event-disk", SIZE, INODES)
        self.state_disk = SmallDisk(self.folder / "state-disk", SIZE, INODES)
        self.events = self.event_disk.folder / "ev"
        self.state = self.state_disk.folder / "state"
        self.away = self.folder / "away"
        self.clock = self.folder / "clock"
        self.password = self.scrambled("AAAA")
        self.is_nobody = may_be_nobody()
        for place in (self.away, *(self.folder / name for name in LOCKS)):
            place.mkdir()
        if self.is_nobody:
            for place in (self.folder, self.folder / "log", self.event_disk.folder, self.state_disk.folder,
                          *(self.folder / name for name in LOCKS)):
                os.chown(place, NOBODY.pw_uid, NOBODY.pw_gid)
        self.environment |= {"LD_PRELOAD": str(next(path for path in CLOCKS if path.exists())), "NO_FAKE_STAT": "1",
                             "FAKETIME_TIMESTAMP_FILE": str(self.clock), "FAKETIME_NO_CACHE": "1",
                             "FAKETIME_DONT_FAKE_MONOTONIC": "1",
                             "RUVO_STATE_DIR": str(self.state), "RUVO_LOCK_DIR": str(self.folder / LOCKS[0])}

    def scrambled(self, password):
        return subprocess.run([self.bin / "ruvoctl", "password", "encrypt"], input=password + "\n", stdout=subprocess.PIPE,
                              text=True, env=self.environment, check=True).stdout.strip()

    def set_clock(self, moment: datetime.datetime):
        """The clock of programs that start from now on, and of those that run."""
        fresh = self.clock.with_suffix(".new")
        fresh.write_text(f"@{moment:%Y-%m-%d %H:%M:%S}\n", "ascii")
        os.chmod(fresh, 0o644)
        fresh.rename(self.clock)

    def write_site(self, relays, password):
        self.write_ini("UseEthernet=1", "[RUVO_ETHERNET]", *(f"{relay.key}={relay.ip},2" for relay in relays),
                       "[RUVO_PASSWORDS]", *(f"{relay.key}={password}" for relay in relays))

    def start_program(self, program, words, at=0, **more):
        environment = {**self.environment, "RUVO_LOCK_DIR": str(self.folder / LOCKS[at]), **more}
        with open(self.folder / "stderr", "ab") as said:
            return subprocess.Popen([self.bin / program, *words], env=environment, stdout=subprocess.DEVNULL, stderr=said,
                                    **user_options(self.is_nobody))

    def start(self, at=0, **more):
        return self.start_program("ruvo", [self.folder / "site.ini"], at, **more)

    def recover(self, *files):
        return ended(self.start_program("ruvoctl", ["recover", self.folder / "site.ini", *files]))

    def run_watched(self):
        """A whole run: its status, and the most it had."""
        program, figures = self.start(), Figures()
        limit(program, self.is_nobody, "nofile", DESCRIPTORS)
        while program.poll() is None:
            figures.look(program.pid)
            time.sleep(0.005)
        return program.returncode, figures

    def objects(self, *words):
        return [json.loads(line) for line in self.ruvoctl(*words).splitlines() if line.startswith("{")]

    def lines(self, since=0):
        """What the log says, and what standard error says for it."""
        said = (self.folder / "stderr").read_text("utf-8", "replace") if (self.folder / "stderr").exists() else ""
        return [*self.log()[since:], *(line for line in said.splitlines() if "Line lost: " in line)]

    def taken(self):
        """How many events each relay has handed over tonight, by its number."""
        counts = {}
        for line in self.account_lines():
            relay, number, _ = line.split(";")
            if int(number) != counts.get(int(relay), 0) + 1:
                raise ValueError(f"the account says {line} after {counts.get(int(relay), 0)}")
            counts[int(relay)] = int(number)
        return counts

    def account_size(self):
        path = self.folder / "account"
        return path.stat().st_size if path.exists() else 0

    def account_lines(self, since=0):
        path = self.folder / "account"
        return path.read_bytes()[since:].decode().splitlines() if path.exists() else []

    def last_visit(self):
        """The record of the last run that has ended."""
        lines = [path.read_text("utf-8").splitlines() for path in self.state.glob("*/visits.ndjson")]
        return json.loads(lines[0][-1]) if lines and lines[0] else {"relays": [], "ended": ""}

    def waiting_journals(self):
        return list(self.state.glob("*/*.journal"))

    def set_aside_files(self):
        return sorted(self.state.glob("*/*.setaside"))
