#!/usr/bin/env python3
"""Checks which room uses which, where the operating system is used, that no two types share a name, and that files are tidy.

    check_rooms.py [--calls BUILD] [TREE]

Includes are found however they are written. With --calls the objects of that finished build are examined as well, so
that a call into a room that may not be used is found even where no header shows it. Prints the violations, and fails.
"""
import argparse
import json
import pathlib
import re
import subprocess
import sys

from cpp_source import directives_of, without_comments

TOP = pathlib.Path(__file__).resolve().parents[2]
CODE = ('.cpp', '.h', '.c')
TEXTS = CODE + ('.sh', '.py', '.md')
# Other names of C and C++ files, which would escape the checks.
OTHER_CODE = ('.cc', '.cxx', '.c++', '.cppm', '.ixx', '.hh', '.hpp', '.hxx', '.h++', '.inc', '.inl', '.ipp', '.tcc', '.tpp')
LONGEST = 400 # lines
MADE = ('docs/ruvoctl.1.md', 'docs/ruvo-log.5.md') # as long as the commands and the lines are many
PRODUCT = ('src', 'sim', 'tools')
# Where a header is looked for, beside the folder of the file that includes it.
INCLUDE_FOLDERS = ('src', '.', 'include', 'tests')

# The headers of C++20; those of C are listed by their C++ names.
STANDARD = set('''
    algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes climits
    clocale cmath codecvt compare complex concepts condition_variable coroutine csetjmp csignal cstdarg cstddef cstdint
    cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception execution filesystem format forward_list fstream
    functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits list locale map memory
    memory_resource mutex new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator
    semaphore set shared_mutex source_location span sstream stack stdexcept stop_token streambuf string string_view
    syncstream system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray
    variant vector version'''.split())
# Headers of libraries, and the folder that may know of each.
LIBRARIES = {'toml++/': 'sim/file', 'openssl/': 'sim/module', 'CLI/': 'tools', 'sqlite3.h': 'tools/archive'}
# Folders that may use the operating system: its implementations, and tests of the programs from outside.
SYSTEM_FOLDERS = ('src/platform', 'src/link/windows', 'sim/windows', 'sim/module/windows', 'tests', 'bench', 'fuzz')
# In C there is no other name for these, and the exports are for programs in C.
C_HEADERS = {'include': {'stdint.h'}, 'examples': {'stdint.h', 'stdio.h', 'stdlib.h', 'string.h'}}

# Symbols that are not calls of the system: those of C++ and of the compiler, C's own functions, and the implementation of
# C++ threads; and the names of the libraries.
C_NAMES = re.compile(r'_(Z|Unwind_|GLOBAL_)\w+|__(cxa|gxx|stack_chk|dynamic_cast|dso_handle|(emu)?tls|errno_location|isoc|libc_single'
                     r'|[atu]b?san|sanitizer|gcov)\w*|__\w*(printf|mem\w+|str\w+|fread|fgets)_chk'
                     r'|mem\w+|str(len|n?cmp|n?cpy|chr|rchr|str|to\w+)|is\w+|to(upper|lower)|v?(f|s|sn)?printf|std(in|out|err)'
                     r'|f(open|close|read|write|puts|gets|flush|seek|tell)|setv?buf|s?rand|getenv|atexit|abort|l?div|qsort'
                     r'|(round|floor|ceil|trunc|pow|log|log10|exp|sqrt|fmod|ldexp|frexp|modf|fabs)[fl]?'
                     r'|(mk|gm|local|asc|strf)?time|malloc|calloc|realloc|free|pthread_\w+|sem_\w+|nanosleep|sched_yield')
LIBRARY_NAMES = {'sqlite3_': 'tools/archive', 'HMAC': 'sim/module', 'EVP_': 'sim/module'}

# Macros that distinguish systems. (The compiler may be tested: suppressing a warning changes no behaviour.)
PLATFORM_WORD = re.compile(r'\b(_WIN32|_WIN64|WIN32|__WIN(?:32|64|NT)__|__MINGW\w*|__CYGWIN__|_MSC_VER|__linux\w*|__gnu_linux__'
                           r'|linux|unix|__unix\w*|__APPLE__|__MACH__|__FreeBSD__|__ANDROID__|_POSIX_\w+|__has_include\w*)\b')
PLATFORM_FOLDERS = ('src/platform',)
PLATFORM_FILES = ('include/ruvo/ruvo.h',) # the calling convention of the exports

# Folders of which a build takes one.
SYSTEMS = ('posix', 'windows')
# Where a type is defined, and its name.
TYPE = re.compile(r'(?:struct|class|union|enum (?:class|struct)) (?:\[\[\w+\]\] )?(\w+)(?: final)?(?: ?:(?!:)[^;]*)? ?(?:\{|$)')


def is_below(name, folders):
    return any(name == folder or name.startswith(folder + '/') for folder in folders)


class Rooms:
    """The table that CMake reads too."""

    def __init__(self, tree, report):
        self.folders = {}
        self.uses = {}
        for number, line in enumerate((tree / 'cmake/rooms.txt').read_text().splitlines(), 1):
            if line.startswith('#') or not line.strip():
                continue
            name, folder, *uses = line.split()
            for used in uses:
                if used != '*' and used not in self.uses:
                    report('cmake/rooms.txt', number, f'room {name} may use rooms named above it alone, not {used}')
            if not (tree / folder).is_dir():
                report('cmake/rooms.txt', number, f'there is no folder {folder}')
            self.folders[folder] = name
            self.uses[name] = set(uses)

    def of(self, name):
        """The room of a file: that of the nearest folder above it."""
        folder = pathlib.PurePosixPath(name).parent
        for place in (folder, *folder.parents):
            if str(place) in self.folders:
                return self.folders[str(place)]
        return None

    def may_use(self, room, used):
        return room == used or used in self.uses[room] or '*' in self.uses[room]


class Check:
    def __init__(self, tree):
        self.tree = tree
        self.wrong = []
        self.checked = 0
        self.rooms = Rooms(tree, self.report)
        self.sources = {}
        self.texts = []
        for top in sorted(tree.iterdir()):
            if top.name == 'build' or top.name.startswith(('.', 'demo-out')):
                continue
            for path in sorted(top.rglob('*')):
                name = path.relative_to(tree).as_posix()
                if path.suffix.lower() in OTHER_CODE and path.is_file():
                    self.report(name, 1, 'a source is named .cpp, .c or .h')
                elif path.suffix in TEXTS and path.is_file():
                    self.texts.append(name)
                    if path.suffix in CODE:
                        self.sources[name] = path.read_bytes().decode('utf-8', 'replace').replace('\r\n', '\n')
        # The possible values of each macro, in whichever file it is defined.
        self.macros = {}
        for source in self.sources.values():
            for _, word, rest in directives_of(source):
                match = re.fullmatch(r'(\w+)\s+(\S.*)', rest) if word == 'define' else None
                if match:
                    self.macros.setdefault(match[1], set()).add(match[2])

    def report(self, name, line, what):
        self.wrong.append(f'{name}:{line}: {what}')

    def found_in_tree(self, name, header, quoted):
        """The file of the tree that this include means, if it is one."""
        beside = [pathlib.PurePosixPath(name).parent.as_posix()] if quoted else []
        for folder in beside + list(INCLUDE_FOLDERS):
            path = (self.tree / folder / header).resolve()
            if path.is_file() and path.is_relative_to(self.tree):
                return path.relative_to(self.tree).as_posix()
        return None

    def check_include(self, name, line, what, seen=()):
        room = self.rooms.of(name)
        match = re.fullmatch(r'(["<])([^">]*)[">]', what)
        if not match:
            if not self.macros.get(what) or what in seen:
                self.report(name, line, f'include that cannot be resolved: {what}')
            for meant in sorted(self.macros.get(what, ())) if what not in seen else ():
                self.check_include(name, line, meant, (*seen, what))
            return
        self.checked += 1
        header = match[2]
        found = self.found_in_tree(name, header, match[1] == '"')
        if found:
            used = self.rooms.of(found)
            if used is None or not self.rooms.may_use(room, used):
                self.report(name, line, f'room {room} may not use {used or "what is in no room"} ({found})')
            return
        library = next((key for key in LIBRARIES if header.startswith(key)), None)
        if is_below(name, SYSTEM_FOLDERS) or header in STANDARD or library and is_below(name, (LIBRARIES[library],)):
            return
        if header in C_HEADERS.get(name.split('/')[0], ()):
            return
        if library:
            self.report(name, line, f'{header}: {LIBRARIES[library]} alone may use that library')
        else:
            self.report(name, line, f'{header}: neither ours nor of the C++ library; only src/platform uses the system')

    def check_code(self):
        for name, source in self.sources.items():
            if self.rooms.of(name) is None:
                self.report(name, 1, 'in no room of cmake/rooms.txt')
                continue
            for line, word, rest in directives_of(source):
                if word in ('include', 'include_next', 'import'):
                    self.check_include(name, line, rest)
            if is_below(name, PLATFORM_FOLDERS) or name in PLATFORM_FILES:
                continue
            for line, text in enumerate(without_comments(source).split('\n'), 1):
                match = PLATFORM_WORD.search(re.sub(r'"(?:[^"\\]|\\.)*"', '""', text))
                if match:
                    self.report(name, line, f'tests for the platform ({match[1]}) outside src/platform')

    def check_types(self):
        """No two types of one name in a namespace: a linker takes what is inline of one of them for both, silently."""
        places = {}
        for name in (name for name in self.sources if is_below(name, PRODUCT)):
            system = next((part for part in name.split('/') if part in SYSTEMS), '')
            spaces, line = [], 0
            for line, text in enumerate(self.sources[name].split('\n'), 1):
                space, kind = re.match(r'namespace ?([\w:]*) ?\{', text), TYPE.match(text)
                if space:
                    spaces.append(space[1])
                elif text.startswith('} // namespace'):
                    del spaces[-1:]
                elif kind and '' not in spaces:
                    for other, where in places.setdefault('::'.join((*spaces, kind[1])), []):
                        if other == system or '' in (other, system):
                            self.report(name, line, f'{kind[1]} is another type in {where}')
                    places['::'.join((*spaces, kind[1]))].append((system, name))
            if spaces:
                self.report(name, line, 'a namespace that does not end with its name')

    def check_texts(self):
        for name in self.texts:
            text = (self.tree / name).read_bytes()
            if not text.endswith(b'\n'):
                self.report(name, text.count(b'\n') + 1, 'no line end at the end of the file')
            if b'\r' in text:
                self.report(name, text[:text.index(b'\r')].count(b'\n') + 1, 'a carriage return')
            if text.count(b'\n') > LONGEST and name not in MADE:
                self.report(name, LONGEST + 1, f'above {LONGEST} lines')

    def check_calls(self, build):
        """Every symbol that an object leaves undefined, against the rooms of the objects that define it."""
        defined, used = {}, []
        objects = {}
        for command in json.loads((build / 'compile_commands.json').read_text()):
            source = pathlib.Path(command['file'])
            output = re.search(r' -o (\S+)', command['command'])[1]
            place = pathlib.PurePosixPath(re.sub(r'CMakeFiles/[^/]*\.dir/', '', output))
            # (Generated files belong to the room that compiles them.)
            name = source.relative_to(self.tree).as_posix() if source.is_relative_to(self.tree) and \
                not source.is_relative_to(build) else place.as_posix()
            if is_below(name, PRODUCT): # tests may call anything, and replace parts of it
                objects[str(build / output)] = name
        missing = [path for path in objects if not pathlib.Path(path).is_file()]
        if missing or not objects:
            self.report(build, 0, f'{len(missing)} of {len(objects)} objects are not built, such as {(missing + ["all"])[0]}')
            return
        said = subprocess.run(['nm', '--print-file-name', '--portability', *objects], check=True, capture_output=True, text=True)
        for line in said.stdout.splitlines():
            path, symbol, kind = line.split()[:3]
            name = objects[path.rstrip(':')]
            if kind in 'Uwv':
                used.append((name, symbol))
            elif kind.isupper() or kind == 'u':
                defined.setdefault(symbol, set()).add(self.rooms.of(name))
        bad, asked = {}, set()
        for name, symbol in used:
            rooms = defined.get(symbol)
            if rooms:
                self.checked += 1
                if not any(self.rooms.may_use(self.rooms.of(name), room) for room in rooms):
                    bad.setdefault((name, symbol), rooms)
            elif not (is_below(name, SYSTEM_FOLDERS) or C_NAMES.fullmatch(symbol) or
                      any(symbol.startswith(key) and is_below(name, (folder,)) for key, folder in LIBRARY_NAMES.items())):
                asked.add((name, symbol))
        for name, symbol in sorted(asked):
            self.report(name, 1, f'calls the system ({symbol}) outside src/platform')
        for (name, symbol), rooms in sorted(bad.items()):
            plain = subprocess.run(['c++filt', symbol], check=True, capture_output=True, text=True).stdout.strip()
            self.report(name, 1, f'room {self.rooms.of(name)} may not call {" or ".join(sorted(rooms))} ({plain})')


def main():
    parser = argparse.ArgumentParser(description='Which room uses which, where the system is asked, and tidy files.')
    parser.add_argument('--calls', metavar='BUILD', type=pathlib.Path, help='look into the objects of this build too')
    parser.add_argument('tree', nargs='?', type=pathlib.Path, default=TOP)
    options = parser.parse_args()
    check = Check(options.tree.resolve())
    check.check_code()
    check.check_types()
    check.check_texts()
    if options.calls:
        check.check_calls(options.calls.resolve())
    for what in check.wrong:
        print(what, file=sys.stderr)
    if not check.wrong and check.checked == 0:
        print('check_rooms.py: found nothing to check', file=sys.stderr)
    return 1 if check.wrong or check.checked == 0 else 0


if __name__ == '__main__':
    sys.exit(main())
