"""A small disk in memory that a test can fill, in a mount namespace of the test's own: nothing of it outlasts the test."""

import os
import subprocess
import sys

MARK = "RUVO_CRASH_NAMESPACE"
SIZE = 1024 * 1024
INODES = 96


def enter_namespace():
    """Starts the test anew in a namespace where it may mount; without one it goes on as it is."""
    if MARK in os.environ:
        return
    for options in (["-m"], ["-rm"]):
        command = ["unshare", *options, "--propagation", "private"]
        try:
            if subprocess.run([*command, "true"], check=False, stderr=subprocess.DEVNULL).returncode == 0:
                os.execvpe("unshare", [*command, sys.executable, *sys.argv], {**os.environ, MARK: "1"})
        except FileNotFoundError:
            break


class SmallDisk:
    """Mounted at a folder, or not there: then `is_there` is false."""

    def __init__(self, folder, size=SIZE, inodes=INODES):
        self.folder = folder
        self.whole = (size, inodes)
        folder.mkdir()
        self.is_there = MARK in os.environ and self.mount(self.whole)

    def mount(self, room, *options):
        size = ",".join([f"size={room[0]},nr_inodes={room[1]}", *options])
        return subprocess.run(["mount", "-t", "tmpfs", "-o", size, "tmpfs", self.folder], check=False,
                              stderr=subprocess.DEVNULL).returncode == 0

    def shrink(self, free=None, names=None):
        """Leaves so many bytes, and so many files and folders, without writing anything."""
        for _ in range(10):
            room = os.statvfs(self.folder)
            size, inodes = self.whole
            if free is not None:
                size = (room.f_blocks - room.f_bfree) * room.f_frsize + max(free, room.f_frsize)
            if names is not None:
                inodes = room.f_files - room.f_ffree + max(names, 1)
            if self.mount((size, inodes), "remount"):
                return  # else the program has been faster

    def grow_again(self):
        self.mount(self.whole, "remount")

    def fill(self, free):
        """Leaves that many bytes."""
        room = os.statvfs(self.folder)
        taken = room.f_bavail * room.f_frsize - free
        if taken > 0:
            with open(self.folder / "filler", "ab") as file:
                try:
                    os.posix_fallocate(file.fileno(), 0, os.fstat(file.fileno()).st_size + taken)
                except OSError:
                    pass  # the program has been faster

    def fill_names(self, free):
        """Leaves that many files and folders."""
        for number in range(os.statvfs(self.folder).f_favail - free):
            try:
                (self.folder / f"name{number}").touch()
            except OSError:
                return

    def empty(self):
        """Gives the room back; what else is on the disk stays."""
        for pattern in ("filler", "name*"):
            for path in self.folder.glob(pattern):
                path.unlink()

    @staticmethod
    def remove_all(folder):
        """Those of the workers in the folder, also of one that has been killed."""
        for place in folder.glob("*/small"):
            if os.path.ismount(place):
                subprocess.run(["umount", "-l", place], check=False)
