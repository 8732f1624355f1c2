"""Makes random single changes in src, runs the tests after each, and prints the changes that no test detects."""
import argparse
import os
import pathlib
import queue
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import threading
import time

from cpp_changes import changes_of

TOP = pathlib.Path(__file__).resolve().parents[2]
PLACE = TOP / 'build' / 'mutants'
# A changed program may do anything, also to files: started by root, it runs as a user who owns nothing, with limits.
UNUSED_ID = 65533 # of no user, and not the one that tests use as another user
MEMORY = 8 << 30
GRACE_SECONDS = 20 # a test program that takes longer than this and ten times its usual time hangs
ROOMS = re.findall(r'^(\w+) +src/\1\b', (TOP / 'cmake' / 'rooms.txt').read_text(), re.M)
# Changes that no test could notice, each as it is printed here but without the number of its line, with the reason
# indented below it, or below several. They are not tried.
EQUIVALENT = TOP / 'scripts' / 'upkeep' / 'equivalent_changes.txt'
OTHER_TESTS = ['sim', 'pages', 'tools', 'e2e', 'faults'] # the slowest last
PAGES = 'pages' # no test program, but whether the documentation has what the tables have


def tracked_files():
    listed = subprocess.run(['git', 'ls-files', '-z', '--cached', '--others', '--exclude-standard'], cwd=TOP, check=True,
                            capture_output=True).stdout
    return [name for name in listed.decode().split('\0') if name and (TOP / name).is_file()]


def sources():
    """The files of src that this system's build compiles, by room."""
    rooms = {}
    for name in tracked_files():
        path = pathlib.PurePosixPath(name)
        if path.parts[0] == 'src' and path.suffix in ('.cpp', '.h') and 'windows' not in path.parts:
            rooms.setdefault(path.parts[1], []).append(name)
    return rooms


def choose(count, seed):
    """`count` changes, no two the same: the room by the root of its size, then the kind, then the place."""
    chance = random.Random(seed)
    pools = {}
    for room, names in sources().items():
        kinds = {}
        for name in sorted(names):
            for change in changes_of((TOP / name).read_text(), chance):
                kinds.setdefault(change.kind, []).append((name, change))
        pools[room] = kinds
    rooms = sorted(pools)
    weights = [sum(map(len, pools[room].values())) ** 0.5 for room in rooms]
    chosen, seen = [], set()
    while len(chosen) < count:
        room = chance.choices(rooms, weights)[0]
        kind = chance.choice(sorted(pools[room]))
        name, change = chance.choice(pools[room][kind])
        if (name, change) not in seen:
            seen.add((name, change))
            chosen.append((room, name, change))
    return chosen


def describe(name, change):
    source = (TOP / name).read_text()
    line = source.count('\n', 0, change.start) + 1
    old = in_one_line(source[change.start:change.end])
    begin = source.rfind('\n', 0, change.start) + 1
    end = source.find('\n', change.end)
    return f'{name}:{line}: {change.kind}: {old} -> {change.new.strip()}   | {in_one_line(source[begin:end])}'


def in_one_line(text):
    return ' '.join(text.split())


def equivalents():
    """The listed changes. One whose source has changed since, or that could be meant for two places, ends the run."""
    listed = set()
    for line in EQUIVALENT.read_text().splitlines():
        if line[:1].strip(' #'):
            change, mark, source = line.rstrip().partition('   | ')
            name = change.partition(':')[0]
            begin, arrow, new = change.rpartition(' -> ')
            old = change.split(': ', 2)[2].partition(' -> ')[0]
            found = [in_one_line(line) for line in (TOP / name).read_text().splitlines()].count(source)
            if found != 1 or source.count(old) != 1:
                sys.exit(f'{EQUIVALENT.name}: {name} has not just one such place: {old} in {source}')
            # A constant may have several others.
            others = new.split(' or ') if ': constant: ' in begin else [new]
            listed.update(begin + arrow + other + mark + source for other in others)
    return listed


def target_of(test):
    return 'make_command_pages' if test == PAGES else f'test_{test}'


class Worker:
    """A copy of the tree with its own build, in which one change at a time is tried."""

    def __init__(self, number):
        self.place = PLACE / str(number)
        self.tree = self.place / 'tree'
        self.scratch = self.place / 'scratch'
        self.times = {}

    def prepare(self, files):
        self.tree.mkdir(parents=True, exist_ok=True)
        kept = set(files)
        for old in [path for path in self.tree.rglob('*') if path.is_file() and 'build' not in path.parts[len(self.tree.parts):]]:
            if str(old.relative_to(self.tree)) not in kept:
                old.unlink()
        for name in files:
            old, new = self.tree / name, TOP / name
            if not old.exists() or old.read_bytes() != new.read_bytes():
                old.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(new, old)
        self.reset_scratch()
        linker = ['-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld', '-DCMAKE_SHARED_LINKER_FLAGS=-fuse-ld=lld']
        # Warnings are errors here as everywhere: what the compiler tells of needs no test.
        self.must(['cmake', '-S', '.', '-B', 'build', '-G', 'Ninja', '-DRUVO_BENCH=OFF', '-DCMAKE_BUILD_TYPE=None',
                   '-DCMAKE_CXX_FLAGS=-O1 -Wno-maybe-uninitialized', '-DCMAKE_COMPILE_WARNING_AS_ERROR=ON', *linker])
        tests = ROOMS + OTHER_TESTS
        self.must(['cmake', '--build', 'build', '-j', str(os.cpu_count()), '--target', *map(target_of, tests)])
        for test in tests: # a test that fails without a change detects nothing
            begin = time.monotonic()
            if not self.passes(test):
                self.give_up(f'test_{test} fails without any change; see {self.place}/test.log')
            self.times[test] = time.monotonic() - begin

    def give_up(self, why):
        print(f'mutants.py: {why}', file=sys.stderr, flush=True)
        raise SystemExit(2)

    def must(self, command):
        with open(self.place / 'build.log', 'w') as log:
            if subprocess.run(command, cwd=self.tree, stdout=log, stderr=subprocess.STDOUT).returncode != 0:
                self.give_up(f'{command[0]} failed; see {self.place}/build.log')

    def reset_scratch(self):
        shutil.rmtree(self.scratch, ignore_errors=True)
        self.scratch.mkdir(parents=True)
        if os.geteuid() == 0:
            os.chown(self.scratch, UNUSED_ID, UNUSED_ID)

    def build(self, *targets):
        with open(self.place / 'build.log', 'w') as log:
            return subprocess.run(['cmake', '--build', 'build', '-j', '1', '--target', *targets], cwd=self.tree, stdout=log,
                                  stderr=subprocess.STDOUT).returncode == 0

    def command(self, test):
        if test != PAGES:
            return [str(self.tree / 'build/bin' / target_of(test))]
        pages = ('ruvoctl.1.md', 'ruvo.ini.5.md', 'ruvo-log.5.md')
        return [str(self.tree / 'build/pages' / target_of(test)), 'check', *(str(self.tree / 'docs' / page) for page in pages)]

    def passes(self, test):
        bounded = GRACE_SECONDS + 10 * self.times.get(test, 300)
        environment = {'PATH': os.environ['PATH'], 'HOME': str(self.scratch), 'TMPDIR': str(self.scratch),
                       'RUVO_STATE_DIR': str(self.scratch / 'state'), 'GTEST_FAIL_FAST': '1', 'GTEST_BRIEF': '1'}

        def restrain():
            for asking in (signal.SIGHUP, signal.SIGINT, signal.SIGQUIT): # which the parent may ignore, such as by nohup
                signal.signal(asking, signal.SIG_DFL)
            resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
            resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 30, 1 << 30))
            resource.setrlimit(resource.RLIMIT_CORE, (0, resource.RLIM_INFINITY)) # a test may raise it again

        who = {'user': UNUSED_ID, 'group': UNUSED_ID, 'extra_groups': []} if os.geteuid() == 0 else {}
        with open(self.place / 'test.log', 'w') as log:
            program = subprocess.Popen(self.command(test), cwd=self.scratch, env=environment, stdin=subprocess.DEVNULL, stdout=log,
                                       stderr=subprocess.STDOUT, start_new_session=True, preexec_fn=restrain, **who)
            try:
                good = program.wait(timeout=bounded) == 0
            except subprocess.TimeoutExpired:
                good = False
            try: # and the programs that it started
                os.killpg(program.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            program.wait()
        if not good:
            self.reset_scratch()
        return good

    def try_change(self, room, name, change):
        """What detected the change: a test, the compiler, or None."""
        path = self.tree / name
        original = path.read_text()
        path.write_text(original[:change.start] + change.new + original[change.end:])
        try:
            if not self.build(f'test_{room}'):
                return 'compiler'
            if not self.passes(room):
                return f'test_{room}'
            others = [other for other in ROOMS + OTHER_TESTS if other != room]
            if not self.build(*map(target_of, others)):
                return 'compiler'
            for test in others:
                if not self.passes(test):
                    return f'test_{test}'
            return None
        finally:
            path.write_text(original)


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument('count', nargs='?', type=int, default=300, help='how many changes (default 300)')
    parser.add_argument('seed', nargs='?', type=int, default=1, help='which ones: the same seed chooses the same changes')
    parser.add_argument('--workers', type=int, default=os.cpu_count(), help='number of copies of the tree to work on in parallel')
    parser.add_argument('--list', action='store_true', help='only print what would be changed')
    parser.add_argument('--only', metavar='TEXT', help='only changes whose line in the list matches this regular expression')
    return parser.parse_args()


def main():
    options = parse_arguments()
    # Some do not compile. Others are tried instead, so that the count is that of changes that were built.
    candidates = choose(options.count * 3, options.seed)
    left_out = equivalents()
    candidates = [one for one in candidates if re.sub(r':\d+:', ':', describe(*one[1:]), count=1) not in left_out]
    if options.only:
        candidates = [one for one in candidates if re.search(options.only, describe(*one[1:]))]
    if options.list:
        print('\n'.join(describe(name, change) for _, name, change in candidates[:options.count]))
        return 0
    files, work, outcomes, lock = tracked_files(), queue.SimpleQueue(), [], threading.Lock()
    for candidate in candidates:
        work.put(candidate)
    workers = [Worker(number) for number in range(options.workers)]

    def run(worker):
        while not work.empty() and len(outcomes) < options.count:
            room, name, change = work.get()
            detected_by = worker.try_change(room, name, change)
            with lock:
                if detected_by == 'compiler' or len(outcomes) >= options.count:
                    continue
                outcomes.append((room, detected_by))
                print(f'{len(outcomes)} {detected_by or "SURVIVED"}: {describe(name, change)}', flush=True)

    print(f'Building ({options.workers} copies)', flush=True)
    for worker in workers: # one after the other, so that a compiler cache serves all but the first
        worker.prepare(files)
    print('Changing', flush=True)
    threads = [threading.Thread(target=run, args=(worker,)) for worker in workers]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    for room in sorted({room for room, _ in outcomes}):
        of_room = [detected_by for where, detected_by in outcomes if where == room]
        print(f'{room:<12} {len(of_room):4} changes {of_room.count(None):4} survived')
    survived = sum(detected_by is None for _, detected_by in outcomes)
    print(f'{len(outcomes) - survived} passed, {survived} failed')
    return 1 if survived else 0


if __name__ == '__main__':
    sys.exit(main())
