"""The 32-bit Windows programs and their tests under 32-bit Wine: windows32_test.py, in a folder that has them in bin."""

import pathlib
import shutil
import subprocess
import sys
import tempfile

import companion
import documented
import windows_test
import wine
from checks import count_checks
from rooms import run_rooms

PROGRAMS = pathlib.Path("bin").resolve()
PATIENCE = 10  # times as long as on a machine that is not emulated


class Windows(wine.Windows):
    """Of 32 bits, and slow."""

    def __init__(self, work):
        work.mkdir(exist_ok=True)
        super().__init__(work, PATIENCE)
        self.environment.update(WINEARCH="win32", WINESERVER=wine.WINESERVER)
        self.environment.setdefault("HOME", "/root")  # a service has none

    def start(self, *words, **options):
        # Its server ends three seconds after a program, before the next one has begun; to start it anew takes 30 seconds.
        subprocess.call([wine.WINESERVER, "-p600"], env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        return super().start(*words, **options)


def test():
    wine.WINE, wine.WINESERVER = "/usr/lib/wine/wine", "/usr/lib/wine/wineserver32"
    windows_test.X64 = PROGRAMS
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder:
        work = pathlib.Path(folder)
        with Windows(work / "new"):
            pass
        for name in ("one", "two"):  # making one takes minutes here
            shutil.copytree(work / "new", work / name, symlinks=True)
        with Windows(work / "one") as windows:
            run_rooms(windows, PROGRAMS)
            # From one run to the next it takes longer than the simulated server stays, and Wine offers one that is about to end.
            stay = (companion.CLASS, "/v", "ReconnectSeconds", "/f")
            windows.set_up("reg", "add", *stay, "/t", "REG_DWORD", "/d", "600")
            windows_test.run_twins(windows)
            windows.set_up("reg", "delete", *stay)
            windows_test.run_connector(windows)
            windows_test.visit_a_site(windows)
        [setup] = pathlib.Path().glob("ruvo-*-setup.exe")
        # Under the name that the page has for the other one.
        shutil.copy(setup, work / setup.name.replace("-setup", "-x64-setup"))
        with Windows(work / "two") as windows:
            documented.test(windows, {"windows-x64": (None, work / setup.name.replace("-setup", "-x64-setup"))})


if __name__ == "__main__":
    sys.exit(count_checks(test))
