"""A Windows of a test's own, which Wine stands for, without a screen."""

import os
import subprocess

from checks import run

WINE, WINESERVER = "/usr/lib/wine/wine64", "/usr/lib/wine/wineserver"
# The calls that a test reads back: a box's icon, which no other process can see, and permissions, which are not kept.
TRACED = ("user32.MessageBoxA", "advapi32.ConvertStringSecurityDescriptorToSecurityDescriptorW",
          "advapi32.SetFileSecurityW")


class Windows:
    def __init__(self, work, patience=1):
        """Waits so many times as long as it is told to, on a slow machine."""
        self.work = work
        self.patience = patience
        self.drive = work / "prefix/drive_c"
        self.environment = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WINEARCH")}
        self.environment.update(WINEPREFIX=str(work / "prefix"), WINEDEBUG="-all", LC_ALL="C.UTF-8",
                                # No questions, no menu files, and a program that crashes just ends.
                                WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe=d;winedbg.exe=d")

    def __enter__(self):
        if not self.drive.exists():  # else a copy of a new one
            self.make()
        return self

    def make(self):
        try:
            # By itself. Otherwise the program loader starts it, waits for five minutes, too few on an emulated machine, and
            # goes on without what is missing still.
            self.set_up("wineboot", "-i", WINEBOOTSTRAPMODE="1")
            for key, value, text in (("Drivers", "Graphics", "null"), ("Debug", "RelayInclude", ";".join(TRACED))):
                self.set_up("reg", "add", rf"HKCU\Software\Wine\{key}", "/v", value, "/t", "REG_SZ", "/d", text, "/f")
        finally:
            self.end_session()  # COM hangs in the session that made the Windows

    def __exit__(self, *_):
        self.end_session()

    def set_up(self, *words, **variables):
        status = self.run("setup", 300, *words, **variables)
        if status != 0:
            raise RuntimeError(f"{' '.join(words)}: ended with {status}")

    def start(self, name, *words, stdin=subprocess.DEVNULL, cwd=None, **variables):
        """Into files, never pipes: a server started meanwhile keeps them open."""
        with open(self.work / f"{name}.log", "wb") as out, open(self.work / f"{name}.calls", "wb") as calls:
            return subprocess.Popen([WINE, *words], env={**self.environment, **variables}, stdin=stdin, stdout=out,
                                    stderr=calls, cwd=cwd)

    def run(self, name, seconds, *words, **options):
        """The status, none after too long."""
        program = self.start(name, *words, **options)
        try:
            return program.wait(seconds * self.patience)
        except subprocess.TimeoutExpired:
            program.kill()
            program.wait()
            return None

    def insist(self, what, attempt):
        """Its status. Wine itself hangs once in a long while, when COM releases an interface as a call returns."""
        status = attempt()
        if status is None:
            print(f"  {what} did not come to its end; once more in a new session", flush=True)
            self.end_session()
            status = attempt()
        return status

    def type(self, name, seconds, line, **options):
        """The status of a command line, as one types it."""
        (self.work / f"{name}.bat").write_text(f"@{line}\r\n@exit /b %ERRORLEVEL%\r\n", "ascii")
        return self.run(name, seconds, "cmd", "/c", f"{name}.bat", cwd=self.work, **options)

    def read(self, file):
        return (self.work / file).read_bytes().decode("utf-8", "replace").replace("\r", "")

    def registry(self, key):
        """Its values, by their names."""
        self.run("registry", 60, "reg", "query", key)
        rows = [line.strip().split("    ", 2) for line in self.read("registry.log").splitlines() if line.startswith("    ")]
        return {row[0]: row[2] if len(row) > 2 else "" for row in rows}

    def end_session(self):
        for option in ("-k", "-w"):  # every process of this prefix, and of no other
            run(WINESERVER, option, env=self.environment)
