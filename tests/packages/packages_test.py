"""The Debian package on this machine, which is left as it was: packages_test.py DEB

Looks into it, takes every step of docs/install.md, upgrades, removes and purges it. Needs root.
"""

import fcntl
import os
import pathlib
import shutil
import sys
import tempfile

import contents
import fleet
import installed
from checks import count_checks, run

MARK = pathlib.Path("/var/lib/ruvo-package-test")


class Machine:
    """The package, a folder for the test's work, and stand-ins for commands of this machine."""

    def __init__(self, deb, work):
        self.deb = deb
        self.work = work
        self.made_stamps = False
        (work / "bin").mkdir()
        self.path = f"{work}/bin:{os.environ['PATH']}"

    def stand_in(self, command, text):
        file = self.work / "bin" / command
        file.write_text(text, "utf-8")
        file.chmod(0o755)

    def clean_up(self):
        run("dpkg", "--purge", "ruvo")
        for file in (installed.ENABLED, installed.STAMP):
            file.unlink(missing_ok=True)
        if self.made_stamps:
            run("rmdir", installed.STAMP.parent)
        for folder in ("/etc/ruvo", "/var/lib/ruvo", "/var/lib/ruvo-state", "/var/log/ruvo", "/run/ruvo"):
            shutil.rmtree(folder, ignore_errors=True)
        run("userdel", "ruvo")
        run("groupdel", "ruvo")
        run("groupdel", "ruvo-events")


def refuse_what_is_used():
    """Removes what a killed test left, but nothing that is in use."""
    user = run("getent", "passwd", "ruvo").returncode == 0
    package = run("dpkg-query", "-W", "ruvo").returncode == 0
    folders = [path for path in ("/etc/ruvo", "/var/lib/ruvo", "/var/lib/ruvo-state") if os.path.exists(path)]
    if not MARK.exists() and (user or package or folders):
        raise RuntimeError("ruvo is on this machine, and its sites and events are not for a test: not run")


def test():
    with open("/etc/debian_version", "rb") as lock, tempfile.TemporaryDirectory() as work:
        fcntl.flock(lock, fcntl.LOCK_EX)  # one test at a time on a machine, which has one dpkg
        refuse_what_is_used()
        MARK.touch()
        machine = Machine(pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(work))
        machine.clean_up()
        try:
            for part in (contents, installed, fleet):
                part.test(machine)
        finally:
            machine.clean_up()
            MARK.unlink()


if __name__ == "__main__":
    sys.exit(count_checks(test))
