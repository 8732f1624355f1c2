"""A system that systemd runs, and what is done inside: this machine's own, or a Debian in a folder that is booted for it."""

import pathlib
import subprocess

from checks import must, run, said, wait_for

LOGIN = ("PATH=/usr/sbin:/usr/bin:/sbin:/bin", "HOME=/root", "LC_ALL=C.UTF-8")


class System:
    """The one of this machine."""

    root = pathlib.Path("/")

    def inside(self, *command):
        """The command that runs a command inside, with the environment that a login would have."""
        return ("env", "-i", *LOGIN, *map(str, command))

    def run(self, *command, **options):
        return run(*self.inside(*command), **options)

    def said(self, *command, **options):
        return said(*self.inside(*command), **options)

    def must(self, *command, **options):
        return must(*self.inside(*command), **options)

    def path(self, place):
        """A file of the system as the host sees it."""
        return self.root / str(place).lstrip("/")

    def write(self, place, text):
        path = self.path(place)
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, "utf-8")

    def journal(self, unit, *options):
        return self.said("journalctl", "--no-pager", "--output=cat", f"--unit={unit}", *options)

    def property_of(self, unit, name):
        return self.said("systemctl", "show", "--value", f"--property={name}", unit)

    def drop_in(self, unit, text):
        """Replaces the unit's drop-in; an empty text removes it."""
        place = f"/etc/systemd/system/{unit}.d/test.conf"
        self.path(place).unlink(missing_ok=True)
        if text:
            self.write(place, text)
        self.must("systemctl", "daemon-reload")


class BootedSystem(System):
    """The system is unpacked into a new folder below `work`; `close` powers it off."""

    def __init__(self, image, work):
        self.root = pathlib.Path(work) / "root"
        self.console = pathlib.Path(work) / "console"
        self.root.mkdir()
        must("tar", "-C", self.root, "-xf", image)
        self.container = None
        self.first = None

    def boot(self):
        with open(self.console, "ab") as console:
            self.container = subprocess.Popen(
                ["systemd-nspawn", "--quiet", "--register=no", "--keep-unit", "--private-network", "--console=pipe", "-D", self.root, "-b"],
                stdin=subprocess.DEVNULL, stdout=console, stderr=console, start_new_session=True)
        wait_for("the first process", self.find_first)
        wait_for("the boot", lambda: self.said("systemctl", "is-system-running") in ("running", "degraded"))

    def find_first(self):
        if self.container.poll() is not None:
            raise RuntimeError(f"the system did not boot: {self.console.read_text('utf-8', 'replace')[-2000:]}")
        children = pathlib.Path(f"/proc/{self.container.pid}/task/{self.container.pid}/children").read_text("utf-8").split()
        self.first = children[0] if children else None
        return self.first

    def close(self):
        if self.container and self.container.poll() is None:
            if self.first:
                self.run("systemctl", "poweroff", "--force")
            try:
                self.container.wait(30)
            except subprocess.TimeoutExpired:
                self.container.terminate()
                self.container.wait(30)

    def inside(self, *command):
        return ("nsenter", "-a", "-t", self.first, "-r", "-w", *super().inside(*command))
