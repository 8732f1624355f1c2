"""Two sites in a folder of their own, at any moment of their story."""

import calendar
import os
import pathlib
import shutil
import subprocess
import time

from checks import run

HERE = pathlib.Path(__file__).parent
PROGRAMS = ("ruvo", "ruvoctl", "p32ls.so", "oncrpc.so", "HalvexCryptoKit.so", "conversation_clock.so")
SITES = ("north", "south")
ZONE = "CET-1CEST,M3.5.0,M10.5.0/3"
WINTER = "2026-10-25 03:00:00"  # from then on; the hour before it comes twice, and means the first
PLACE = "/home/protection/hv"  # what the texts have for the folder
PATIENCE = 60  # seconds


def seconds(local):
    """Of a local time, since 1970."""
    hours = 2 if local < WINTER else 1
    return calendar.timegm(time.strptime(local[:19], "%Y-%m-%d %H:%M:%S")) - hours * 3600


class TwoSites:
    def __init__(self, folder, programs):
        self.folder = pathlib.Path(folder)
        self.bin = self.folder / "bin"
        for name in ("bin", "sites", "log"):
            (self.folder / name).mkdir()
        for program in PROGRAMS:
            shutil.copy(pathlib.Path(programs) / program, self.bin)
        for site in SITES:
            text = (HERE / f"{site}.ini").read_text("utf-8").replace("@", str(folder))
            (self.folder / "sites" / f"{site}.ini").write_text(text, "utf-8")
        shutil.copy(HERE / "clocks.txt", self.folder)
        self.events = {site: [] for site in SITES}  # pairs of a relay's name and the TOML of an event
        self.faults = {site: {} for site in SITES}

    def environment(self, moment, site=SITES[0]):
        none = str(self.folder / "none")
        return {"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", "TZ": ZONE, "HOME": none,
                "LD_PRELOAD": str(self.bin / "conversation_clock.so"), "RUVO_CLOCK_BEGIN": str(seconds(moment)),
                "P32LS_SUBSTATION": str(self.folder / f"{site}.toml"),
                "RUVO_LOCK_DIR": str(self.folder), "RUVO_STATE_DIR": str(self.folder / "state"),
                "RUVO_REGISTRY_USER": none, "RUVO_REGISTRY_MACHINE": none}

    def describe(self, site):
        """The substation as it is now."""
        faults = self.faults[site].values()
        dead = ", ".join(f'{{ ip = "{what[5:]}", status = 11 }}' for what in faults if what.startswith("link "))
        failing = ", ".join(f"{{ {what[6:]} }}" for what in faults if what.startswith("fault "))
        lines = [f'link = {{ serial = ["COM1"], ethernet = [{dead}] }}', f"fault = [{failing}]"]
        for line in (HERE / f"{site}.toml").read_text("utf-8").splitlines():
            lines.append(line)
            if line.startswith("name = "):
                events = [toml for relay, toml in self.events[site] if line == f'name = "{relay}"']
                lines += ["event = [", *(f"    {{ {toml} }}," for toml in events), "]"]
        (self.folder / f"{site}.toml").write_text("\n".join(lines) + "\n", "utf-8")

    def start(self, moment, site):
        self.describe(site)
        trace = self.folder / f"{site}.trace"
        trace.unlink(missing_ok=True)
        environment = {**self.environment(moment, site), "RUVO_CLOCK_TRACE": str(trace)}
        return subprocess.Popen([self.bin / "ruvo", self.folder / "sites" / f"{site}.ini"], env=environment,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)

    def visit(self, moment, site):
        """What the run says, which should be nothing."""
        return self.start(moment, site).communicate(timeout=PATIENCE)[0]

    def kill(self, moment, site, text):
        """A visit that is killed when the journal contains the text."""
        program = self.start(moment, site)
        end = time.monotonic() + PATIENCE
        while not any(text.encode() in path.read_bytes() for path in self.folder.glob("state/*/*.journal")):
            if time.monotonic() > end or program.poll() is not None:
                program.kill()
                raise RuntimeError(f"the visit of {moment} did not come to {text}")
            time.sleep(0.01)
        program.kill()
        program.communicate()

    def ruvoctl(self, moment, words):
        done = run(self.bin / "ruvoctl", *words, cwd=self.folder, env=self.environment(moment))
        return self.without_place(done.stdout) + (f"(exit status {done.returncode})\n" if done.returncode != 0 else "")

    def without_place(self, text):
        """Nothing of it depends on where the folder is, which has a name as long as PLACE."""
        for state in self.folder.glob("state/*-*"):
            digest = state.name.rsplit("-", 1)[1]
            text = text.replace(digest, "0123456789ABCDEF")
        return text.replace(str(self.folder), PLACE)
