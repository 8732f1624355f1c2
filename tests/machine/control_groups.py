"""The control groups that an engine makes for itself and leaves, and one that measures."""

import contextlib
import pathlib
import time

GROUPS = pathlib.Path("/sys/fs/cgroup")


@contextlib.contextmanager
def removed_afterwards(*names):
    """Removes groups of these names at the end, unless they were there before."""
    before = {place for name in names for place in GROUPS.glob(f"*/{name}")}
    try:
        yield
    finally:
        for place in {place for name in names for place in GROUPS.glob(f"*/{name}")} - before:
            for folder in sorted(place.rglob("*"), reverse=True):
                if folder.is_dir():
                    folder.rmdir()
            place.rmdir()


class MeasuredGroup:
    """A new group, to which a process adds itself by writing "0" into `joined`: counts the processor time of all that were ever in it."""

    def __init__(self, name):
        unified = GROUPS / "unified"
        self.place = (unified if unified.is_dir() else GROUPS) / name
        self.joined = self.place / "cgroup.procs"

    def __enter__(self):
        self.place.mkdir()
        return self

    def __exit__(self, *_):
        """Its processes have ended, but the kernel may still be at it."""
        for _ in range(100):
            try:
                self.place.rmdir()
                return
            except OSError:
                time.sleep(0.1)
        self.place.rmdir()

    def seconds(self):
        """Processor time in user and in system mode."""
        told = dict(line.split() for line in (self.place / "cpu.stat").read_text("utf-8").splitlines())
        return int(told["user_usec"]) / 1e6, int(told["system_usec"]) / 1e6
