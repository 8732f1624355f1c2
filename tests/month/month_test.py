"""Many nights of many relays, with failures of every kind: month_test.py [NIGHTS [RELAYS [SEED]]]

Each night some relays fail, each in its way, and runs of the site end badly or meet a full disk, a clock that jumps and so on.
Each morning every event that a relay has handed over has to be in a day file once, in a set-aside file that the log names,
waiting in a journal, counted by a log line, or the one under way at a kill. Prints what was measured, too.
"""

import argparse
import os
import sys
import tempfile
import time

from checks import check, count_checks, equal, must
from night_site import NightSite
from nights import Nights
from site_of_round import hear_signals
from small_disk import MARK, enter_namespace

THREADS = 6


def check_flat(what, values, slack):
    """Later nights need no more than earlier ones."""
    third = max(len(values) // 3, 1)
    check(f"{what} stays flat over the nights", max(values[-third:]) <= max(values[:third]) + slack, values)


def play(site, arguments):
    nights = Nights(site, arguments.seed, arguments.nights, arguments.relays)
    begun = time.monotonic()
    for night in range(arguments.nights):
        given, stored, waiting = nights.play(night)
        what = f"night {night} ({', '.join(nights.plan[night]) or 'no bad end'})"
        if arguments.verbose:
            print(f"{time.monotonic() - begun:5.0f} s {what}: {given} handed over, {stored} in files, {waiting} waiting", flush=True)
        check(what, not nights.account.complaints, "\n  " + "\n  ".join(nights.account.complaints[:20]))
        nights.account.complaints.clear()
    given, stored, waiting = nights.end()
    check("the end", not nights.account.complaints, "\n  " + "\n  ".join(nights.account.complaints[:20]))
    equal("nothing waits", waiting, 0)
    allowed = {".done"} if site.is_nobody else {".done", ".setaside"}
    left = {path.name for path in site.state.glob("*/*") if path.suffix not in allowed}
    equal("the state folder holds the visit records and what has been stored", left, {"visits.ndjson", "event-root.txt"})
    # (A short run may end before anybody has looked.)
    check_flat("memory", [figures.memory for figures in nights.whole if figures.memory > 0], 1024)
    check(f"no run has had more than {THREADS} threads", max(figures.threads for figures in nights.whole) <= THREADS)
    tell(nights, arguments, (given, stored), time.monotonic() - begun)


def tell(nights, arguments, totals, seconds):
    account = nights.account
    print(f"{arguments.nights} nights of {arguments.relays} relays in {seconds:.0f} s: {totals[0]} events handed over, {totals[1]} in "
          f"{len(account.files.known)} files, {account.told} counted by the log, {account.lost} under way at one of "
          f"{len(account.under_way)} kills, {len(account.may_be_gone)} cut away or moved by hand.")
    for what, name in (("KB of memory", "memory"), ("descriptors", "descriptors"), ("threads", "threads")):
        values = [getattr(figures, name) for figures in nights.whole]
        print(f"At most {what}: {' '.join(map(str, values))}")
    print("Runs: " + ", ".join(f"{name.replace('_', ' ')} {count}" for name, count in nights.ends.most_common()) + ".")
    print("Relays: " + ", ".join(f"{name} {count}" for name, count in nights.failures.most_common()) + ".")


def test(arguments):
    # A disk in memory, which ends with the namespace, and so do the disks on it.
    must("mount", "-t", "tmpfs", "tmpfs", "/dev/shm")
    folder = tempfile.mkdtemp(dir="/dev/shm")
    os.chmod(folder, 0o711)
    play(NightSite(folder, arguments.programs), arguments)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--programs", default="build/release/bin")
    parser.add_argument("--verbose", action="store_true", help="a line a night")
    parser.add_argument("nights", nargs="?", type=int, default=8)
    parser.add_argument("relays", nargs="?", type=int, default=40)
    parser.add_argument("seed", nargs="?", type=int, default=1)
    arguments = parser.parse_args()
    if arguments.nights < 4 or not 1 <= arguments.relays <= 1000:
        parser.error("want at least 4 nights, and 1 to 1000 relays")
    enter_namespace()
    hear_signals()
    if MARK not in os.environ:
        print("Skipped: this user may not mount disks in a namespace here.\n0 passed, 0 failed")
        return 0
    return count_checks(lambda: test(arguments))


if __name__ == "__main__":
    sys.exit(main())
