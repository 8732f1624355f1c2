"""Loads the rows of ruvoctl archive into a real PostgreSQL server with the very commands of docs/archive.md.

    database_test.py BIN      the folder of the programs
"""

import collections
import json
import pathlib
import re
import shutil
import sys
import tempfile

from checks import check, count_checks, equal, must, run
from database_server import DatabaseServer, take_commands

ROOT = pathlib.Path(__file__).resolve().parents[2]
COLUMNS = ("relay, day_file, byte_offset, kind, unique_id, event_code, location, event, text, value, plant, description, "
           "model")


class Site:
    """A database server, and day files of the simulated substation."""

    def __init__(self, work):
        self.work = work
        self.events = work / "events"
        self.server = DatabaseServer(work, sys.argv[1])
        self.environment = self.server.environment
        self.environment.update(
            P32LS_SUBSTATION=str(ROOT / "examples/substation/substation.toml"), RUVO_LOCK_DIR=str(work), RUVO_STATE_DIR=str(work / "state"),
            RUVO_REGISTRY_USER=str(work / "none"), RUVO_REGISTRY_MACHINE=str(work / "none"))
        self.ask = self.server.ask

    def must(self, *command, **options):
        return must(*command, env=self.environment, cwd=self.work, **options)

    def make_events(self):
        for link in ("serial", "ethernet"):
            ini = (ROOT / f"examples/substation/{link}.ini").read_text("utf-8")
            ini = re.sub(r"(?m)^EventRootDir=.*", f"EventRootDir={self.events}", ini)
            ini = re.sub(r"(?m)^ErrorLogPathname=.*", f"ErrorLogPathname={self.work}/log", ini)
            (self.work / f"{link}.ini").write_text(ini, "utf-8")
            self.must("ruvo", self.work / f"{link}.ini")

    def load(self):
        self.must("bash", "load.sh", self.events)

    def number(self, condition="true"):
        return int(self.ask(f"SELECT count(*) FROM ruvo_records WHERE {condition}"))

    def json_lines(self, *options):
        return self.must("ruvoctl", "events", "--format", "json", *options, self.events).splitlines()


def hostile_record(text):
    """A sound simple record with that event text."""
    return (b"\0" + bytes([len(text) + 27]) + b"\0\0\0\0\0\0\x3c\x07\0\0\x1e\x06\x10\x0b\x1a\0\0\x01\x06" +
            b"\0\0\0\x02\x01" + bytes([len(text)]) + text + b"\xff\0\0")


def test_loading(site):
    lines = site.json_lines()
    check("the substation gave events", len(lines) > 100, len(lines))
    site.load()
    equal("every record is loaded", site.number(), len(lines))
    site.load()
    equal("loading again adds nothing", site.number(), len(lines))
    equal("columns are what ruvoctl shows", site.number("event = 'Relay outputs'"),
          sum('"event_text":"Relay outputs"' in line for line in lines))
    equal("the bytes are those of the day files", site.number("get_byte(bytes, 0) = 0 AND length(bytes) > 30"), len(lines))
    equal("cells are JSON that can be asked", site.number("""cells @> '[{"template": "Event Value "}]'"""),
          sum('"template":"Event Value "' in line for line in lines))
    found = site.must("psql", "-qAtX", "-v", "ON_ERROR_STOP=1", "-f", site.work / "find.sql").splitlines()
    equal("the question of the document", len(found),
          sum(bool(re.search(r'"(event|text)":"[^"]*\b[Tt]rip\b', line)) for line in site.json_lines("--match", "trip")))


def test_earlier_version(site):
    """Rows that were loaded before there were sites."""
    before = site.number()
    site.ask("DROP INDEX ruvo_records_place; ALTER TABLE ruvo_records DROP COLUMN site; CREATE UNIQUE INDEX "
             "ruvo_records_identity ON ruvo_records (relay, day_file, byte_offset, sha256(bytes))")
    shutil.rmtree(site.work / "state/marks")
    site.load()
    equal("rows of no site are not loaded again", site.number(), before)
    equal("they get theirs", site.number("site = 'events'"), before)


def test_failed_load(site):
    """What could not be loaded is loaded by the next run."""
    before = site.number()
    with open(sorted(site.events.glob("*/CB05*.evt"))[0], "ab") as file:
        file.write(hostile_record(b"late"))
    site.ask("ALTER TABLE ruvo_records ADD CONSTRAINT none CHECK (event <> 'late')")
    failed = run("bash", "load.sh", site.events, env=site.environment, cwd=site.work)
    check("a load fails", failed.returncode != 0, failed.stdout)
    equal("and adds nothing", site.number(), before)
    site.ask("ALTER TABLE ruvo_records DROP CONSTRAINT none")
    site.load()
    equal("the next one does", site.number("event = 'late'"), 1)
    check("and clears up", not (site.work / "new.ndjson").exists())


def test_hostile_texts(site):
    before = site.number()
    with open(sorted(site.events.glob("*/CB05*.evt"))[0], "ab") as file:
        for text in (rb"""a\0b\\"\n'); DROP TABLE ruvo_records; --""", b"n\0ul\x01\x02\x1b[2J\xe9\t,\x5c.", b"twin", b"twin"):
            file.write(hostile_record(text))
    equal("the hostile records are sound", sum('"kind"' in line for line in site.json_lines()), before + 4)
    site.load()
    equal("appended records are added, twins both", site.number(), before + 4)
    equal("a hostile text is a text", site.number("event LIKE '%DROP TABLE%'"), 1)
    equal("the twins", site.number("event = 'twin'"), 2)


def test_both_archives(site):
    site.must("ruvoctl", "archive", site.events, "--sqlite", "site.sqlite")
    site.must("ruvoctl", "archive", site.events, "--ndjson", "all.ndjson")
    with open(site.work / "all.ndjson", encoding="utf-8") as lines:
        rows = [json.loads(line) for line in lines]
    counted = collections.Counter(row["relay"] for row in rows if (row["time"] or "") >= "2026-11-01" and
                                  re.search(r"(?i)\btrip\b", " ".join(row[name] for name in ("event", "text", "value", "plant"))))
    told = [line.split("|") for line in site.must("sqlite3", "site.sqlite", ".read trips.sql").splitlines()]
    equal("the question to an SQLite archive", told and {relay: int(count) for relay, count in told}, dict(counted))
    equal("its order", [int(count) for _, count in told], sorted(counted.values(), reverse=True))
    equal("both archives hold the same",
          site.ask(f'SELECT {COLUMNS} FROM ruvo_records ORDER BY day_file COLLATE "C", byte_offset'),
          site.must("sqlite3", "-separator", "|", "site.sqlite",
                    f"SELECT {COLUMNS} FROM events ORDER BY day_file, byte_offset").rstrip("\n"))


def test():
    with tempfile.TemporaryDirectory(prefix="ruvo-database-", dir="/tmp") as work:  # a short path: a socket's is limited
        site = Site(pathlib.Path(work))
        try:
            site.server.start()
            take_commands(site.work)
            site.make_events()
            test_loading(site)
            test_earlier_version(site)
            test_hostile_texts(site)
            test_failed_load(site)
            test_both_archives(site)
        finally:
            site.server.stop()


if __name__ == "__main__":
    sys.exit(count_checks(test))
