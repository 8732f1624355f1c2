"""The bad ends of a site's runs, and what they meet: each costs no event, but for the one under way at a kill."""

import datetime
import os
import signal
import time

from night_relays import UNKNOWN
from site_of_round import belonging_to_root, ended, limit_memory

ORDERLY = (signal.SIGTERM, signal.SIGHUP, signal.SIGINT)
KB = 1024


class Ends:
    """Needs: site, random, relays, account, day (a date), and show()."""

    def end_by_itself(self, program, what, statuses=(0,)):
        status = ended(program)
        if status not in statuses:
            self.account.complain(f"{what}: ended with {status}")

    def wait_for_progress(self, program):
        """Until a random part of tonight's events has been handed over, and a little longer."""
        line = 7  # bytes, about
        target = self.site.account_size() + self.random.random() * line * sum(relay.pending for relay in self.relays)
        patience = time.monotonic() + 20
        while program.poll() is None and self.site.account_size() < target and time.monotonic() < patience:
            time.sleep(0.0005)
        time.sleep(self.random.random() * 0.004)

    def kill(self, program, before, is_alone=True):
        program.kill()
        if program.wait() != 0:
            events = [(int(number), self.by_number[int(number)].taken + int(event))
                      for number, event, _ in self.site.account_lines(before)]
            self.account.under_way.append(set(events[-1:] if is_alone else events))

    # Ends of the process

    def killed(self):
        before = self.site.account_size()
        program = self.site.start()
        self.wait_for_progress(program)
        self.kill(program, before)

    def killed_again_and_again(self):
        for _ in range(4):
            self.killed()

    def killed_while_recovering(self):
        self.killed()
        for _ in range(3):
            before = self.site.account_size()
            program = self.site.start()
            time.sleep(self.random.random() * 0.03)
            self.kill(program, before)

    def killed_and_day_file_moved(self):
        self.killed()
        files = self.site.day_files()
        if files:
            file = self.random.choice(files)
            target = self.site.away / f"{len(list(self.site.away.iterdir()))}.evt"
            self.account.complaints += self.account.files.look()
            self.account.may_be_twice |= set(self.account.files.events[file])
            self.account.files.touched |= {file, target}
            target.write_bytes(file.read_bytes())
            file.unlink()

    def killed_and_day_file_cut(self):
        self.killed()
        files = [file for file in self.site.day_files() if file.stat().st_size > 0]
        if files:
            file = self.random.choice(files)
            self.account.complaints += self.account.files.look()
            before = set(self.account.files.events[file])
            os.truncate(file, self.random.randrange(file.stat().st_size))
            self.account.files.touched |= {file}
            self.account.files.look()
            self.account.may_be_gone |= before - set(self.account.files.events[file])

    def told_to_end(self):
        for number in ORDERLY:
            program = self.site.start()
            self.wait_for_progress(program)
            program.send_signal(number)
            self.end_by_itself(program, number.name, (0, -number))

    def told_to_end_twice_while_it_hangs(self):
        waiting = [relay for relay in self.relays if relay.pending and relay.kind(relay.taken + 1) < UNKNOWN]
        if not waiting:
            return
        relay = self.random.choice(waiting)
        self.show(f'[[fault]]\noperation = "StartGetStrings"\nrelay = "{relay.number}"\nhang = true')
        program = self.site.start()
        size, patience = -1, time.monotonic() + 30
        while program.poll() is None and size != self.site.account_size() and time.monotonic() < patience:
            size = self.site.account_size()
            time.sleep(0.5)
        if program.poll() is None:
            program.send_signal(signal.SIGTERM)
            time.sleep(0.1)
            program.send_signal(signal.SIGTERM)
        self.end_by_itself(program, "a run that hung")
        self.show()

    def out_of_memory(self):
        program = self.site.start()
        self.wait_for_progress(program)
        limit_memory(program, self.site.is_nobody, self.random.choice((0, 4096, 1 << 16)))
        before = self.site.account_size()
        status = ended(program)
        if status != 0 and self.site.account_size() > before:
            self.account.complain(f"no memory: ended with {status} after it had taken events")

    # Two at a time

    def two_runs(self):
        before = self.site.account_size()
        programs = [self.site.start(0), self.site.start(1)]
        self.wait_for_progress(programs[0])
        self.kill(programs.pop(self.random.randrange(2)), before, is_alone=False)
        self.end_by_itself(programs[0], "beside a run that was killed")

    def one_of_two_runs_stands_still(self):
        first = self.site.start(0)
        self.wait_for_progress(first)
        first.send_signal(signal.SIGSTOP)
        second = self.site.start(1)
        time.sleep(0.3)  # it may have to await the relays' own account
        first.send_signal(signal.SIGCONT)
        self.end_by_itself(second, "beside a run that stood still")
        self.end_by_itself(first, "a run that stood still")

    # What a run meets

    def disk_of_events_full(self):
        self.without_room(self.site.event_disk, self.random.randrange(300) * KB)

    def disk_of_state_full(self):
        self.without_room(self.site.state_disk, self.random.randrange(200) * KB)

    def without_room(self, disk, free=None, names=None):
        disk.shrink(free, names)
        self.end_by_itself(self.site.start(), "a full disk")
        disk.grow_again()

    def disks_filled_during_a_run(self):
        for disk in (self.site.event_disk, self.site.state_disk):
            program = self.site.start()
            self.wait_for_progress(program)
            disk.shrink(self.random.randrange(8) * KB)
            self.end_by_itself(program, "a disk that is filled")
            disk.grow_again()

    def no_inodes(self):
        self.without_room(self.site.event_disk, names=self.random.randrange(8))
        self.without_room(self.site.state_disk, names=self.random.randrange(3))

    def no_state_folder(self):
        blocked = self.site.folder / "blocked"
        blocked.touch()
        self.end_by_itself(self.site.start(RUVO_STATE_DIR=str(blocked / "state")), "no state folder")

    def not_permitted(self):
        places = [self.site.events, *self.site.events.glob("*"), *self.site.day_files(), self.site.state, self.site.folder / "log"]
        places = [place for place in places if place.exists()]
        with belonging_to_root(self.random.sample(places, min(len(places), 1 + len(places) // 10))):
            self.end_by_itself(self.site.start(), "not permitted")

    def something_else_in_its_place(self):
        """A file where a folder should be, and the other way round: event root, log and a tenth of the folders."""
        folders = [folder for folder in self.site.events.glob("*") if folder.is_dir()]
        some = self.random.sample(folders, len(folders) // 10)
        for places in (some, [self.site.events], [self.site.folder / "log"]):
            for place in places:
                place.rename(f"{place}.real")
                place.mkdir() if place.name == "log" else place.touch()
            self.end_by_itself(self.site.start(), "something else in its place")
            for place in places:
                place.rmdir() if place.is_dir() else place.unlink()
                place.with_name(f"{place.name}.real").rename(place)

    def password_of_all_relays_wrong(self):
        self.site.write_site(self.relays, self.site.scrambled("CCCC"))
        self.end_by_itself(self.site.start(), "wrong passwords")
        self.site.write_site(self.relays, self.site.password)

    def no_comms_server(self):
        module = self.site.bin / "p32ls.so"
        module.rename(module.with_suffix(".away"))
        self.end_by_itself(self.site.start(), "no comms server")
        module.with_suffix(".away").rename(module)

    # Clocks

    def at(self, **changed):
        return datetime.datetime.combine(self.day, datetime.time(1)) + datetime.timedelta(**changed)

    def clock_set_back(self):
        self.site.set_clock(self.at(days=-self.random.choice((1, 2, 20000))))
        self.end_by_itself(self.site.start(), "a clock that was set back")

    def clock_a_year_ahead(self):
        self.killed()  # what waits has then waited for more than a week
        self.site.set_clock(self.at(days=366))
        self.end_by_itself(self.site.start(), "a clock a year ahead")

    def midnight_during_a_run(self):
        self.site.set_clock(datetime.datetime.combine(self.day, datetime.time(23, 59, 59)))
        program = self.site.start()
        self.wait_for_progress(program)
        self.site.set_clock(self.at(hours=23))
        self.end_by_itself(program, "midnight")

    def clock_jumps_during_a_run(self):
        program = self.site.start()
        for _ in range(8):
            self.wait_for_progress(program)
            self.site.set_clock(self.at(hours=self.random.randrange(-100, 100)))
        self.end_by_itself(program, "a clock that jumps")


def all_ends(is_nobody):
    """Their names."""
    helpers = {"end_by_itself", "wait_for_progress", "kill", "without_room", "at"}
    left_out = helpers | (set() if is_nobody else {"not_permitted"})
    return [name for name, value in vars(Ends).items() if callable(value) and name not in left_out and not name.startswith("_")]
