"""A fleet's nights on a cluster that loses its parts: fleet_test.py DEB SITES. Needs root."""

import collections
import pathlib
import re
import sys
import tempfile
import time

from checks import check, count_checks, equal, must, said
from control_groups import MeasuredGroup
from counted_relay import ENTRY, CountedRelay, texts
from fleet_morning import look_at_the_morning
from slurm_cluster import NODES, SlurmCluster

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
site=${{1##*/}} site=${{site%.ini}}
mark() {{ echo "$1 $site $SLURMD_NODENAME $EPOCHREALTIME $2" >>{fleet}/marks; }} # without a program that could be killed alone
trap 'kill -TERM "$visit" 2>/dev/null' TERM
mark start
(echo 0 >{joined}; exec {programs}/run-site "$1") &
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
    def __init__(self, work, deb, sites, group):
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
        marker.write_text(MARKER.format(fleet=self.folder, programs=self.programs, joined=group.joined), "utf-8")
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

    def __init__(self, what, copies, handed_over):
        self.what, self.copies, self.moment = what, copies, time.time()
        self.handed_over = handed_over  # events, of each of these sites

    def tell(self, copies, lost):
        """What became of them, once the night is over. Takes its own out of `lost`: the numbers of each site's events that are nowhere."""
        again = {}
        for copy in copies:
            if copy.begin > self.moment:
                again.setdefault(copy.site, copy.begin - self.moment)
        waited = sorted(again[copy.site] for copy in self.copies if copy.site in again)
        seconds = f", after {waited[0]:.0f} to {waited[-1]:.0f} s" if waited else ""
        ends = {(copy.site, copy.begin): copy.end for copy in copies}
        killed = [copy.site for copy in self.copies if ends[copy.site, copy.begin] is None]
        gone = 0
        for site in killed:
            gone += sum(number >= self.handed_over[site] for number in lost[site])
            lost[site] = [number for number in lost[site] if number < self.handed_over[site]]
        return (f"  {self.what}: {len(self.copies)} visits under way, {len(killed)} of them killed, {len(waited)} started again{seconds}; "
                f"{gone} events lost")


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

    def busy_node(self, *others):
        """The one of most visits, which the scheduler decides on, but none of the others."""
        nodes = [node for node in NODES if node not in others]
        self.cluster.wait_for("visits on a node", lambda: max(len(self.living(node)) for node in nodes) >= 8)
        return max(nodes, key=lambda node: len(self.living(node)))

    def happens(self, what, *nodes):
        copies = [copy for node in nodes for copy in self.living(node)]
        self.faults.append(Fault(what, copies, {copy.site: self.fleet.relays[copy.site].handed_over() for copy in copies}))

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

    def are_all_started(self):
        nodes, tasks = self.cluster.set_right()
        if nodes or tasks:
            print(f"  {nodes} nodes drained and {tasks} tasks held by the controller: resumed and released", flush=True)
        return {copy.site for copy in self.fleet.copies()} == set(self.fleet.relays)

    def run(self):
        cluster = self.cluster
        self.fleet.submit(cluster)
        self.busy_node()
        self.happens("the controller killed", *NODES)
        cluster.controller.kill()
        cluster.controller.wait()
        cluster.start_controller()
        cluster.wait_for("the controller answers", lambda: cluster.run("squeue", "-h").returncode == 0)
        # While other sites wait for a place, those that are to be started again wait behind them.
        cluster.wait_for("all sites are started", self.are_all_started)
        lost = self.busy_node()
        self.happens("a node lost", lost)
        self.renew(lost)
        alone = self.busy_node(lost)
        self.happens("a node's daemon killed", alone)
        cluster.kill_daemon(alone)
        frozen = self.busy_node(alone)
        self.happens("a node frozen", frozen)
        cluster.freeze(frozen)
        for fault in self.faults[-2:]:
            self.wait_until_started_again(fault)
        cluster.wake()
        cluster.wait_for("the visits without a daemon end by themselves", lambda: not self.living(alone))
        self.renew(alone)
        self.wait_for_end()

    def wait_for_end(self):
        cluster = self.cluster
        cluster.wait_for("the controller answers", lambda: cluster.run("squeue", "-h").returncode == 0)
        cluster.wait_for("the end of the night", lambda: not cluster.said("squeue", "-h", "-r", "-o", "%i"))


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
    """The texts of each site's events that are stored, and the numbers of those that are nowhere."""
    killed = collections.Counter(copy.site for copy in fleet.copies() if copy.end is None)
    wrong, kept, lost = {}, {}, {}
    for site, relay in fleet.relays.items():
        stored = texts(said(fleet.programs / "ruvoctl", "events", "--format", "json", fleet.folder / "events" / site))
        handed = relay.recordable(relay.handed_over())
        kept[site] = [text for text in handed if text in stored]
        lost[site] = [number for number, text in enumerate(handed, 1) if text not in stored]
        if sorted(stored) != sorted(kept[site]) or len(lost[site]) > killed[site] or len(handed) != EVENTS:
            wrong[site] = (lost[site], len(stored), len(set(stored)), len(handed), killed[site])
    equal("each event of each relay is stored once", wrong, {})
    print(f"  {len(fleet.relays) * EVENTS} events handed over; {sum(killed.values())} visits killed, "
          f"{sum(map(len, lost.values()))} events under way with them", flush=True)
    return kept, lost


class Cost:
    """What has been spent since the last look: seconds, and processor time of all visits."""

    def __init__(self, group):
        self.group, self.begin, self.spent = group, time.monotonic(), (0, 0)

    def tell(self, what):
        user, system = self.group.seconds()
        seconds = time.monotonic() - self.begin
        print(f"  {what}: {seconds:.0f} s; processor time of all visits {user - self.spent[0]:.1f} s user, "
              f"{system - self.spent[1]:.1f} s system", flush=True)
        self.begin, self.spent = time.monotonic(), (user, system)


def have_nights(fleet, work, group):
    """The faults of the first night; the next one finds nothing out of order, and brings in what journals hold."""
    cluster = SlurmCluster(work / "slurm")
    try:
        cluster.start()
        night = Night(fleet, cluster)
        cost = Cost(group)
        night.run()
        cost.tell("the night")
        fleet.submit(cluster)
        night.wait_for_end()
        cost.tell("the next night")
        return night.faults
    finally:
        cluster.close()


def test():
    deb, sites = pathlib.Path(sys.argv[1]).resolve(), int(sys.argv[2])
    with tempfile.TemporaryDirectory(dir="build/machine") as work, MeasuredGroup("ruvo_fleet") as group:
        work = pathlib.Path(work).resolve()
        fleet = Fleet(work, deb, sites, group)
        faults = have_nights(fleet, work, group)
        look_at_copies(fleet)
        kept, lost = look_at_ledger(fleet)
        told = [fault.tell(fleet.copies(), lost) for fault in reversed(faults)]
        print(*reversed(told), sep="\n", flush=True)
        look_at_the_morning(fleet, kept)


if __name__ == "__main__":
    sys.exit(count_checks(test))
