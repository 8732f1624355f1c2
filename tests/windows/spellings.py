"""One file under several names: short ones, other letter cases, patterns. And a recording, played back."""

import datetime
import re

from checks import check, equal
from substation import EVENT, SUBSTATION

SOON = (datetime.date.today() + datetime.timedelta(days=30)).isoformat()
FOLDER = r"C:\Long Folder Name"
NORTH, SOUTH = rf"{FOLDER}\Site North.ini", rf"{FOLDER}\Site South.ini"


def short(companion, path):
    """Its 8.3 form, which Wine makes up as Windows does."""
    names = path.split("\\")
    parents = " ".join('"' + "\\".join(names[:at]) + '\\"' for at in range(1, len(names)))
    (companion.windows.work / "short.bat").write_text(f"@dir /x {parents}\r\n", "ascii")
    companion.windows.run("short", 60, "cmd", "/c", "short.bat", cwd=companion.windows.work)
    listed = companion.windows.read("short.log")
    brief = names[:1]
    for name in names[1:]:
        found = re.search(rf"(?mi) (\S*~\S*) +{re.escape(name)}$", listed)
        brief.append(found[1] if found else name)
    check(f"short name of {path}", "~" in brief[-1], listed)
    return "\\".join(brief)


def prepare(companion):
    folder = companion.drive / "Long Folder Name"
    folder.mkdir()
    brief = short(companion, FOLDER)
    for site, root, log in (("North", rf"{brief}\Event Folder", rf"{brief}\SHARED.LOG"),
                            ("South", rf"{FOLDER.lower()}\event folder", rf"{FOLDER}\shared.log")):
        (folder / f"Site {site}.ini").write_text(f"[RUVO_GENERAL]\nEventRootDir={root}\nErrorLogPathname={log}\n"
                                                 f"[RUVO_SERIAL]\nRV001=5\n{'RV002=9' if site == 'South' else ''}\n", "ascii")
    (folder / "shared.log").write_bytes(b"")
    companion.serve(SUBSTATION + EVENT)
    return folder


def use_short_names(companion, folder):
    north, south = short(companion, NORTH), short(companion, SOUTH)
    state = companion.drive / "ProgramData/ruvo/state"
    before = len(list(state.iterdir()))
    companion.expect("a visit by a short name", ["visit", north], 0, "")
    companion.expect("its status by the long name", ["status", NORTH], 0, "1 of 1 relay reached, 1 event")
    companion.expect("another site of the same folders", ["visit", SOUTH], 1, "device address: 9")
    equal("one event root, one folder of its state", len(list(state.iterdir())) - before, 1)
    companion.expect("the digest by a short name", ["digest", north], 0, "Site North: visit of")
    _, shown = companion.run("digest", north)
    check("lines of another site with the same log", "device address" not in shown and "RV002" not in shown, shown)
    companion.expect("advice with a path in quotes", ["digest", south], 0, f"'ruvoctl test \"{SOUTH}\" RV002'")
    companion.expect("a mute by a short name", ["mute", south, "RV002", "--until", SOON, "--why", "rebuilt"], 0, "is muted")
    companion.expect("the mutes by the long name", ["mute", SOUTH, "--list"], 0, "RV002")
    companion.expect("an edit by a short name", ["add", short(companion, NORTH), "7", "--key", "RV002"], 0, "")
    equal("no file gets another name", sorted(path.name for path in folder.iterdir() if path.suffix == ".ini"),
          ["Site North.ini", "Site South.ini"])
    companion.expect("a task by a short name", ["schedule", south, "--at", "02:00", "--xml", r"C:\task.xml"], 0, "")
    task = (companion.drive / "task.xml").read_bytes().decode("utf-16")
    check("its command line", f"visit -- &quot;{SOUTH}&quot;<" in task, task)


def count_once(companion, folder):
    [day_file] = folder.glob("[Ee]vent [Ff]older/*/*.evt")
    path = rf"{FOLDER}\Event Folder\{day_file.parent.name}\{day_file.name}"
    brief = short(companion, path)
    _, shown = companion.run("soe", short(companion, NORTH), SOUTH, "--format", "csv")
    equal("the events of one folder, once", shown.count("Trip"), 2)
    archive = ["archive", "--sqlite", r"C:\spelled.sqlite"]
    companion.expect("an archive of a short name", [*archive, short(companion, NORTH)], 0, "2 records added")
    companion.expect("of the long one", [*archive, NORTH.lower()], 0, "0 records added")
    companion.expect("of the day file", [*archive, "--site", "Site North", brief], 0, "0 records added")
    companion.expect("of a folder", [*archive, brief.rpartition("\\")[0].rpartition("\\")[0]], 0, "2 records added")
    companion.expect("whose name is the site's", ["find", r"C:\spelled.sqlite", "trip", "--site", day_file.parents[1].name], 0, "Trip")
    for pattern, found in (("*.EVT", True), (f"{day_file.name[:-1]}?", True), ("*.*", True), ("*.ev", False), ("?.evt", False)):
        companion.expect(f"the day files {pattern}", ["events", path.replace(day_file.name, pattern)], 0 if found else 1,
                         "Trip" if found else rf"\{pattern}: ")
    companion.expect("several sites", ["digest", rf"{FOLDER}\site*.ini"], 0, "Site South: ")


def play(companion):
    """A recording that was made here."""
    folder = companion.drive / "recorded"
    folder.mkdir()
    number = b"123"

    def visit(name, relays, modem="B\xfcro", **variables):
        companion.windows.end_session()
        (folder / f"{name}.ini").write_bytes(
            f"[RUVO_GENERAL]\nEventRootDir=C:\\recorded\\{name}\nErrorLogPathname=C:\\recorded\\{name}.log\nUseModem=1\n"
            f"TAPI_ModemName={modem}\nTAPI_NumberToDial={number.decode()}\n[RUVO_MODEM]\n{relays}".encode("cp1252"))
        status = companion.windows.run("play", 120, companion.programs / "ruvoctl.exe", "visit", rf"C:\recorded\{name}.ini",
                                       **variables)
        return status, [path.read_bytes() for path in folder.glob(f"{name}/*/*.evt")]

    companion.serve(SUBSTATION.replace('serial = ["COM1"]', 'modems = ["Büro"]')
                    .replace("serial = 5", 'modem = { number = "123", address = 5 }') + EVENT)
    status, recorded = visit("made", "RV001=5\n", RUVO_RECORD=r"C:\recorded\a.rec")
    check("a recorded visit", status == 0 and len(recorded) == 1 and recorded[0].count(b"Trip") > 0, status)
    companion.expect("the recording", ["recording", "show", r"C:\recorded\a.rec"], 0, "GetEvent")
    companion.windows.run("register", 60, companion.programs / "p32ls-sim.exe", "/RegServer", r"C:\recorded\a.rec")
    equal("its playback", visit("played", "RV001=5\n"), (0, recorded))
    equal("nothing is said of it", (folder / "a.rec.txt").exists(), False)
    status, _ = visit("other", "RV001=6\n")
    said = (folder / "a.rec.txt").read_text("cp1252") if (folder / "a.rec.txt").exists() else ""
    check("a call that differs", status == 1 and re.fullmatch(r"C:\\recorded\\a\.rec: call \d+ differs: recorded .* 5 .*; made .* 6 .*\n", said),
          f"ended with {status}\n{said}")


def test_spellings(companion):
    folder = prepare(companion)
    use_short_names(companion, folder)
    count_once(companion, folder)
    play(companion)
