"""The control groups that an engine makes for itself and leaves."""

import contextlib
import pathlib

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
