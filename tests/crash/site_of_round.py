"""The place of a round: programs, folders, runs and what they have said."""

import contextlib
import fcntl
import json
import os
import pathlib
import pwd
import resource
import select
import shutil
import signal
import struct
import subprocess

from checks import must
from small_disk import SmallDisk
from substation import Substation

PATIENCE = 60  # seconds after which a run counts as hanging
NOBODY = pwd.getpwnam("nobody")
OFD_GETLK, FLOCK = 36, "hhqqi4x"
LOCKS = ("lock0", "lock1")


class AccountedSite(Substation):
    """Its relays note in an account what they hand over; `states` are its state folders."""

    def __init__(self, folder, programs):
        super().__init__(folder, programs)
        shutil.copy(os.path.join(programs, "HalvexCryptoKit.so"), self.bin)
        self.is_nobody = False  # who visits the relays
        self.password = self.scrambled("AAAA")
        for name in LOCKS:
            (self.folder / name).mkdir()

    def scrambled(self, password):
        return must(self.bin / "ruvoctl", "password", "encrypt", input=f"{password}\n", env=self.environment).strip()

    def start_program(self, program, *words, **environment):
        with open(self.folder / "stderr", "ab") as said:
            return subprocess.Popen([self.bin / program, *words], env={**self.environment, **environment},
                                    stdout=subprocess.DEVNULL, stderr=said, **user_options(self.is_nobody))

    def objects(self, *words):
        return [json.loads(line) for line in self.ruvoctl(*words).splitlines() if line.startswith("{")]

    def lines(self):
        """What the log says, and what standard error says for it."""
        said = (self.folder / "stderr").read_text("utf-8", "replace") if (self.folder / "stderr").exists() else ""
        return [*self.log(), *(line for line in said.splitlines() if "Line lost: " in line)]

    def account_size(self):
        path = self.folder / "account"
        return path.stat().st_size if path.exists() else 0

    def account_lines(self, since=0):
        """Beyond its first bytes, the parts of each line: relay, number of its event, and the rest."""
        path = self.folder / "account"
        return [line.split(";") for line in path.read_bytes()[since:].decode().splitlines()] if path.exists() else []

    def waiting_journals(self):
        return self.left("journal")

    def set_aside_files(self):
        return self.left("setaside")

    def left(self, suffix):
        return sorted(path for state in set(self.states) for path in state.glob(f"*/*.{suffix}"))


class Site(AccountedSite):
    """Event root and state folders lie on the small disk where a round wants that."""

    def __init__(self, folder, programs):
        super().__init__(folder, programs)
        self.disk = SmallDisk(self.folder / "small")

    def begin_round(self, events_small, state_small, two_states, is_nobody):
        for place in [place for place in [self.folder / "ev", self.folder / "away", *self.folder.glob("state*"), *self.disk.folder.glob("*")] if place.exists()]:
            shutil.rmtree(place, ignore_errors=True) if place.is_dir() else place.unlink()
        for place in (self.folder / "account", self.folder / "stderr", *self.folder.glob("lock?/*")):
            place.unlink(missing_ok=True)
        (self.folder / "away").mkdir()
        self.clear_log()
        self.events = (self.disk.folder if events_small else self.folder) / "ev"
        names = ["state0", "state1"] if two_states else ["state0", "state0"]
        self.states = [(self.disk.folder if state_small else self.folder) / name for name in names]
        self.is_nobody = is_nobody
        owner = (NOBODY.pw_uid, NOBODY.pw_gid) if is_nobody else (os.getuid(), os.getgid())
        for place in (self.folder, self.disk.folder, self.folder / "log", self.folder / "lock0", self.folder / "lock1"):
            if may_be_nobody():
                os.chown(place, *owner)

    def start(self, at=0, state=None):
        """One of two runs that do not shut each other out."""
        return self.start_program("ruvo", self.folder / "site.ini", **self.places(at, state))

    def start_recover(self, *files):
        """Lists what is left, or stores set-aside files."""
        return self.start_program("ruvoctl", "recover", self.folder / "site.ini", *files, **self.places(0))

    def places(self, at, state=None):
        return {"RUVO_LOCK_DIR": str(self.folder / LOCKS[at]), "RUVO_STATE_DIR": str(state or self.states[at])}

    def stop(self, program):
        """Stops it at a moment when it does not lock the account; false when it has ended."""
        for _ in range(1000):
            if program.poll() is not None:
                return False
            program.send_signal(signal.SIGSTOP)
            os.waitid(os.P_PID, program.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)
            if not self.is_account_locked():
                return program.poll() is None
            program.send_signal(signal.SIGCONT)
            os.sched_yield()
        program.send_signal(signal.SIGSTOP)
        return True

    def is_account_locked(self):
        try:
            with open(self.folder / "account", "rb") as file:
                asked = struct.pack(FLOCK, fcntl.F_WRLCK, os.SEEK_SET, 1 << 62, 1, 0)
                return struct.unpack(FLOCK, fcntl.fcntl(file, OFD_GETLK, asked))[0] != fcntl.F_UNLCK
        except FileNotFoundError:
            return False

    def open_day_files(self, program):
        """The folders of the relays whose day files it has open."""
        links = pathlib.Path(f"/proc/{program.pid}/fd")
        return {target.parent.name for target in (pathlib.Path(os.readlink(link)) for link in links.iterdir())
                if target.suffix == ".evt"}

    def handed_over_since(self, size):
        """The events that the account names beyond its first bytes, in their order."""
        return [(f"CR{name[1:]}-{name[1:]}", int(number)) for name, number, _ in self.account_lines(size)]


def may_be_nobody():
    """As root; root of a namespace of its own may have no other user."""
    with open("/proc/self/uid_map", encoding="ascii") as file:
        ranges = [tuple(map(int, line.split())) for line in file]
    return os.getuid() == 0 and any(first <= NOBODY.pw_uid < first + count for first, _, count in ranges)


def user_options(is_nobody):
    return {"user": NOBODY.pw_uid, "group": NOBODY.pw_gid, "extra_groups": []} if is_nobody else {}


@contextlib.contextmanager
def belonging_to_root(places):
    owners = {place: os.stat(place) for place in places}
    for place in places:
        os.chown(place, 0, 0)
        os.chmod(place, 0o755 if place.is_dir() else 0o644)
    try:
        yield
    finally:
        for place, status in owners.items():
            if place.exists():  # a folder that stayed empty is removed by those who may write to the one above
                os.chown(place, status.st_uid, status.st_gid)
                os.chmod(place, status.st_mode & 0o7777)


def limit(program, is_nobody, kind, value):
    """From now on; by its own user, as root itself may not do that to another's everywhere."""
    subprocess.run(["prlimit", f"--pid={program.pid}", f"--{kind}={value}:{value}"], check=False, stderr=subprocess.DEVNULL,
                   **user_options(is_nobody))


def limit_memory(program, is_nobody, more):
    """It gets no more than it has, and so much."""
    try:
        with open(f"/proc/{program.pid}/statm", encoding="ascii") as file:
            size = int(file.read().split()[0]) * resource.getpagesize()
    except (OSError, IndexError):
        return  # it has ended
    limit(program, is_nobody, "as", size + more)


def ended(program):
    """Its status; none when it hangs, and is killed."""
    if program.poll() is not None:
        return program.returncode
    handle = os.pidfd_open(program.pid)
    has_ended = select.select([handle], [], [], PATIENCE)[0]
    os.close(handle)
    if not has_ended:
        program.kill()
    status = program.wait()
    return status if has_ended else None


def hear_signals():
    """Programs that a worker starts are to hear what ends them, however the test itself was started."""
    for number in (signal.SIGHUP, signal.SIGINT, signal.SIGTERM):
        signal.signal(number, signal.SIG_DFL)
