"""ruvoctl under Wine, as its users have it: names with letters of their language, a console, shares, COM's refusals."""

import datetime
import os
import pty
import re
import select
import signal
import time

from checks import check, equal
from spellings import test_spellings
from substation import EVENT, SUBSTATION

FOLDER = "Prüf Ort"
INI = rf"C:\{FOLDER}\Süd.ini"
TEXT = f"[RUVO_GENERAL]\r\nEventRootDir=C:\\{FOLDER}\\Ereignisse ß\r\nErrorLogPathname=C:\\{FOLDER}\\Störung.log\r\n"
SITE = "[RUVO_SERIAL]\r\nRV001=5\r\n"
DEVICE = "expected another name: CON, PRN"
SOON = (datetime.date.today() + datetime.timedelta(days=30)).isoformat()
CODE_PAGE = "expected only characters of this system's code page"
# What is tried, in this order; the exit status; what is seen.
USES = [
    ("a site is checked", ["check", INI], 0, "Success"),
    ("whoever can read it", ["check", INI], 0, "every user of this machine can read the passwords"),
    ("a visit", ["visit", INI], 0, ""),
    ("its status", ["status", INI], 0, "1 of 1 relay reached, 1 event"),
    ("by the name in other letters", ["status", INI.lower().replace("ü", "Ü")], 0, "1 of 1 relay reached, 1 event"),
    ("its relays", ["relays", INI], 0, "AB12-0001"),
    ("its digest", ["digest", INI], 0, "Süd: visit of"),
    ("its events", ["events", rf"C:\{FOLDER}\Ereignisse ß"], 0, "Trip"),
    ("the sequence of events", ["soe", INI], 0, "Trip"),
    ("what is left over", ["recover", INI], 0, "nothing is left"),
    ("a report with a foreign name", ["report", INI, "-o", rf"C:\{FOLDER}\Ω.html"], 0, "Ω.html: 1 event of 1 relay"),
    ("an archive with a foreign name", ["archive", INI, "--sqlite", rf"C:\{FOLDER}\Ω.sqlite"], 0, "1 record added"),
    ("the archive again", ["archive", INI, "--sqlite", rf"C:\{FOLDER}\Ω.sqlite"], 0, "0 records added"),
    ("a search", ["find", rf"C:\{FOLDER}\Ω.sqlite", "trip", "--site", "Süd"], 0, "Trip"),
    ("a mute", ["mute", INI, "RV001", "--until", SOON, "--why", "Umbau Süd"], 0, "is muted until"),
    ("the mutes", ["mute", INI, "--list"], 0, "Umbau Süd"),
    ("a new file", ["new", rf"C:\{FOLDER}\Köln.ini", "--link", "serial", "--relay", "5"], 0, "created with 1 relays"),
    ("the new file", ["check", rf"C:\{FOLDER}\Köln.ini"], 0, "Success"),
    ("a file with a foreign name", ["new", rf"C:\{FOLDER}\Ω.ini", "--link", "serial", "--relay", "5"], 1, CODE_PAGE),
    ("events in a foreign place", ["new", r"C:\x.ini", "--link", "serial", "--relay", "5", "--events", r"C:\Ω"], 1, CODE_PAGE),
    ("a visit by a foreign name", ["visit", rf"C:\{FOLDER}\Ψ.ini"], 2, CODE_PAGE),
    ("a check by a foreign name", ["check", rf"C:\{FOLDER}\Ψ.ini"], 4, CODE_PAGE),
    ("a site that is a device", ["new", r"C:\com1.ini", "--link", "serial", "--relay", "5"], 1, DEVICE),
    ("a visit of a device", ["visit", r"C:\nul.ini"], 2, DEVICE),
    ("a new log on a device", ["new", r"C:\x.ini", "--link", "serial", "--relay", "5", "--log", r"C:\NUL.log"], 1, DEVICE),
    ("events on a device", ["check", rf"C:\{FOLDER}\device.ini"], 27, DEVICE),
    ("a log on a device", ["check", rf"C:\{FOLDER}\devicelog.ini"], 6, rf"C:\{FOLDER}\devicelog.ini: ErrorLogPathname: " + DEVICE),
    ("a root in long form", ["check", rf"C:\{FOLDER}\long.ini"], 27, "expected a folder without"),
    ("a day file marked read-only", ["check", INI], 0, "has the attribute \"read-only\""),
    ("all sites", ["status", "--all"], 3, "UNKNOWN  Öst"),
    ("a visit by a site's name", ["visit", "Öst"], 0, ""),
    ("all sites after it", ["status", "--all"], 0, "Öst"),
]


class Companion:
    def __init__(self, windows, programs):
        self.windows, self.programs = windows, programs
        self.drive = windows.work / "prefix/drive_c"
        self.folder = self.drive / FOLDER

    def run(self, *words, name="companion"):
        for _ in range(3):
            if words[0] in ("check", "visit"):
                self.windows.end_session()  # Wine goes on offering a server that is about to end
            status = self.windows.run(name, 120, self.programs / "ruvoctl.exe", *words)
            shown = self.windows.read(f"{name}.log") + self.windows.read(f"{name}.calls")
            if "P32LS failed to open" not in shown:
                break
        return status, shown

    def expect(self, what, words, status, text):
        got, shown = self.run(*words)
        return check(f"ruvoctl: {what}", got == status and text in shown, f"ended with {got}\n{shown}")

    def serve(self, substation):
        self.windows.end_session()  # the server that is running has the events of the file before
        (self.drive / "served.toml").write_text(substation, "utf-8")
        self.windows.run("register", 60, self.programs / "p32ls-sim.exe", "/RegServer", r"C:\served.toml")

    def write(self, name, text):
        (self.folder / name).write_bytes(text.encode("cp1252"))

    def converse(self, words, answers, seconds):
        """At a console: what it shows, without the sequences that move its cursor."""
        child, terminal = pty.fork()
        if child == 0:
            os.execve("/usr/lib/wine/wine64", ["wine64", str(self.programs / "ruvoctl.exe"), *words], self.windows.environment)
        shown, end = "", time.monotonic() + seconds
        try:
            while time.monotonic() < end:
                if select.select([terminal], [], [], 0.5)[0]:
                    shown += os.read(terminal, 65536).decode("utf-8", "replace")
                elif answers and answers[0][0] in shown.rpartition("\n")[2]:  # and it waits
                    os.write(terminal, answers.pop(0)[1].encode())
        except OSError:  # the other side is closed
            pass
        os.kill(child, signal.SIGKILL)
        os.waitpid(child, 0)
        os.close(terminal)
        return re.sub(r"\x1b\[[?0-9;]*[A-Za-z]", "", shown)


def prepare(companion):
    companion.folder.mkdir()
    companion.write("Süd.ini", TEXT + SITE + "[RUVO_PASSWORDS]\r\nRV001=2820906369380098916811\r\n")
    companion.write("device.ini", "[RUVO_GENERAL]\r\nEventRootDir=C:\\ev\\NUL.d\r\n" + SITE)
    companion.write("devicelog.ini", TEXT.replace("Störung.log", "COM3.log") + SITE)
    companion.write("long.ini", "[RUVO_GENERAL]\r\nEventRootDir=\\\\?\\C:\\ev\r\n" + SITE)
    (companion.folder / "Ψ.ini").write_bytes(b"[RUVO_GENERAL]\r\n")
    sites = companion.drive / "ProgramData/ruvo"
    sites.mkdir(parents=True)
    (sites / "state").mkdir()
    places = "EventRootDir=C:\\ProgramData\\ruvo\\Öst\r\nErrorLogPathname=C:\\ProgramData\\ruvo\\Öst.log\r\n"
    (sites / "Öst.ini").write_bytes(("[RUVO_GENERAL]\r\n" + places + SITE).encode("cp1252"))
    companion.serve(SUBSTATION + EVENT)


def use_it(companion):
    for what, words, status, text in USES:
        if "read-only" in text:
            next(companion.folder.glob("Ereignisse ß/*/*.evt")).chmod(0o444)
        companion.expect(what, words, status, text)
    # Who made it, administrators and the system alone: what Wine keeps of that.
    equal("ruvoctl: others cannot read a new file", (companion.folder / "Köln.ini").stat().st_mode & 0o007, 0)
    equal("the machine's state", len(list(companion.drive.glob("ProgramData/ruvo/state/*/visits.ndjson"))), 2)
    equal("no other state", list(companion.drive.glob("users/*/AppData/Local/ruvo/*Ereignisse*")), [])


def use_a_console(companion):
    shown = companion.converse(["password", "encrypt"], [("Password:", "AbC123\r"), ("again:", "AbC123\r")], 60)
    check("a password at a console", "AbC123" not in shown and re.search("[0-9A-F]{22}", shown), shown)
    shown = companion.converse(["new", rf"C:\{FOLDER}\Büro.ini"], [
        ("Link", "modem\r"), ("modem:", "Büro Öst\r"), ("number:", "\r"), ("RV001:", "7\r"), ("none):", "\r"), ("again:", "\r"),
        ("RV002:", "\r")], 60)
    check("a dialogue at a console", "created with 1 relays" in shown and "Büro Öst" in shown, shown)
    check("an answer with umlauts", "TAPI_ModemName=Büro Öst".encode("cp1252") in (companion.folder / "Büro.ini").read_bytes())
    companion.serve(SUBSTATION + EVENT + '[[fault]]\noperation = "GetEvent"\ndelay = 3000\n')
    shown = companion.converse(["visit", INI], [], 90)
    check("progress of a visit at a console", "relay 1 of 1" in shown, shown)


def lose_a_share(companion):
    """In mid-visit. Its events wait in the journal, the visit says so, and the next one stores them."""
    share = companion.windows.work / "share"
    (companion.windows.work / "prefix/dosdevices/unc/server").mkdir(parents=True)
    (companion.windows.work / "prefix/dosdevices/unc/server/share").symlink_to(share)
    (share / "ev").mkdir(parents=True)
    root = "[RUVO_GENERAL]\r\nEventRootDir=\\\\server\\share\\ev\r\n"
    companion.write("share.ini", root + f"ErrorLogPathname=C:\\{FOLDER}\\share.log\r\n" + SITE)
    ini = rf"C:\{FOLDER}\share.ini"
    companion.serve(SUBSTATION + EVENT * 3 + '[[fault]]\noperation = "GetEvent"\nfrom = 3\ndelay = 6000\n')
    state = companion.drive / "ProgramData/ruvo/state"
    child = os.fork()
    if child == 0:
        status, shown = companion.run("visit", ini, name="share")
        os._exit(status if status is not None else 99)
    for _ in range(400):
        if any(b"Trip" in journal.read_bytes() for journal in state.glob("ev-*/*.journal")):
            break
        time.sleep(0.1)
    share.rename(share.with_name("gone"))
    status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
    shown = companion.windows.read("share.log")
    check("a share that vanishes in mid-visit", status in (1, 2) and shown != "", f"ended with {status}\n{shown}")
    _, left = companion.run("recover", ini)
    check("its events are kept", "waiting: 3 events of RV001" in left, left)
    share.with_name("gone").rename(share)
    companion.serve(SUBSTATION)
    shown = [companion.run("visit", ini)[1] for _ in range(2)]  # the first may find a server that is about to end
    _, events = companion.run("events", r"\\server\share\ev", "--format", "csv")
    check("and stored when it is back", events.count(",Trip,Trip,") == 3, f"{shown}\n{events}")


CLASS = r"HKEY_CLASSES_ROOT\CLSID\{9A69E99F-E86F-455D-B971-355C1139963E}"
OTHER = CLASS.replace(r"\CLSID", r"\Wow6432Node\CLSID")


def look_at_com(companion):
    """Why the server does not start."""
    def failure(what, *words):
        status, shown = companion.run("check", INI)
        check(f"COM: {what}", status == 7 and all(word in shown for word in words), f"ended with {status}\n{shown}")

    companion.windows.end_session()
    companion.windows.run("register", 60, companion.programs / "p32ls-sim.exe", "/UnregServer")
    failure("not registered", "80040154", "run the server's program once with /RegServer", "is registered for none")
    key = ("/ve", "/t", "REG_SZ", "/f", "/d")
    companion.windows.set_up("reg", "add", OTHER + r"\InprocServer32", *key, r"C:\p32ls.dll")
    (companion.drive / "p32ls.dll").write_bytes(b"")
    failure("a library of other bits", "80040154", "registered for 32-bit programs alone; use the ruvo of that kind",
            "library C:\\p32ls.dll)")
    (companion.drive / "p32ls.dll").unlink()
    companion.windows.set_up("reg", "add", CLASS + r"\LocalServer32", *key, r"C:\gone\p32ls.exe")
    failure("a program that has gone", "not where it is registered", r"for 64-bit programs (program C:\gone\p32ls.exe, which does not exist)")
    for key in (CLASS, OTHER):
        companion.windows.set_up("reg", "delete", key, "/f")


def test_companion(windows, programs):
    print("Using ruvoctl under Wine", flush=True)
    companion = Companion(windows, programs)
    prepare(companion)
    use_it(companion)
    use_a_console(companion)
    lose_a_share(companion)
    test_spellings(companion)
    look_at_com(companion)
