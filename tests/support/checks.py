"""What tests in Python count with, and how they run programs. The last line of a test is "N passed, N failed"."""

import signal
import subprocess
import sys
import time

counts = {"passed": 0, "failed": 0}


def check(what, good, seen=""):
    """Counts; a failure is reported with what was seen."""
    counts["passed" if good else "failed"] += 1
    if not good:
        print(f"FAILED: {what}: {str(seen)[:4000]}", flush=True)
    return good


def equal(what, got, wanted):
    return check(what, got == wanted, f"\n  got    {got!r}\n  wanted {wanted!r}")


def run(*command, **options):
    """A program that ends by itself: its `returncode` and, in `stdout`, all that it says."""
    if "input" not in options:
        options.setdefault("stdin", subprocess.DEVNULL)
    options = {"stdout": subprocess.PIPE, "stderr": subprocess.STDOUT, "text": True, "errors": "replace", **options}
    return subprocess.run([str(word) for word in command], check=False, **options)


def said(*command, **options):
    """What a program says, without its last line ends."""
    return run(*command, **options).stdout.rstrip("\n")


def must(*command, **options):
    """A step without which nothing further can be tested; what it says."""
    done = run(*command, **options)
    if done.returncode != 0:
        raise RuntimeError(f"{' '.join(map(str, command))}: ended with {done.returncode}\n{done.stdout}")
    return done.stdout


def ends_with(what, status, *command, **options):
    done = run(*command, **options)
    return check(what, done.returncode == status, f"ended with {done.returncode}\n{done.stdout}")


def succeeds(what, *command, **options):
    return ends_with(what, 0, *command, **options)


def fails(what, *command, **options):
    done = run(*command, **options)
    return check(what, done.returncode != 0, done.stdout)


def silent(what, *command, status=0, **options):
    """Ends with that status and says nothing."""
    done = run(*command, **options)
    return check(what, done.returncode == status and done.stdout == "", f"ended with {done.returncode}\n{done.stdout}")


def wait_for(what, happened, seconds=120):
    """Polls until it has happened; the outcome never depends on how long that takes."""
    end = time.monotonic() + seconds
    while not happened():
        if time.monotonic() > end:
            raise RuntimeError(f"{what}: not seen for {seconds} s")
        time.sleep(0.05)


def stop(*_):
    sys.exit(1)


def count_checks(test):
    """Runs the test; the count comes last, whatever happens. The exit status."""
    signal.signal(signal.SIGTERM, stop)
    signal.signal(signal.SIGINT, signal.default_int_handler)  # as at a terminal, even where the test runs in the background
    try:
        test()
    except Exception as failure:
        check("the whole test", False, repr(failure))
    print(f"{counts['passed']} passed, {counts['failed']} failed")
    return int(counts["failed"] > 0 or counts["passed"] == 0)
