"""The library as other programs use it: library_test.py SOURCE BIN

Its header in every C and C++ that it promises, with each compiler that is here, and its functions called from C and Python.
"""

import importlib
import os
import pathlib
import shutil
import sys
import tempfile

sys.dont_write_bytecode = True
SOURCE, BIN = (pathlib.Path(word).resolve() for word in sys.argv[1:3])
sys.path.insert(0, str(SOURCE / "tests/support"))

from checks import check, count_checks, equal, run, said  # noqa: E402

COMPILERS = {"gcc": "cc", "g++": "c++", "clang": "c", "clang++": "c++", "i686-w64-mingw32-gcc-posix": "c",
             "i686-w64-mingw32-g++-posix": "c++", "x86_64-w64-mingw32-gcc-posix": "c", "x86_64-w64-mingw32-g++-posix": "c++"}
STANDARDS = {"c": ("c89", "c99", "c11", "c17"), "c++": ("c++98", "c++11", "c++14", "c++17", "c++20")}
STRICT = "-fsyntax-only -Wall -Wextra -pedantic-errors -Werror -include ruvo/ruvo.h".split()
SUBSTATION = """[link]
serial = ["COM1"]
[[relay]]
name = "F"
serial = 1
access = { password = "FDR1" }
cells = { "00.DF" = { uint = 0, size = 1 } }
"""


def look_at_header():
    examples = sorted((SOURCE / "examples/c").glob("*.c"))
    seen = 0
    for compiler, kind in COMPILERS.items():
        if not shutil.which(compiler):
            continue
        language = "c" if kind == "cc" else kind
        for standard in STANDARDS[language]:
            done = run(compiler, f"-std={standard}", *STRICT, f"-I{SOURCE}/include", "-x", language, os.devnull)
            check(f"the header as {standard} by {compiler}", done.returncode == 0, done.stdout)
            seen += 1
        if language == "c":
            done = run(compiler, "-std=c89", *STRICT, f"-I{SOURCE}/include", *examples)
            check(f"the examples as c89 by {compiler}", done.returncode == 0, done.stdout)
    check("some compiler was here", seen > 0)


def call(work):
    sys.path.append(str(SOURCE / "examples/python"))
    module = importlib.import_module("ruvo_library")
    library = module.Library(str(BIN / "libruvo.so"))
    for password in (b"", b"A", b"FDR1", b"8 chars!", b"\xe4\xff"):
        scrambled = library.encrypt(password)
        equal(f"{password}: its length", len(scrambled), module.SCRAMBLED_SIZE - 1)
        equal(f"{password}: and back", library.decrypt(scrambled + b"and more"), password)
    for function, text in ((library.encrypt, b"ninechars"), (library.decrypt, b"0"), (library.decrypt, b"09" + b"1" * 20)):
        try:
            function(text)
            refused = False
        except ValueError:
            refused = True
        check(f"refused: {text}", refused)
    equal("null pointers", (library.functions.encrypt(None, None), library.functions.decrypt(None, None)), (-1, -1))
    typed = said(BIN / "scramble", input="FDR1\n").strip()
    equal("scrambled by the example in C", library.decrypt(typed.encode("ascii")), b"FDR1")
    check("the example in C refuses", run(BIN / "scramble", input="ninechars\n").returncode == 1)

    (work / "substation.toml").write_text(SUBSTATION, "utf-8")
    for variable, file in (("P32LS_SUBSTATION", "substation.toml"), ("RUVO_REGISTRY_USER", "none"),
                           ("RUVO_REGISTRY_MACHINE", "none")):
        os.environ[variable] = str(work / file)
    for password, want in (("FDR1", 0), ("FDR2", 6)):
        scrambled = library.encrypt(password.encode("ascii")).decode("ascii")
        ini = work / f"{password}.ini"
        ini.write_text(f"[RUVO_GENERAL]\nEventRootDir={work}/ev\n[RUVO_SERIAL]\nRV001=1\n[RUVO_PASSWORDS]\nRV001={scrambled}\n", "utf-8")
        equal(f"connection test with {password}", library.test_connection(ini, "RV001"), want)
        script = run(sys.executable, SOURCE / "examples/python/ruvo_library.py", BIN / "libruvo.so", "check", ini, "RV001")
        equal(f"the same as a program with {password}", script.returncode, want)
        equal(f"the same in C with {password}", run(BIN / "check_relay", ini, "RV001").returncode, want)
    equal("no such key", library.test_connection(work / "FDR1.ini", "RV009"), 3)
    equal("no such file", library.test_connection(work / "none.ini", "RV001"), 2)


def test():
    look_at_header()
    with tempfile.TemporaryDirectory() as work:
        call(pathlib.Path(work))


if __name__ == "__main__":
    sys.exit(count_checks(test))
