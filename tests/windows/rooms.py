"""The tests of the rooms as Windows programs, so that a difference of compilers, of `long` or of files shows."""

import re

from checks import counts

ROOMS = "base paths model config log dayfile ledger link extraction run".split()
# It opens a file thousands of times, which takes minutes here.
LEFT_OUT = "-*DayFileDamageBit.*"


def count_tests(name, status, text):
    """What a program of GoogleTest says, and the status that it has ended with."""
    good = len(re.findall(r"(?m)^\[       OK \]", text))
    bad = len(re.findall(r"(?m)^\[ RUN      \]", text)) - good  # what has begun and not ended well
    if bad == 0 and (status != 0 or good == 0):
        bad = 1
    counts["passed"] += good
    counts["failed"] += bad
    if bad > 0:
        print(f"{name}: ended with {status}", text, sep="\n")
    print(f"  {name}: {good} passed, {bad} failed", flush=True)
    return bad == 0


def run_rooms(windows, programs, seconds=300):
    """In the working directory, whose folder tests has their tables."""
    print("Running the tests of the rooms under Wine", flush=True)
    for room in ROOMS:
        status = windows.run(f"room_{room}", seconds, programs / f"test_{room}.exe", f"--gtest_filter={LEFT_OUT}")
        count_tests(room, status, windows.read(f"room_{room}.log"))
