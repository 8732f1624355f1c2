"""A simulated substation in a folder of its own, and runs of the built programs over it."""

import os
import pathlib
import shutil
import subprocess
import time

from checks import run

PROGRAMS = ("ruvo", "ruvoctl", "p32ls.so", "oncrpc.so")
STAMP = len("2026/11/24 22:17:03 ")


class Substation:
    """The programs are a copy, so that a long test does not mind a new build."""

    def __init__(self, folder, programs="build/release/bin"):
        self.folder = pathlib.Path(folder)
        self.bin = self.folder / "bin"
        self.events = self.folder / "ev"
        self.bin.mkdir()
        for program in PROGRAMS:
            shutil.copy(pathlib.Path(programs) / program, self.bin)
        none = str(self.folder / "no-registry")
        self.environment = {**os.environ, "LC_ALL": "C", "TZ": "UTC", "P32LS_SUBSTATION": str(self.folder / "substation.toml"),
                            "RUVO_LOCK_DIR": str(folder), "RUVO_STATE_DIR": str(self.folder / "state"),
                            "RUVO_REGISTRY_USER": none, "RUVO_REGISTRY_MACHINE": none}
        self.start_anew()

    def start_anew(self):
        shutil.rmtree(self.events, ignore_errors=True)
        shutil.rmtree(self.folder / "state", ignore_errors=True)
        (self.folder / "trace").unlink(missing_ok=True)
        self.clear_log()

    def describe(self, *parts):
        """The substation's TOML text, part behind part."""
        (self.folder / "substation.toml").write_text("\n".join(parts) + "\n", "utf-8")

    def write_ini(self, *lines):
        """What follows the paths, a line each."""
        start = ["[RUVO_GENERAL]", f"EventRootDir={self.events}", f"ErrorLogPathname={self.folder}/log"]
        (self.folder / "site.ini").write_text("\n".join([*start, *lines]) + "\n", "utf-8")

    def start(self):
        return subprocess.Popen([self.bin / "ruvo", self.folder / "site.ini"], env=self.environment)

    def run(self):
        """A whole run: its exit status, its seconds, and the most memory it had, in KB."""
        begun = time.monotonic()
        program = self.start()
        peak = 0
        while program.poll() is None:
            try:
                for line in pathlib.Path(f"/proc/{program.pid}/status").read_text("utf-8").splitlines():
                    if line.startswith("VmHWM"):
                        peak = int(line.split()[1])
            except OSError:
                pass  # it has ended
            time.sleep(0.02)
        return program.returncode, time.monotonic() - begun, peak

    def ruvoctl(self, *words):
        return run(self.bin / "ruvoctl", *words, env=self.environment).stdout

    def day_files(self, relay="*"):
        return sorted(self.events.glob(f"{relay}/*.evt"))

    def log(self):
        """The error log's lines without their time stamps."""
        return [line[STAMP:] for line in (self.folder / "log").read_text("utf-8").splitlines()]

    def clear_log(self):
        (self.folder / "log").write_text("", "utf-8")
