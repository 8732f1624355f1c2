"""A fleet's nights on a cluster that loses its parts: fleet_test.py DEB SITES. Needs root."""

import collections
import contextlib
import json
import os
import pathlib
import re
import sqlite3
import sys
import tempfile
import time

from checks import check, count_checks, equal, must, run, said
from counted_relay import ENTRY, CountedRelay, texts
from slurm_cluster import SlurmCluster

EVENTS = 40  # of each relay
SLOW = '[[fault]]\noperation = "GetEvent"\ndelay = 800\n'
BESIDE = re.compile(r"has been visiting this site since|Only one instance")
SITE = """[RUVO_GENERAL]
EventRootDir={fleet}/events/{name}
ErrorLogPathname={fleet}/log/{name}.log
UseEthernet=1
[RUVO_ETHERNET]
RV001={entry}
[RUVO_PASSWORDS]
RV001={password}
"""
# Tells when each copy of a visit began and ended, and hands TERM on.
MARKER = """#!/bin/bash
site=$(basename "$1" .ini)
mark() {{ echo "$1 $site $SLURMD_NODENAME $(date +%s.%N) $2" >>{fleet}/marks; }}
trap 'kill -TERM "$visit" 2>/dev/null' TERM
mark start
{programs}/run-site "$1" &
visit=$!
while kill -0 "$visit" 2>/dev/null; do wait "$visit"; status=$?; done
mark end "$status"
"""


class Copy:
    """One start of a site's visit on a node. A copy that was killed has no end."""

    def __init__(self, site, node, begin):
        self.site, self.node, self.begin = site, node, begin
        self.end = self.status = None


class Fleet:
    def __init__(self, work, deb, sites):
        self.folder = work / "fleet"
        for name in ("sites", "events", "log", "out", "lock", "state", "relays"):
            (self.folder / name).mkdir(parents=True)
        must("dpkg", "-x", deb, work / "ruvo")
        self.programs = work / "ruvo/usr/lib/ruvo"
        (self.folder / "registry.ini").write_text(
            f"[CLSID\\{{9A69E99F-E86F-455D-B971-355C1139963E}}]\nInprocServer32={self.programs}/simulator/p32ls.so\n", "utf-8")
        password = must(self.programs / "ruvoctl", "password", "encrypt", input="BAY1PASS\n").strip()
        self.relays = {}
        for number in range(1, sites + 1):
            self.make_site(f"site{number:03}", password)
        self.list = self.folder / "sites.txt"
        self.list.write_text("".join(f"{self.folder}/sites/{name}.ini\n" for name in self.relays), "utf-8")
        marker = self.folder / "visit"
        marker.write_text(MARKER.format(fleet=self.folder, programs=self.programs), "utf-8")
        marker.chmod(0o755)
        job = pathlib.Path("packaging/fleet/slurm-night.sh").read_text("utf-8")
        (self.folder / "night.sh").write_text(job.replace("/usr/lib/ruvo/run-site", str(marker)), "utf-8")

    def make_site(self, name, password):
        place = self.folder / "relays" / name
        place.mkdir()
        relay = CountedRelay(place / "substation.toml", place / "account")
        relay.fill(EVENTS, faults=SLOW, top=f'trace = "{place}/trace"\n')
        self.relays[name] = relay
        ini = self.folder / f"sites/{name}.ini"
        ini.write_text(SITE.format(fleet=self.folder, name=name, entry=ENTRY, password=password), "utf-8")
        ini.with_suffix(".env").write_text(
            f"P32LS_SUBSTATION={place}/substation.toml\nRUVO_REGISTRY_MACHINE={self.folder}/registry.ini\n", "utf-8")

    def submit(self, cluster):
        cluster.said("sbatch", "--parsable", f"--array=1-{len(self.relays)}", "--open-mode=append", f"--output={self.folder}/out/%a",
                     self.folder / "night.sh", self.list)

    def copies(self):
        """Every copy of every visit, in the order of their starts."""
        found, running = [], {}
        marks = self.folder / "marks"
        for line in marks.read_text("utf-8").splitlines() if marks.exists() else []:
            what, site, node, moment, *status = line.split()
            if what == "start":
                running[site, node] = Copy(site, node, float(moment))
                found.append(running[site, node])
            elif (site, node) in running:
                copy = running.pop((site, node))
                copy.end, copy.status = float(moment), int(status[0])
        return found

    def said(self, site):
        """What all copies of the site's visit have said."""
        path = self.folder / "out" / str(list(self.relays).index(site) + 1)
        return path.read_text("latin-1") if path.exists() else ""


class Fault:
    """What happened to a node at a moment, and the visits that were under way there."""

    def __init__(self, what, copies):
        self.what, self.copies, self.moment = what, copies, time.time()

    def tell(self, copies):
        """What became of them, once the night is over."""
        again = {}
        for copy in copies:
            if copy.begin > self.moment:
                again.setdefault(copy.site, copy.begin - self.moment)
        waited = sorted(again[copy.site] for copy in self.copies if copy.site in again)
        seconds = f", after {waited[0]:.0f} to {waited[-1]:.0f} s" if waited else ""
        print(f"  {self.what}: {len(self.copies)} visits under way, {len(waited)} of them started again{seconds}", flush=True)


class Night:
    """Faults, one after the other, each while visits are under way."""

    def __init__(self, fleet, cluster):
        self.fleet, self.cluster = fleet, cluster
        self.faults = []

    def living(self, node):
        """The newest copy of each site whose visit a process of the node is."""
        marker = str(self.fleet.folder / "visit")
        sites = {pathlib.Path(words[2]).stem for words in self.cluster.command_lines(node) if words[1:2] == [marker]}
        newest = {copy.site: copy for copy in self.fleet.copies() if copy.node == node and copy.site in sites}
        return list(newest.values())

    def wait_for_visits(self, node):
        self.cluster.wait_for(f"visits on {node}", lambda: len(self.living(node)) >= 8)

    def happens(self, what, *nodes):
        self.wait_for_visits(nodes[0])
        self.faults.append(Fault(what, [copy for node in nodes for copy in self.living(node)]))

    def renew(self, node):
        self.cluster.lose(node)
        self.cluster.start_node(node)

    def wait_until_started_again(self, fault):
        """All of its visits, but for those that have ended by themselves after all."""
        def open_sites():
            copies = self.fleet.copies()
            again = {copy.site for copy in copies if copy.begin > fault.moment}
            ended = {(copy.site, copy.begin) for copy in copies if copy.end}
            return [copy for copy in fault.copies if copy.site not in again and (copy.site, copy.begin) not in ended]

        self.cluster.wait_for(f"{fault.what}: its visits are started again", lambda: not open_sites())

    def run(self):
        cluster = self.cluster
        self.fleet.submit(cluster)
        self.happens("the controller killed", "n1", "n2", "n3")
        cluster.controller.kill()
        cluster.controller.wait()
        cluster.start_controller()
        cluster.wait_for("the controller answers", lambda: cluster.run("squeue", "-h").returncode == 0)
        # While other sites wait for a place, those that are to be started again wait behind them.
        cluster.wait_for("all sites are started", lambda: {copy.site for copy in self.fleet.copies()} == set(self.fleet.relays))
        self.happens("a node lost", "n2")
        self.renew("n2")
        self.happens("a node's daemon killed", "n3")
        cluster.kill_daemon("n3")
        self.happens("a node frozen", "n1")
        cluster.freeze("n1")
        for fault in self.faults[-2:]:
            self.wait_until_started_again(fault)
        cluster.wake()
        cluster.wait_for("the visits without a daemon end by themselves", lambda: not self.living("n3"))
        self.renew("n3")
        self.wait_for_end()
        for fault in self.faults:
            fault.tell(self.fleet.copies())

    def wait_for_end(self):
        cluster = self.cluster
        cluster.wait_for("the controller answers", lambda: cluster.run("squeue", "-h").returncode == 0)
        cluster.wait_for("the end of the night", lambda: not cluster.said("squeue", "-h", "-r", "-o", "%i"), 600)


def beside_others(copies):
    """Copies that began and ended while another copy of their site was living, which is known of those that have ended."""
    return [copy for copy in copies for other in copies
            if other.site == copy.site and copy.end and other.end and other.begin < copy.begin and copy.end < other.end]


def look_at_copies(fleet):
    copies = fleet.copies()
    second = {(copy.site, copy.begin) for copy in beside_others(copies)}
    wanted = collections.Counter(site for site, _ in second)
    check("copies of running visits were started", second)
    silent = [site for site, number in wanted.items() if len(BESIDE.findall(fleet.said(site))) < number]
    equal("each of them has said beside which visit it was", silent, [])
    print(f"  {len(copies)} visits of {len(fleet.relays)} sites, {len(second)} of them beside a living one", flush=True)
    overlapping = []
    for site in fleet.relays:
        trace = (fleet.folder / f"relays/{site}/trace").read_text("utf-8")
        # Two connections at a time would both be closed after the second one's opening.
        if any(part.count("ClosePort ") > 1 for part in trace.split("OpenPort ")):
            overlapping.append(site)
    equal("no relay was visited by two at a time", overlapping, [])


def look_at_ledger(fleet):
    killed = collections.Counter(copy.site for copy in fleet.copies() if copy.end is None)
    wrong, missing = {}, 0
    for site, relay in fleet.relays.items():
        stored = texts(said(fleet.programs / "ruvoctl", "events", "--format", "json", fleet.folder / "events" / site))
        handed = relay.recordable(relay.handed_over())
        gone = [text for text in handed if text not in stored]
        missing += len(gone)
        if len(stored) != len(set(stored)) or not set(stored) <= set(handed) or len(gone) > killed[site] or len(handed) != EVENTS:
            wrong[site] = (gone, len(stored), len(set(stored)), len(handed), killed[site])
    equal("each event of each relay is stored once", wrong, {})
    print(f"  {len(fleet.relays) * EVENTS} events handed over; {sum(killed.values())} visits killed, "
          f"{missing} events under way with them", flush=True)


def look_at_the_morning(fleet):
    """All sites in one look, and all their events in one archive."""
    environment = {**os.environ, "RUVO_STATE_DIR": str(fleet.folder / "state")}
    told = json.loads(run(fleet.programs / "ruvoctl", "status", "--all", "--format", "json", fleet.folder / "sites",
                          env=environment).stdout)
    equal("status of all sites", len(told["sites"]), len(fleet.relays))
    told = json.loads(run(fleet.programs / "ruvoctl", "digest", "--all", fleet.folder / "sites", "--format", "json",
                          env=environment).stdout)
    equal("digest of all sites", len(told["sites"]), len(fleet.relays))
    archive = fleet.folder / "archive.sqlite"
    must(fleet.programs / "ruvoctl", "archive", *sorted(fleet.folder.glob("sites/*.ini")), "--sqlite", archive)
    stored = sum(len(texts(said(fleet.programs / "ruvoctl", "events", "--format", "json", fleet.folder / "events" / site)))
                 for site in fleet.relays)
    with contextlib.closing(sqlite3.connect(archive)) as database:
        equal("one archive of all sites", database.execute("SELECT count(*) FROM events").fetchone()[0], stored)


def test():
    deb, sites = pathlib.Path(sys.argv[1]).resolve(), int(sys.argv[2])
    with tempfile.TemporaryDirectory(dir="build/machine") as work:
        work = pathlib.Path(work).resolve()
        fleet = Fleet(work, deb, sites)
        cluster = SlurmCluster(work / "slurm")
        try:
            cluster.start()
            night = Night(fleet, cluster)
            night.run()
            # The next night finds nothing out of order, and brings in what journals hold.
            fleet.submit(cluster)
            night.wait_for_end()
        finally:
            cluster.close()
        look_at_copies(fleet)
        look_at_ledger(fleet)
        look_at_the_morning(fleet)


if __name__ == "__main__":
    sys.exit(count_checks(test))
