#!/usr/bin/env python3
"""Inserts one violation after the other into a small tree, and checks that check_rooms.py refuses each at its place."""
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).with_name('check_rooms.py')
ROOMS = '''# name folder may use
base      src/base
platform  src/platform     base
seam      src/link/seam    base
link      src/link         seam platform base
log       src/log          platform base
run       src/run          log link seam platform base
sim       sim              seam base
tools     tools            run log base
tests     tests            *
'''
HOUSE = {
    'cmake/rooms.txt': ROOMS,
    'src/base/text.h': '#include <cstddef>\nint Length(const char* text);\n',
    'src/base/text.cpp': '#include "base/text.h"\nint Length(const char* text) { return text[0]; }\n',
    'src/platform/files.cpp': '#include <unistd.h>\n#if defined(__linux__)\nint Files() { return getpid(); }\n#endif\n',
    'src/link/client.h': 'int Ask();\n',
    'src/link/client.cpp': '#include "client.h"\n#include "link/seam/variant.h"\nint Ask() { return Kind(); }\n',
    'src/link/seam/variant.h': 'inline int Kind() { return 1; }\n',
    'src/log/error_log.h': 'void Write(int line);\n',
    'src/log/error_log.cpp': '#include <log/error_log.h>\n#include "../base/text.h"\nvoid Write(int) { Length("a"); }\n',
    'src/run/run.cpp': '#include "log/error_log.h"\n// #include <poll.h>\nvoid Run() { Write(1); }\n',
    'sim/server.cpp': '#include "link/seam/variant.h"\n',
    'tools/tool.cpp': 'const char* text = R"(\n#include <poll.h>\n#if _WIN32\n)";\n',
    'tests/run_test.cpp': '#include <sys/wait.h>\n#include "link/client.h"\n',
}


class RoomsCheck(unittest.TestCase):
    def setUp(self):
        self.tree = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.tree)
        for name, text in HOUSE.items():
            self.write(name, text)

    def write(self, name, text):
        path = self.tree / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text.encode())

    def said(self, *arguments):
        done = subprocess.run([sys.executable, '-B', CHECK, *arguments, self.tree], capture_output=True, text=True)
        return done.returncode, done.stderr.splitlines()

    def build(self):
        commands = []
        for path in self.tree.rglob('*.cpp'):
            name = path.relative_to(self.tree)
            output = pathlib.Path(name.parent, 'CMakeFiles/it.dir', name.name + '.o')
            (self.tree / 'build' / output).parent.mkdir(parents=True, exist_ok=True)
            command = f'g++ -I{self.tree}/src -I{self.tree} -o {output} -c {path}'
            subprocess.run(command.split(), cwd=self.tree / 'build', check=True)
            commands.append({'file': str(path), 'command': command})
        (self.tree / 'build/compile_commands.json').write_text(json.dumps(commands))
        return self.tree / 'build'

    def refuses(self, name, text, *expected, arguments=()):
        """The file with this text is refused for these reasons, and no others."""
        self.write(name, text)
        if arguments:
            arguments = ('--calls', self.build())
        code, lines = self.said(*arguments)
        self.assertEqual(code, 1)
        self.assertEqual(len(lines), len(expected), lines)
        for line, (number, what) in zip(lines, expected):
            self.assertTrue(line.startswith(f'{name}:{number}: ') and what in line, line)

    def test_house_in_order(self):
        self.assertEqual(self.said('--calls', self.build()), (0, []))

    def test_empty_house(self):
        for name in ('src', 'sim', 'tools', 'tests'):
            shutil.rmtree(self.tree / name)
            (self.tree / name).mkdir()
        self.write('cmake/rooms.txt', 'sim sim\n')
        self.assertEqual(self.said(), (1, ['check_rooms.py: found nothing to check']))

    def test_include_by_relative_path(self):
        self.refuses('src/base/new.h', '\n#include "../log/error_log.h"\n', (2, 'room base may not use log'))

    def test_include_in_angles_by_relative_path(self):
        self.refuses('src/link/new.h', '#include <../src/log/error_log.h>\n', (1, 'room link may not use log'))

    def test_include_in_angles(self):
        self.refuses('src/log/new.h', '#include <link/client.h>\n', (1, 'room log may not use link'))

    def test_include_with_spaces(self):
        self.refuses('src/log/new.h', '  #  include\t"link/client.h"\n', (1, 'room log may not use link'))

    def test_include_without_spaces(self):
        self.refuses('src/log/new.h', '#include<link/client.h>\n', (1, 'room log may not use link'))

    def test_include_after_comment(self):
        self.refuses('src/log/new.h', '/* of\nus */ # /**/ include "link/client.h"\n', (2, 'room log may not use link'))

    def test_include_on_two_lines(self):
        self.refuses('src/log/new.h', '#inclu\\\nde "link/client.h"\n', (1, 'room log may not use link'))

    def test_include_by_macro(self):
        self.refuses('src/log/new.h', '#define ASKED <link/client.h>\n#include ASKED\n', (2, 'room log may not use link'))

    def test_include_by_unknown_macro(self):
        self.refuses('src/log/new.h', '#include ASKED\n', (1, 'cannot be resolved: ASKED'))

    def test_include_into_the_seam_from_the_link_around_it(self):
        self.refuses('src/link/seam/new.h', '#include "link/client.h"\n', (1, 'room seam may not use link'))

    def test_include_of_the_link_from_the_simulator(self):
        self.refuses('sim/new.cpp', '#include "link/client.h"\n', (1, 'room sim may not use link'))

    def test_call_without_include(self):
        self.refuses('src/base/new.cpp', 'void Write(int line);\nvoid Call() { Write(1); }\n',
                     (1, 'room base may not call log (Write(int))'), arguments=['--calls'])

    def test_system_call_without_header(self):
        self.refuses('src/run/new.cpp', 'extern "C" int getppid();\nint Call() { return getppid(); }\n',
                     (1, 'calls the system (getppid)'), arguments=['--calls'])

    def test_system_call_with_underscore(self):
        self.refuses('tools/new.cpp', 'extern "C" void _exit(int);\nvoid Call() { _exit(1); }\n',
                     (1, 'calls the system (_exit)'), arguments=['--calls'])

    def test_calls_of_unfinished_build(self):
        build = self.build()
        (build / 'src/run/CMakeFiles/it.dir/run.cpp.o').unlink()
        code, lines = self.said('--calls', build)
        self.assertEqual((code, len(lines)), (1, 1))
        self.assertIn('not built', lines[0])

    def test_system_header(self):
        self.refuses('src/run/new.cpp', '#include <poll.h>\n#include "unistd.h"\n#include <windows.h>\n',
                     (1, 'poll.h: neither ours'), (2, 'unistd.h: neither ours'), (3, 'windows.h: neither ours'))

    def test_header_by_its_place_on_the_machine(self):
        self.refuses('src/run/new.cpp', '#include "/usr/include/poll.h"\n', (1, 'neither ours'))

    def test_platform_conditional(self):
        self.refuses('tools/new.cpp', '#if defined (_WIN32)\n#endif\n#define HERE defined(__linux__)\n',
                     (1, 'tests for the platform (_WIN32)'), (3, 'tests for the platform (__linux__)'))

    def test_two_types_of_one_name(self):
        for name in ('src/platform/posix/new.h', 'src/platform/windows/new.h'): # a build takes one of them
            self.write(name, 'namespace ruvo {\nstruct SPlace {};\n} // namespace ruvo\n')
        self.write('src/run/new.cpp', 'namespace ruvo {\nnamespace {\nstruct SPlace {};\n} // namespace\n} // namespace ruvo\n')
        self.write('sim/new.h', 'namespace ruvo::sim {\nstruct SPlace {};\nclass SOther;\n} // namespace ruvo::sim\n')
        self.refuses('tools/new.h', 'namespace ruvo {\n\nclass SPlace final : SOther {\n};\n\n} // namespace ruvo\n',
                     (3, 'SPlace is another type in src/platform/posix/new.h'),
                     (3, 'SPlace is another type in src/platform/windows/new.h'))

    def test_folder_of_no_room(self):
        self.refuses('src/attic/new.cpp', 'int old;\n', (1, 'in no room'))

    def test_folder_beside_the_rooms(self):
        self.refuses('extra/new.cpp', 'int old;\n', (1, 'in no room'))

    def test_source_with_another_suffix(self):
        self.refuses('tools/new.hpp', '#include <windows.h>\n', (1, 'a source is named'))

    def test_rooms_in_a_circle(self):
        self.refuses('cmake/rooms.txt', ROOMS.replace('src/base\n', 'src/base platform\n'), (2, 'may use rooms named above it'))

    def test_untidy_files(self):
        for text, line, what in (('int a;', 1, 'no line end'), ('int a;\n\r\n', 2, 'carriage return'), ('\n' * 401, 401, 'above 400')):
            with self.subTest(what):
                self.refuses('src/base/new.cpp', text, (line, what))


if __name__ == '__main__':
    unittest.main()
