#!/usr/bin/env python3
"""Puts functions of known length and complexity before check_functions.py."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).with_name('check_functions.py')
LONG = 'void Long() {\n' + '    Step();\n' * 49 + '}\n' # 51 lines
IFS = '    if (a) {\n    }\n'
# Each row: what it is, the source, and the functions that are too long or too complex.
ROWS = (
    ('long', LONG, ['1: Long: 51 lines']),
    ('as long as may be', LONG.replace('    Step();\n', '', 1), []),
    ('a long head', LONG.replace('Long()', 'Long(int a,\n int b)').replace('    Step();\n', '', 1), ['1: Long: 51 lines']),
    ('a long member', 'namespace a {\nclass C : public B {\npublic:\n' + LONG + '};\n}\n', ['4: Long: 51 lines']),
    ('after a list of member initializers', 'C::C(int a) : m_a{a}, m_b(std::move(b)) {\n' + '    Step();\n' * 49 + '}\n', ['1: C::C: 51 lines']),
    ('with a trailing return type', 'auto Long() -> std::vector<int> {\n' + '    Step();\n' * 49 + '}\n', ['1: Long: 51 lines']),
    ('a lambda in a table', 'const S kRows[] = {\n{"a", [](int a) {\n' + '    Step();\n' * 49 + '}},\n};\n', ['2: lambda: 51 lines']),
    ('a long table', 'constexpr std::array<T, sizeof(T)> kRows{\n' + '    1,\n' * 60 + '};\n', []),
    ('text and comment', 'void F() {\n' + '    // if (a) {\n    Say("if && {");\n' * 20 + '}\n', []),
    ('complex', 'void F(bool a) {\n' + IFS * 16 + '}\n', ['1: F: complexity 17']),
    ('as complex as may be', 'void F(bool&& a) {\n' + IFS * 15 + '}\n', []),
    ('each branch', 'void F(bool a, T&& b) {\n' + '    for (;;) { while (a && b || c) { a = b ? c : d; } }\n' * 3 +
     '    switch (a) {\n    case 1:\n    default:\n    }\n    try {\n    } catch (...) {\n    }\n}\n', ['1: F: complexity 18']),
    ('a lambda counts with its function', 'void F(bool a) {\n' + IFS * 8 + '    G([] {\n' + IFS * 8 + '    });\n}\n',
     ['1: F: complexity 17']),
)


class FunctionsCheck(unittest.TestCase):
    def check(self, source):
        with tempfile.TemporaryDirectory() as tree:
            folder = pathlib.Path(tree, 'src')
            folder.mkdir()
            (folder / 'a.cpp').write_text(source)
            done = subprocess.run([sys.executable, '-B', CHECK, tree], capture_output=True, text=True)
        return done.returncode, done.stderr.splitlines()

    def test_rows(self):
        for what, source, expected in ROWS:
            with self.subTest(what):
                code, said = self.check(source if expected else source + 'void Other() {}\n')
                self.assertEqual([line[len('src/a.cpp:'):].split(';')[0] for line in said], expected)
                self.assertEqual(code, 1 if expected else 0)

    def test_nothing_to_look_at(self):
        self.assertEqual(self.check('int a;\n'), (1, ['check_functions.py: found no function']))


if __name__ == '__main__':
    unittest.main()
