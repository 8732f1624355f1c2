"""One round: a yard of relays, one to three runs that end badly, then runs until nothing waits, and the account."""

import os
import random
import signal
import time

from ledger import RoundLedger
from site_of_round import belonging_to_root, ended, limit_memory, may_be_nobody
from yard import Yard

ORDERLY = (signal.SIGTERM, signal.SIGHUP, signal.SIGINT)
MOST_CYCLES = 150  # each malformed event ends a visit


class Round:
    def __init__(self, site, seed, number):
        self.random = random.Random(f"{seed}:{number}")
        self.site = site
        self.yard = Yard(self.random)
        self.ledger = RoundLedger(self.yard)
        self.names = []  # of the ends
        self.counts = {}
        small = site.disk.is_there
        self.events_small = small and self.random.random() < 0.3
        self.state_small = small and self.random.random() < 0.3
        site.begin_round(self.events_small, self.state_small, self.random.random() < 0.3,
                         may_be_nobody() and self.random.random() < 0.5)
        site.write_ini(*self.yard.ini(site.password))

    def note(self, name):
        self.names.append(name)
        self.counts[name] = self.counts.get(name, 0) + 1

    def pause(self, most=None):
        """Up to the length of a run, or so many seconds."""
        length = most or 0.008 + 0.0012 * self.yard.delay * sum(len(relay.kinds) for relay in self.yard.relays)
        time.sleep(self.random.random() * length)

    def show(self, refuses=False):
        self.site.describe(*self.yard.parts(refuses))

    def play(self):
        self.yard.grow()
        self.show()
        if self.random.random() < 0.5:
            self.end_by_itself(self.site.start(), "whole run")
        ends = [self.killed, self.killed, self.killed_and_moved, self.killed_and_cut, self.told_to_end, self.out_of_memory,
                self.two_runs, self.one_stopped, self.password_refused, self.no_state_folder, self.killed_while_recovering,
                self.set_aside_and_stored, self.set_aside_and_stored]
        ends += [self.not_permitted] * (2 if self.site.is_nobody else 0)
        ends += [self.disk_full, self.disk_filled, self.no_names] if self.events_small or self.state_small else []
        for _ in range(self.random.choice((1, 1, 2, 3))):
            self.yard.grow()
            self.show()
            self.random.choice(ends)()
            self.site.disk.empty()
        self.recover()
        return self.ledger.check(self.site)

    def end_by_itself(self, program, what, statuses=(0,)):
        status = ended(program)
        if status not in statuses:
            self.ledger.complain(f"{what}: ended with {status}")

    def kill(self, program, before, is_alone=True):
        program.kill()
        if program.wait() != 0:
            events = self.site.handed_over_since(before)
            self.ledger.under_way.append(set(events[-1:] if is_alone else events))

    # How a run ends

    def killed(self):
        self.note("kill")
        before = self.site.account_size()
        program = self.site.start()
        self.pause()
        self.kill(program, before)

    def killed_and_moved(self):
        self.killed()
        files = self.site.day_files()
        if files:
            self.note("day file moved")
            self.move_away(self.random.choice(files))

    def move_away(self, file):
        self.ledger.may_be_twice |= set(self.ledger.read(self.site, file))
        number = len(list((self.site.folder / "away").iterdir()))
        target = self.site.folder / "away" / f"{number}.evt"
        target.write_bytes(file.read_bytes())
        file.unlink()

    def killed_and_cut(self):
        self.killed()
        files = [file for file in self.site.day_files() if file.stat().st_size > 0]
        if files:
            self.note("day file cut")
            file = self.random.choice(files)
            before = self.ledger.read(self.site, file)
            os.truncate(file, self.random.randrange(file.stat().st_size))
            self.ledger.may_be_gone |= set(before - self.ledger.read(self.site, file))

    def told_to_end(self):
        number = self.random.choice(ORDERLY)
        self.note(number.name)
        before, lines = self.site.account_size(), len(self.site.log())
        program = self.site.start()
        self.pause()
        program.send_signal(number)
        status = ended(program)
        new = self.site.log()[lines:]
        said = any(f"Run ended by {number.name}; " in line for line in new)
        is_whole = self.is_all_taken() or any("no event was taken from the relay" in line for line in new)
        if status == -number and self.site.account_size() == before:
            return  # before it could hear
        if status != 0:
            self.ledger.complain(f"{number.name}: ended with {status}")
        elif not said and not is_whole:
            self.ledger.complain(f"{number.name}: no line tells of it")

    def is_all_taken(self):
        handed = self.ledger.handed_over(self.site)
        return all(not relay.is_open or not all(map(relay.can_be_recorded, range(1, relay.shown + 1)))
                   or handed[f"R{relay.number}"] == relay.shown for relay in self.yard.relays)

    def out_of_memory(self):
        self.note("no memory")
        program = self.site.start()
        self.pause()
        limit_memory(program, self.site.is_nobody, self.random.choice((0, 4096, 1 << 16, 1 << 20)))
        before = self.site.account_size()
        status = ended(program)
        if status != 0 and self.site.account_size() > before:
            self.ledger.complain(f"no memory: ended with {status} after it had taken events")

    def two_runs(self):
        self.note("two runs")
        before = self.site.account_size()
        programs = [self.site.start(0), self.site.start(1)]
        self.pause()
        if self.random.random() < 0.5:
            self.note("one of two killed")
            self.kill(programs.pop(self.random.randrange(2)), before, is_alone=False)
        for program in programs:
            self.end_by_itself(program, "two runs")

    def one_stopped(self):
        """While one of two runs stands still in a visit, the other takes no event of the same relay."""
        self.note("one of two runs stopped")
        delay, self.yard.delay = self.yard.delay, 1
        self.show()
        before = self.site.account_size()
        first = self.site.start(0)
        patience = time.monotonic() + 1
        while self.site.account_size() == before and first.poll() is None and time.monotonic() < patience:
            time.sleep(0.001)  # it has still to log in
        self.pause(0.03)
        if self.site.stop(first):
            taken = {name for name, _ in self.site.handed_over_since(before)}
            visited = taken & self.site.open_day_files(first)
            before = self.site.account_size()
            self.end_by_itself(self.site.start(1), "beside a run that is stopped")
            others = {name for name, _ in self.site.handed_over_since(before)}
            self.counts["of these in a visit"] = self.counts.get("of these in a visit", 0) + len(visited)
            if visited & others:
                self.ledger.complain(f"two runs have visited {sorted(visited & others)} at a time")
            first.send_signal(signal.SIGCONT)
        self.end_by_itself(first, "a run that was stopped")
        self.yard.delay = delay

    def killed_while_recovering(self):
        """The beginning of a run is where it brings in what others have left."""
        self.killed()
        for _ in range(self.random.choice((1, 2, 3))):
            self.note("ended while recovering")
            before = self.site.account_size()
            program = self.site.start()
            self.pause(0.015)
            number = self.random.choice((signal.SIGKILL, *ORDERLY))
            if number == signal.SIGKILL:
                self.kill(program, before)
            else:
                program.send_signal(number)
                self.end_by_itself(program, f"{number.name} while recovering", (0, -number))

    def set_aside_and_stored(self):
        """By recover, which is killed perhaps, or meets a run."""
        self.password_refused()
        self.end_by_itself(self.site.start_recover(), "list of what is left", (0, 1))
        files = [file for file in self.site.set_aside_files() if self.site.states[0] in file.parents]
        if not files:
            return
        self.note("set-aside file stored")
        beside = [self.site.start(1)] if self.random.random() < 0.3 else []
        program = self.site.start_recover(*files)
        if self.random.random() < 0.6:
            self.note("recover ended")
            self.pause(0.012)
            number = self.random.choice((signal.SIGKILL, signal.SIGTERM))
            program.send_signal(number)
            self.end_by_itself(program, "recover that is ended", (0, 1, -number))
        else:
            status = ended(program)
            left = [file for file in files if file.exists()]
            if status not in (0, 1) or (status == 0) != (not left):
                self.ledger.complain(f"recover: ended with {status}, and left {left}")
        for run in beside:
            self.end_by_itself(run, "beside recover")

    def not_permitted(self):
        """Something belongs to another user for one run."""
        self.note("not permitted")
        places = [self.site.events, *self.site.events.glob("*"), *self.site.day_files(), self.site.states[0], self.site.folder / "log"]
        places = [place for place in places if place.exists()]
        with belonging_to_root(self.random.sample(places, min(len(places), 2))):
            self.end_by_itself(self.site.start(), "not permitted")

    def password_refused(self):
        self.note("password refused")
        self.show(refuses=True)
        self.end_by_itself(self.site.start(), "password refused")

    def no_state_folder(self):
        self.note("no state folder")
        blocked = self.site.folder / "away.file"
        blocked.touch()
        self.end_by_itself(self.site.start(0, blocked / "state"), "no state folder")

    def disk_full(self):
        self.note("disk full")
        self.site.disk.fill(self.random.randrange(0, 260) * 1024)
        self.end_by_itself(self.site.start(), "disk full")

    def disk_filled(self):
        self.note("disk filled during a run")
        program = self.site.start()
        self.pause()
        self.site.disk.fill(self.random.randrange(0, 16) * 1024)
        self.end_by_itself(program, "disk filled")

    def no_names(self):
        self.note("no inodes")
        self.site.disk.fill_names(self.random.randrange(6))
        self.end_by_itself(self.site.start(), "no inodes")

    # And what follows

    def recover(self):
        self.yard.grow(whole=True)
        self.show()
        before = None
        for _ in range(MOST_CYCLES):
            for at in range(len(set(self.site.states))):
                self.end_by_itself(self.site.start(at), "recovery")
            now = (self.site.account_size(), len(self.site.waiting_journals()), self.move_torn_files())
            if now == before and now[1] == 0:
                break
            before = now
        else:
            self.ledger.complain(f"after {MOST_CYCLES} runs there are still {self.site.waiting_journals()}")
        handed = self.ledger.handed_over(self.site)
        for relay in self.yard.relays:
            wanted = len(relay.kinds) if relay.is_open else 0
            if handed[f"R{relay.number}"] != wanted:
                self.ledger.complain(f"R{relay.number} has handed over {handed[f'R{relay.number}']} of {wanted}")

    def move_torn_files(self):
        """As the people of the site would: the next run begins a new file."""
        lines = self.site.log()
        torn = [file for file in self.site.day_files()
                if any(f"{file} does not end with a whole record" in line or
                       f"for day file {file}: the file does not end with" in line for line in lines)]
        torn = [file for file in torn if "error" in self.site.ruvoctl("events", "--format", "json", file)]
        for file in torn:
            self.move_away(file)
        return len(torn)
