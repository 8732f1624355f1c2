"""What is in the package, before it is installed."""

import glob
import hashlib
import json
import os
import pathlib
import platform
import re
import shutil

from checks import check, equal, run, said, silent, succeeds

RUNTIME = ["libc.so.6", "libgcc_s.so.1", "libm.so.6", "libstdc++.so.6"]
# By which the package was made, and what stands in it.
PARTS = """libc6-dev libcli11-dev libgcc-12-dev libsqlite3-dev libssl-dev libstdc++-12-dev libtomlplusplus-dev linux-libc-dev
    binutils-x86-64-linux-gnu cmake g++-12 ninja-build libc6 libgcc-s1 libsqlite3-0 libssl3 libstdc++6 systemd""".split()
# Two modules, whole, and the two lowest rooms that are libraries. (All the rest would cost minutes.)
BUILT = ("oncrpc", "HalvexCryptoKit", "ruvo_paths")
SAME = ("bin/oncrpc.so", "bin/HalvexCryptoKit.so", "src/platform/libruvo_platform.a", "src/paths/libruvo_paths.a")


def libraries(program):
    names = re.findall(r"(?m)^\s*(?:[^ ]*/)?([^ /]+\.so[^ ]*)", said("ldd", program))
    return sorted(name for name in names if not name.startswith(("ld-linux", "linux-vdso")))


def field(deb, name):
    return said("dpkg-deb", "-f", deb, name)


def look_at_programs(private):
    equal("the extractor wants the C++ runtime and the C library only", libraries(private / "ruvo"), RUNTIME)
    equal("so does the library for other programs", libraries(private / "libruvo.so"), RUNTIME)
    check("no server stands where one is found unasked", not (private / "p32ls.so").exists())
    for file in ("ruvo", "ruvoctl", "libruvo.so", "simulator/p32ls.so"):
        elf = said("readelf", "-W", "-d", "-l", private / file)
        check(f"{file} is linked for protection", "GNU_RELRO" in elf and "NOW" in elf, elf)
    # Of each compiler's option something that it alone leads to.
    symbols = re.findall(r"UND ([^@ \n]*)", said("readelf", "-W", "--dyn-syms", private / "ruvo"))
    for symbol in ("__stack_chk_fail", "__[a-z]*_chk", ".*glibcxx_assert_fail.*"):
        check(f"ruvo is compiled for protection: {symbol}", any(re.fullmatch(symbol, name) for name in symbols), symbols)
    jumps = said("objdump", "-d", private / "ruvo").count("endbr64")
    check("ruvo is compiled for protection: jumps", platform.machine() != "x86_64" or jumps > 1000, jumps)


def look_at_parts(deb):
    """What the package was made from, beside it."""
    text = deb.with_suffix(".spdx.json").read_text("utf-8")
    parts = sorted(f"{part['name']} {part['versionInfo']}" for part in json.loads(text)["packages"])
    installed = said("dpkg-query", "-W", "-f", "${Package} ${Version}\n", *PARTS).splitlines()
    equal("parts: this package alone, its headers' packages, tools and libraries", parts,
          sorted([f"ruvo {field(deb, 'Version')}", *installed]))
    check("parts: this very file", hashlib.sha256(deb.read_bytes()).hexdigest() in text)


def build_in(folder):
    folder.mkdir(parents=True)
    for part in ("CMakeLists.txt", "CMakePresets.json", "cmake", "docs", "examples", "include", "packaging", "sim", "src",
                 "tools"):
        (shutil.copytree if os.path.isdir(part) else shutil.copy)(part, folder / part)
    set_up = run("cmake", "--preset", "release", "-D", "RUVO_TESTS=OFF", "-D", "RUVO_BENCH=OFF", "-D",
                 "CMAKE_CXX_COMPILER_LAUNCHER=", cwd=folder)
    built = run("cmake", "--build", "build/release", "--target", *BUILT, cwd=folder)
    return set_up.returncode == 0 and built.returncode == 0


def make_again(deb, work):
    before = [file.read_bytes() for file in (deb, deb.with_suffix(".spdx.json"))]
    packed = run("scripts/package.sh", umask=0o077, env={**os.environ, "TZ": "Pacific/Kiritimati", "LC_ALL": "C"})
    check("packed again, with another umask, time zone and locale: the same bytes", packed.returncode == 0 and
          [file.read_bytes() for file in (deb, deb.with_suffix(".spdx.json"))] == before, packed.stdout)
    one, another = work / "one", work / "another/below"
    check("built in a folder", build_in(one))
    check("built in another folder", build_in(another))
    for file in SAME:
        equal(f"from two folders the same bytes: {file}", (one / "build/release" / file).read_bytes(),
              (another / "build/release" / file).read_bytes())


def look_at_pages(folder, work):
    pages = sorted(pathlib.Path(page) for page in glob.glob(f"{folder}/usr/share/man/man*/*.gz"))
    for packed in pages:
        page = work / packed.stem
        page.write_text(said("zcat", packed) + "\n", "utf-8")
        silent(f"{page.name}: mandoc", "mandoc", "-T", "lint", "-W", "warning", page)
        for width in ("80", "100"):
            silent(f"{page.name}: man, {width} columns", "bash", "-c", 'man --warnings -l "$1" 2>&1 >/dev/null', "_", page,
                   env={**os.environ, "LC_ALL": "C.UTF-8", "MANROFFSEQ": "", "MANWIDTH": width})
    equal("eight manual pages", len(pages), 8)


def test(machine):
    print("Looking into the package", flush=True)
    deb, work = machine.deb, machine.work
    succeeds("lintian has nothing to say but what is overridden", "lintian", "--allow-root", "-I", "--fail-on",
             "error,warning,info", deb)
    first = pathlib.Path("packaging/debian/changelog").read_text("utf-8").split("\n", 1)[0]
    equal("the changelog's version", re.search(r"\((.*)\)", first)[1], field(deb, "Version"))
    run("dpkg-deb", "-x", deb, work / "files")
    look_at_programs(work / "files/usr/lib/ruvo")
    look_at_parts(deb)
    make_again(deb, work)
    look_at_pages(work / "files", work)
