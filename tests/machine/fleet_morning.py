"""The morning after: all sites in one look, and all their events in one database server, as docs/fleet.md has the commands."""

import collections
import json
import pathlib
import tempfile
import time

from checks import check, equal, must, run
from database_server import DatabaseServer, take_commands

WORST_FIRST = ("critical", "unknown", "warning", "good")  # which of several states a fleet is in
STATUSES = {"good": 0, "warning": 1, "critical": 2, "unknown": 3}


class Morning:
    def __init__(self, fleet, work):
        """`work`: a folder with a short path, for the server."""
        self.fleet, self.work = fleet, work
        self.server = DatabaseServer(work / "server", fleet.programs)
        (work / "server").mkdir()
        take_commands(work)
        take_commands(work, pathlib.Path("docs/fleet.md"))
        self.commands = (work / "morning.sh").read_text("utf-8").replace("/srv/fleet", str(fleet.folder)).splitlines()

    def do(self, beginning, *options):
        """The command of the page that begins so, after those that only set something; further options follow it."""
        [command] = [line for line in self.commands if line.startswith(beginning)]
        settings = [line for line in self.commands if line.startswith("export ")]
        script = "\n".join([*settings, f'{command} "$@"'])
        return run("bash", "-euc", script, "morning", *options, env=self.server.environment, cwd=self.work)

    def look_at_sites(self, what, names, status_of_digest):
        begin = time.monotonic()
        done = self.do("ruvoctl status --all", "--format", "json")
        seconds = time.monotonic() - begin
        told = json.loads(done.stdout)
        states = {site["site"]: site["state"] for site in told["sites"]}
        print(f"  {what}: {len(states)} sites in {seconds:.1f} s: {dict(collections.Counter(states.values()))}", flush=True)
        equal(f"{what}: status has each site", sorted(states), sorted(names))
        worst = min(states.values(), key=WORST_FIRST.index)
        equal(f"{what}: status ends with the worst site's", (done.returncode, told["state"]), (STATUSES[worst], worst))
        done = self.do("ruvoctl digest --all", "--format", "json")
        told = json.loads(done.stdout)
        equal(f"{what}: digest has each site", sorted(site["site"] for site in told["sites"]), sorted(names))
        equal(f"{what}: how digest ends", done.returncode, status_of_digest)
        print(f"  {what}: {told['headline']}", flush=True)
        return states

    def look_at_broken_site(self, names):
        """A site that cannot be read must not go unnoticed among two hundred."""
        broken = self.fleet.folder / "sites/broken.ini"
        broken.symlink_to("nowhere.ini")
        try:
            states = self.look_at_sites("with a broken site", [*names, "broken"], 1)
            equal("a broken site is unknown", states.get("broken"), "unknown")
        finally:
            broken.unlink()

    def load(self, what):
        done = self.do("bash load.sh")
        check(f"{what}: the page's commands", done.returncode == 0, done.stdout)
        rows = self.server.ask("SELECT site, event FROM ruvo_records").splitlines()
        return collections.Counter(tuple(row.split("|")) for row in rows)

    def look_at_archive(self, kept):
        """`kept`: the texts of each site's events that are not lost, by the relays' own account."""
        wanted = collections.Counter((site, text) for site, found in kept.items() for text in found)
        begin = time.monotonic()
        rows = self.load("one archive of all sites")
        print(f"  {rows.total()} rows of {len(kept)} sites loaded in {time.monotonic() - begin:.1f} s", flush=True)
        equal("one archive of all sites: what differs from the relays' account", (rows - wanted, wanted - rows),
              (collections.Counter(), collections.Counter()))
        equal("loaded again", self.load("loaded again"), wanted)
        must("rm", "-r", self.fleet.folder / "state/marks")
        equal("loaded again without marks", self.load("loaded again without marks"), wanted)


def look_at_the_morning(fleet, kept):
    with tempfile.TemporaryDirectory(prefix="ruvo-fleet-", dir="/tmp") as work:
        pathlib.Path(work).chmod(0o755)  # the server's user has to reach its folder
        morning = Morning(fleet, pathlib.Path(work))
        morning.look_at_sites("in the morning", list(kept), 0)
        morning.look_at_broken_site(list(kept))
        try:
            morning.server.start()
            morning.look_at_archive(kept)
        finally:
            morning.server.stop()
