"""An exact account of events over runs that end badly: crash_test.py [--workers N] [--round N] [--keep FOLDER] [ROUNDS [SEED]]

The simulated relays note each event that they hand over. In each round runs are killed, told to end, left without disk or
memory and so on, at moments that come from SEED as far as the machine runs alike; further runs follow until nothing waits.
Then each event has to be in a day file once, in a set-aside file that the log names, counted by a log line, or the one
under way at a kill.
"""

import argparse
import collections
import multiprocessing
import os
import pathlib
import shutil
import signal
import sys
import tempfile
import time
import traceback

from checks import check, count_checks
from rounds import Round
from site_of_round import Site, hear_signals
from small_disk import SmallDisk, enter_namespace


def work(at, arguments, numbers, folder, results):
    """Plays every so manieth round, and tells of each."""
    os.setpgid(0, 0)
    hear_signals()
    try:
        (folder / str(at)).mkdir()  # a normal user has to get through to it
        site = Site(folder / str(at), arguments.programs)
        for number in numbers:
            try:
                played = Round(site, arguments.seed, number)
                events, stored = played.play()
                complaints = played.ledger.complaints
                if complaints and arguments.keep:
                    shutil.copytree(site.folder, f"{arguments.keep}/{number}", dirs_exist_ok=True)
                complaints += [f"log: {line}" for line in site.lines()[-6:]] if complaints else []
                results.put((number, played.names, played.counts, complaints, events, stored))
            except Exception:
                results.put((number, [], {}, [traceback.format_exc()], 0, 0))
    except BaseException:
        results.put((None, [], {}, [traceback.format_exc()], 0, 0))


def tell(number, seed, names, complaints):
    what = f"round {number} of seed {seed} ({', '.join(names)}); alone: scripts/crash.sh --round {number} 1 {seed}"
    check(what, not complaints, "\n  " + "\n  ".join(complaints))


def play_all(arguments, folder):
    numbers = [arguments.round] if arguments.round is not None else list(range(arguments.rounds))
    workers = min(arguments.workers, len(numbers))
    results = multiprocessing.Queue()
    processes = [multiprocessing.Process(target=work, args=(at, arguments, numbers[at::workers], folder, results), daemon=True)
                 for at in range(workers)]
    for process in processes:
        process.start()
    totals, events, stored, begun = collections.Counter(), 0, 0, time.monotonic()
    for done in range(1, len(numbers) + 1):
        number, names, counts, complaints, handed, kept = results.get()
        totals.update(counts)
        events, stored = events + handed, stored + kept
        tell(number, arguments.seed, names, complaints)
        if done % 1000 == 0:
            print(f"{done} rounds in {time.monotonic() - begun:.0f} s", flush=True)
        if number is None:
            break
    for process in processes:
        process.join(5)
    print(f"{len(numbers)} rounds in {time.monotonic() - begun:.0f} s: {events} events handed over, {stored} in files.")
    print("Ends: " + ", ".join(f"{name} {count}" for name, count in totals.most_common()) + ".")


def test(arguments):
    shared = pathlib.Path("/dev/shm")
    with tempfile.TemporaryDirectory(prefix="ruvo-crash-", dir=shared if os.access(shared, os.W_OK) else None) as name:
        os.chmod(name, 0o711)
        probe = pathlib.Path(name) / "bin"
        shutil.copytree(arguments.programs, probe, ignore=lambda _, names: [name for name in names if name.startswith("test_")])
        arguments.programs = probe
        try:
            play_all(arguments, pathlib.Path(name))
        finally:
            for process in multiprocessing.active_children():
                os.killpg(process.pid, signal.SIGKILL)  # with the run that it has started
                process.join()
            SmallDisk.remove_all(pathlib.Path(name))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--workers", type=int, default=os.cpu_count())
    parser.add_argument("--round", type=int)
    parser.add_argument("--programs", default="build/release/bin")
    parser.add_argument("--keep", help="a folder for copies of what failing rounds leave")
    parser.add_argument("rounds", nargs="?", type=int, default=300)
    parser.add_argument("seed", nargs="?", type=int, default=1)
    arguments = parser.parse_args()
    enter_namespace()
    if "RUVO_CRASH_NAMESPACE" not in os.environ:
        print("Skipped: full disks and disks without inodes, because this user may not mount a small disk here.")
    return count_checks(lambda: test(arguments))


if __name__ == "__main__":
    sys.exit(main())
