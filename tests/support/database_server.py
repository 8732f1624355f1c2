"""A PostgreSQL server of a test's own: in a folder of the test, on a Unix socket there, and gone when it is stopped."""

import glob
import os
import pathlib
import re
import shutil

from checks import must, run

PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs/archive.md"


def take_commands(folder, page=PAGE):
    """Writes the blocks of a page that carry a file's name as these files."""
    for name, block in re.findall(r"^<!-- file: ([a-z.]+) -->\n+```[a-z]*\n(.*?)^```", page.read_text("utf-8"), re.M | re.S):
        (folder / name).write_text(block, "utf-8")


class DatabaseServer:
    def __init__(self, work, programs):
        """`work` is a new folder with a short path, because that of a socket is limited; `programs` those of ruvo."""
        self.work = work
        self.environment = {name: value for name, value in os.environ.items()
                            if name not in ("PGSERVICE", "PGHOSTADDR", "PGPASSWORD", "PGOPTIONS")}
        # Debian keeps the server out of the path.
        folders = [str(programs), *glob.glob("/usr/lib/postgresql/*/bin"), os.environ["PATH"]]
        self.environment.update(PATH=":".join(folders), PGHOST=str(work / "socket"), PGPORT="5432", PGUSER="postgres",
                                PGDATABASE="postgres")
        # The server refuses to run as root.
        self.owner = ("setpriv", "--reuid", "postgres", "--regid", "postgres", "--init-groups") if os.geteuid() == 0 else ()

    def as_owner(self, *command, **options):
        return run(*self.owner, *command, env=self.environment, cwd="/", **options)

    def start(self):
        (self.work / "socket").mkdir()
        if self.owner:
            shutil.chown(self.work, "postgres")
            shutil.chown(self.work / "socket", "postgres")
        data = self.work / "data"
        made = self.as_owner("initdb", "-D", data, "-U", "postgres", "-A", "trust", "-E", "UTF8", "--no-locale", "--no-sync")
        options = f"-c listen_addresses='' -c unix_socket_directories='{self.work}/socket' -c fsync=off"
        # Its output stays open in the server, and so goes into a file.
        with open(self.work / "start.log", "w", encoding="utf-8") as log:
            started = self.as_owner("pg_ctl", "-D", data, "-l", data / "server.log", "-w", "-t", "60", "-o", options, "start", stdout=log)
        if made.returncode != 0 or started.returncode != 0:
            raise RuntimeError(made.stdout + (self.work / "start.log").read_text("utf-8"))

    def stop(self):
        self.as_owner("pg_ctl", "-D", self.work / "data", "-m", "immediate", "-w", "stop")

    def ask(self, query):
        return must("psql", "-v", "ON_ERROR_STOP=1", "-qAtX", "-c", query, env=self.environment).rstrip("\n")
