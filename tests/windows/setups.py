"""The packages for Windows: what is in them, and what a set-up program does."""

import hashlib
import os
import pathlib
import re
import shutil
import time

from checks import check, equal, must, run, said, succeeds

PROGRAMS = "RUVO.exe ruvoctl.exe p32ls-sim.exe ruvo.dll oncrpc.dll HalvexCryptoKit.dll".split()
PACKED = {*PROGRAMS, "README.txt", "LICENSE.txt", "substation.toml", "include/ruvo/ruvo.h", "lib/libruvo.dll.a",
          "docs/windows.html", "docs/ruvoctl.1.html", "docs/reliability.html", "licences/libcli11-dev.txt",
          "licences/libtomlplusplus-dev.txt"}
TRIED = {"RUVO.ini", "modem.ini", "ethernet.ini"}  # in the zip alone
UNINSTALL = r"Software\Microsoft\Windows\CurrentVersion\Uninstall\ruvo"
EVENTS = r"HKLM\SYSTEM\CurrentControlSet\Services\EventLog\Application\ruvo"
PERMISSIONS = "O:BAD:PAI(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)"
FOLDER = "Program Files/ruvo"


def make(preset, **variables):
    """The zip and the set-up program, and the digests of all that was made."""
    log = must("packaging/windows/make_packages.sh", preset, env={**os.environ, **variables})
    packages = [pathlib.Path(name) for name in log.split()]
    made = [file for package in packages for file in (package, pathlib.Path(f"{package}.spdx.json"))]
    return packages, [hashlib.sha256(file.read_bytes()).hexdigest() for file in made]


def names_in(archive):
    names = said("cmake", "-E", "tar", "tf", archive).splitlines()
    return {name.split("/", 1)[1] for name in names if not name.endswith("/")}


def look_at_components(package):
    text = pathlib.Path(f"{package}.spdx.json").read_text("utf-8")
    named = set(re.findall(r'"name": "([^"]*)"', text))
    wanted = {"libcli11-dev", "libtomlplusplus-dev", "sqlite3"}
    equal(f"{package.name}: components", wanted - named, set())


def sign(work):
    """With a certificate of this test's own, which the verification is told to trust."""
    names = {"RUVO_SIGN_CERTIFICATE": str(work / "certificate.pem"), "RUVO_SIGN_KEY": str(work / "key.pem")}
    must("openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=ruvo test",
         "-addext", "extendedKeyUsage=codeSigning", "-keyout", names["RUVO_SIGN_KEY"], "-out",
         names["RUVO_SIGN_CERTIFICATE"])
    (archive, setup), _ = make("windows-x64", **names)
    must("cmake", "-E", "chdir", work, "cmake", "-E", "tar", "xf", archive)
    signed = [setup, *(work / archive.stem / name for name in PROGRAMS)]
    for file in signed:
        succeeds(f"signature of {file.name}", "osslsigncode", "verify", "-CAfile", names["RUVO_SIGN_CERTIFICATE"], file)
    changed = bytearray(setup.read_bytes())
    changed[len(changed) // 2] ^= 1
    (work / "changed.exe").write_bytes(changed)
    done = run("osslsigncode", "verify", "-CAfile", names["RUVO_SIGN_CERTIFICATE"], work / "changed.exe")
    check("signature of a changed file", done.returncode != 0, done.stdout)
    shutil.copy(setup, work / "signed-setup.exe")


def pack(work):
    """Of each preset its zip and its set-up program."""
    print("Packing", flush=True)
    sign(work)
    packages = {}
    for preset in ("windows-x86", "windows-x64"):
        packages[preset], digests = make(preset)
        archive, setup = packages[preset]
        equal(f"{preset}: the same bytes again", make(preset)[1], digests)
        names = names_in(archive)
        equal(f"{archive.name}: what is in it", (PACKED | TRIED) - names, set())
        form = re.search("file format (.*)", said("x86_64-w64-mingw32-objdump", "-f", setup))[1]
        equal(f"{setup.name}: for which Windows", form, {"windows-x86": "pei-i386", "windows-x64": "pei-x86-64"}[preset])
        for package in packages[preset]:
            look_at_components(package)
    return packages


def tree(folder):
    """Every file below the folder and what it holds."""
    return {str(file.relative_to(folder)): hashlib.sha256(file.read_bytes()).hexdigest()
            for file in folder.rglob("*") if file.is_file()}


def installs(windows, what, status, setup, options=""):
    """What it has told."""
    name = f"Z:{setup}".replace("/", "\\")
    ended = windows.type("install", 120, f'"{name}" /S {options}', WINEDEBUG="-all,+relay")
    told = windows.read("install.log")
    check(f"set-up: {what}", ended == status, f"ended with {ended}\n{told}")
    return told


def look_at_installation(windows, names):
    installed = tree(windows.drive / FOLDER)
    equal("set-up: the files", set(installed), (names - TRIED) | {"uninstall.exe"})
    folders = [str(path.relative_to(windows.drive)) for path in (windows.drive / "ProgramData/ruvo").rglob("*")]
    equal("set-up: the folder for sites and the state", folders, ["ProgramData/ruvo/state"])
    menu = windows.drive / "ProgramData/Microsoft/Windows/Start Menu/Programs/ruvo"
    equal("set-up: start menu", sorted(path.name for path in menu.iterdir()), ["ruvo command prompt.lnk", "ruvo guide.lnk"])
    guide = (menu / "ruvo guide.lnk").read_bytes()
    check("set-up: the guide of the start menu", r"ruvo\docs\windows.html".encode("utf-16-le") in guide or
          rb"ruvo\docs\windows.html" in guide, guide)
    values = windows.registry(rf"HKLM\{UNINSTALL}")
    equal("set-up: how it is removed", values["UninstallString"], r'"C:\Program Files\ruvo\uninstall.exe" /AllUsers')
    equal("set-up: messages of the event log", windows.registry(EVENTS)["EventMessageFile"],
          r"C:\Program Files\ruvo\ruvoctl.exe")


def uninstall(windows, folder, options=""):
    """In its own folder, and so awaited. The status."""
    return windows.type("remove", 120, rf'"{folder}\uninstall.exe" /S {options} _?={folder}')


def permissions(windows):
    """What was asked for, call by call."""
    calls = windows.read("install.calls")
    asked = re.findall(r'Call advapi32\.ConvertString\w*\(\w+ L"([^"]*)"', calls)
    given = re.findall(r'Call advapi32\.SetFileSecurityW\(\w+ L"([^"]*)",0000000(\d)', calls)
    return asked, given


def upgrade(windows, setup):
    """In place; libraries that are not ours stay, and so do permissions."""
    folder = windows.drive / FOLDER
    before = tree(folder)
    (folder / "README.txt").write_text("old", "ascii")
    (folder / "RUVO.exe").write_bytes(b"old")
    (folder / "oncrpc.dll").write_text("the real one", "ascii")
    (folder / "after-visit.d").mkdir()
    (folder / "after-visit.d/mail.cmd").write_text("@rem", "ascii")
    changed = tree(folder)
    # A program of the folder that runs: here the simulated server, which waits for its first client.
    server = windows.start("server", "C:/Program Files/ruvo/p32ls-sim.exe", "-Embedding")
    time.sleep(3)
    told = installs(windows, "a program in use", 3, setup, "/WAIT=0")
    check("set-up: says which", "p32ls-sim.exe is still in use" in told, told)
    equal("set-up: nothing has changed then", tree(folder), changed)
    check("set-up: the program runs on", server.poll() is None)
    installs(windows, "a wrong option", 5, setup, "/WAIT=soon")
    waiting = windows.start("waiting", setup, "/S", "/WAIT=2")
    time.sleep(5)
    check("set-up: waits", waiting.poll() is None and tree(folder) == changed)
    windows.run("kill", 60, "taskkill", "/f", "/im", "p32ls-sim.exe")
    equal("set-up: goes on when the program has ended", waiting.wait(120), 0)
    server.wait()
    foreign = {name: changed[name] for name in ("oncrpc.dll", "after-visit.d/mail.cmd")}
    equal("set-up: what an upgrade leaves", tree(folder), {**before, **foreign})
    installs(windows, "once more", 0, setup)
    equal("set-up: an upgrade leaves permissions alone", permissions(windows)[1], [])


def remove(windows):
    data = windows.drive / "ProgramData/ruvo"
    (data / "yard").mkdir()
    for name in ("yard.ini", "yard.log", "yard/a.evt", "state/journal"):
        (data / name).write_text("kept", "ascii")
    before = tree(data)
    folder = windows.drive / FOLDER
    equal("removal", uninstall(windows, r"C:\Program Files\ruvo", "/AllUsers"), 0)
    equal("removal: what stays", set(tree(folder)) - {"uninstall.exe"}, {"oncrpc.dll", "after-visit.d/mail.cmd"})
    equal("removal: sites, events and state stay", tree(data), before)
    equal("removal: keys", (windows.registry(rf"HKLM\{UNINSTALL}"), windows.registry(EVENTS)), ({}, {}))
    check("removal: start menu", not (windows.drive / "ProgramData/Microsoft/Windows/Start Menu/Programs/ruvo").exists())
    shutil.rmtree(folder)
    shutil.rmtree(data)


def install_for_one(windows, setup):
    installs(windows, "for one user", 0, setup, r"/CurrentUser /D=C:\my programs\ruvo")
    check("one user: the programs", (windows.drive / "my programs/ruvo/ruvoctl.exe").is_file())
    equal("one user: keys", (windows.registry(rf"HKCU\{UNINSTALL}")["InstallLocation"], windows.registry(EVENTS)),
          (r"C:\my programs\ruvo", {}))
    check("one user: no folder of the machine", not (windows.drive / "ProgramData/ruvo").exists())
    ended = uninstall(windows, r"C:\my programs\ruvo", "/CurrentUser")
    equal("one user: removal", (ended, windows.registry(rf"HKCU\{UNINSTALL}")), (0, {}))


def test(windows, packages, signed):
    """The signed set-up program and its certificate are in that folder."""
    print("Installing, upgrading and removing under Wine", flush=True)
    archive, setup = packages["windows-x64"]
    windows.end_session()
    shutil.rmtree(windows.drive / "ProgramData/ruvo", ignore_errors=True)
    (windows.drive / "ProgramData/ruvo").mkdir()  # somebody was there before
    installs(windows, "for the machine", 0, setup, "/ACCOUNT=visitor")
    look_at_installation(windows, names_in(archive))
    asked, given = permissions(windows)
    equal("set-up: permissions", asked, [PERMISSIONS] * 2)
    equal("set-up: owner and permissions of a folder that is there", given, [(r"C:\\ProgramData\\ruvo", "5")])
    upgrade(windows, setup)
    remove(windows)
    install_for_one(windows, setup)
    installs(windows, "signed", 0, signed / "signed-setup.exe", r"/D=C:\signed")
    succeeds("set-up: the uninstaller is signed", "osslsigncode", "verify", "-CAfile", signed / "certificate.pem",
             windows.drive / "signed/uninstall.exe")
    uninstall(windows, r"C:\signed")
