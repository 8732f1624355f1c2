"""The Windows programs, built for 32 and 64 bits.

Looks into the 32-bit files, which nothing here can run, and runs their 64-bit twins under Wine, in a Windows of their
own.
"""

import pathlib
import re
import sys
import tempfile

import documented
import setups
from checks import check, count_checks, counts, equal, said
from companion import test_companion
from rooms import count_tests, run_rooms
from substation import EVENT, SUBSTATION
from wine import Windows

X86, X64 = (pathlib.Path(f"build/windows-{bits}/bin").resolve() for bits in ("x86", "x64"))
SYSTEM = {f"{name}.dll" for name in
          "kernel32 user32 gdi32 advapi32 ole32 oleaut32 msvcrt bcrypt shell32 version".split()}
VERSION = re.search(r"(?m)^project\(ruvo VERSION ([0-9.]*)", pathlib.Path("CMakeLists.txt").read_text("utf-8"))[1]


def headers(file):
    return said("i686-w64-mingw32-objdump", "-p", X86 / file)


def section(text, start):
    """From the line that starts so to the next empty one."""
    return text.partition(f"\n{start}")[2].partition("\n\n")[0]


def exports(file):
    return sorted(re.findall(r"(?m)^.*\[ *[0-9]+\] (.*)", section(headers(file), "[Ordinal/Name Pointer] Table")))


def ordinals(file):
    return re.findall(r"\+base\[ *([0-9]+)\]", section(headers(file), "Export Address Table"))


def resources(file):
    return said("i686-w64-mingw32-windres", "-J", "coff", "-O", "rc", file)


def look_at_files():
    print("Looking into the 32-bit files", flush=True)
    for file in setups.PROGRAMS:
        form = re.search("file format (.*)", said("i686-w64-mingw32-objdump", "-f", X86 / file))[1]
        equal(f"{file} is for 32-bit Windows", form, "pei-i386")
        needed = {name.lower() for name in re.findall("DLL Name: (.*)", headers(file))}
        equal(f"{file} needs the system's libraries alone", needed - SYSTEM, set())
    for file, kind in (("RUVO.exe", "GUI"), ("p32ls-sim.exe", "GUI"), ("ruvoctl.exe", "CUI")):
        equal(f"{file}: subsystem", re.search(r"(?m)^Subsystem.*\((.*)\)", headers(file))[1], f"Windows {kind}")
    for file in ("RUVO.exe", "ruvo.dll"):
        equal(f"{file}: exports", exports(file), ["_TestConnectionExt@8", "_decrypt@8", "_encrypt@8"])
        numbers = ", *".join([*VERSION.split("."), "0"])
        check(f"{file}: version", re.search(f"FILEVERSION {numbers}", resources(X86 / file)))
    equal("HalvexCryptoKit.dll: ordinals", ordinals("HalvexCryptoKit.dll"), ["2", "9", "13"])
    equal("HalvexCryptoKit.dll: no names", exports("HalvexCryptoKit.dll"), [])
    texts = re.findall(r'(?m)^ *[0-9]*, ".*$', resources(X86 / "RUVO.exe"))  # test_system compares them, in the 64-bit twin
    check("RUVO.exe: some texts", len(texts) > 100, len(texts))
    check("RUVO.exe: manifest", b"requestedExecutionLevel" in (X86 / "RUVO.exe").read_bytes())


def last_line(text):
    return text.rstrip("\n").rsplit("\n", 1)[-1]


def take_count(name, text):
    """The last line of a test program is a count."""
    found = re.fullmatch("([0-9]+) passed, ([0-9]+) failed", last_line(text))
    if found:
        good, bad = int(found[1]), int(found[2])
        if name.endswith("_difference"):  # one that compares thousands of generated inputs is one test
            good, bad = int(bad == 0), int(bad > 0)
        counts["passed"] += good
        counts["failed"] += bad
    else:
        check(f"{name} comes to its end", False)
    if not found or bad > 0:
        print(text)
    print(f"  {name}: {last_line(text)}", flush=True)


def run_twins(windows):
    print("Running the test programs under Wine", flush=True)
    for name in ("path_difference", "ini_difference", "system", "names", "end_to_end"):
        windows.insist(name, lambda: windows.run(name, 400, X64 / f"test_{name}.exe", WINEDEBUG="-all,+relay"))
        take_count(name, windows.read(f"{name}.log"))


def run_connector(windows):
    """The COM connector against the simulated server's program."""
    print("Running the COM connector under Wine", flush=True)
    # A session for each: Wine goes on offering the class object of a killed server for as long as the session lasts.
    for tests in ("-KilledServer.*", "KilledServer.EndsTheWaitForAStartedCommand", "KilledServer.EndsTheCallInProgress"):
        windows.end_session()
        status = windows.insist(f"com {tests}", lambda: windows.run("com", 200, X64 / "test_com.exe", f"--gtest_filter={tests}"))
        if not count_tests(f"com {tests}", status, windows.read("com.log")):
            print(windows.read("com.calls"))


def visit_a_site(windows):
    """The runner: its status, the record, a further attempt, and the programs after it."""
    print("Visiting a site under Wine", flush=True)
    windows.end_session()
    # On the drive of this Windows: everybody may write the folder for temporary files, which Z: leads through.
    site, after = windows.work / "prefix/drive_c/visited", windows.work / "prefix/drive_c/visited/after"
    after.mkdir(parents=True)
    (site / "substation.toml").write_text(SUBSTATION + EVENT, "utf-8")
    (after / "first.cmd").write_text("@echo after %RUVO_STATUS% %RUVO_REACHED%/%RUVO_RELAYS%\r\n", "ascii")
    windows.run("register", 60, X64 / "p32ls-sim.exe", "/RegServer", r"C:\visited\substation.toml")
    ini = r"C:\visited\site.ini"

    def visit(what, status, relays, *options):
        (site / "site.ini").write_text("[RUVO_GENERAL]\nEventRootDir=C:/visited/events\nErrorLogPathname=C:/visited/run.log\n"
                                       f"[RUVO_SERIAL]\n{relays}", "utf-8")
        ended = windows.run("visit", 120, X64 / "ruvoctl.exe", "visit", ini, *options, RUVO_STATE_DIR=r"C:\visited\state",
                            RUVO_AFTER_VISIT_DIR=r"C:\visited\after")
        shown = windows.read("visit.log") + windows.read("visit.calls")
        check(f"visit: {what}", ended == status, f"ended with {ended}\n{shown}")
        return shown

    equal("visit: good", visit("good", 0, "RV001=5\n"), "after 0 1/1\n")
    equal("visit: the day file", len(list(site.glob("events/AB12-0001/*.evt"))), 1)
    shown = visit("a relay that does not answer", 1, "RV001=5\nRV002=6\n", "--retry", "1", "--after", "0s")
    check("visit: its lines, and what came after", shown.count("Test connection failed") == 2 and "after 1 1/2" in shown, shown)
    records = next(iter(site.glob("state/*/visits.ndjson"))).read_text("utf-8")
    equal("visit: attempts", re.findall('"attempt":([0-9]*)', records), ["1", "1", "2"])
    (after / "first.cmd").chmod(0o666)
    shown = visit("a program that others can write", 0, "RV001=5\n")
    check("visit: it is not started", "not started, because users other than administrators" in shown, shown)
    visit("check", 0, "RV001=5\n", "--check")
    visit("refused", 2, "RV001=x\n")


def look_at_icons(windows):
    calls = windows.read("end_to_end.calls")
    for what, words, icon in (("a good check", "No input errors found", "00000040"),
                              ("an error found", "BaudRate value error", "00000030"),
                              ("the registry's information", "Registry entry with destination", "00000040")):
        found = re.findall(rf"Call user32\.MessageBoxA\(.*{words}.*,(000000[0-9]*)\) ret", calls)
        equal(f"icon of {what}", set(found), {icon})


def test():
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder:
        work = pathlib.Path(folder)
        look_at_files()
        packages = setups.pack(work)
        with Windows(work) as windows:
            run_twins(windows)
            run_rooms(windows, X64)
            run_connector(windows)
            visit_a_site(windows)
            test_companion(windows, X64)
            look_at_icons(windows)
        new = work / "new"
        new.mkdir()
        with Windows(new) as windows:
            documented.test(windows, packages)
            setups.test(windows, packages, work)


if __name__ == "__main__":
    sys.exit(count_checks(test))
