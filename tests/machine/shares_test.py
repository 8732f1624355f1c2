"""Two hosts over one share, inside a machine that serves it: shares_test.py PROGRAMS ROUNDS [SEED]

The hosts are network namespaces with a name, an address and a mount of their own. Each has a relay of its own, but the two
relays have one name, so that both runs write into one day file. In each round both are visited at the same time; in two of
three rounds one run is killed at a random moment. Then runs follow until no relay has events left. What is in the day file
must be what the two relays had pending, each event once; a kill may cost the event that was under way. On a share without
locks, which ruvoctl check must name, the figures are shown only.
"""

import collections
import json
import pathlib
import random
import subprocess
import sys
import time

from checks import check, count_checks, must
from substation import Substation

EVENTS = 60
PASSWORD = "share"
HOSTS = ("north", "south")
FIELDS = ("kind", "event_code", "time_bytes", "location", "event", "text")  # of a record: what its relay said
NFS = "mount -t nfs -o nosharecache,softerr,timeo=50,retrans=2,"
NO_LOCKS = "no file locks"
# How a host mounts the share, and whether over its own network: a host that mounts NFS 3 needs a status daemon to lock, which
# the hosts here do not run.
SHARES = {
    "nfs4": NFS + "vers=4.2 10.9.{net}.1:/srv/share {mount}",
    "nfs3": NFS + "vers=3 10.9.{net}.1:/srv/share {mount}",
    "nfs3 without a status daemon": NFS + "vers=3 10.9.{net}.1:/srv/share {mount}",
    "smb": "mount -t cifs -o vers=3.1.1,username=root,password=" + PASSWORD + ",soft //10.9.{net}.1/share {mount}",
}
FROM_THE_SERVER = {"nfs3"}
SMB_SETTINGS = """[global]
server role = standalone server
[share]
path = /srv/share
read only = no
"""


def serve():
    share = pathlib.Path("/srv/share")
    share.mkdir(exist_ok=True)
    pathlib.Path("/etc/exports").write_text("/srv/share 10.9.0.0/16(rw,sync,no_subtree_check,no_root_squash,insecure)\n", "utf-8")
    pathlib.Path("/etc/samba/smb.conf").write_text(SMB_SETTINGS, "utf-8")
    must("smbpasswd", "-s", "-a", "root", input=f"{PASSWORD}\n{PASSWORD}\n")
    must("systemctl", "restart", "rpcbind", "nfs-kernel-server", "smbd")


class Host(Substation):
    """One host with its relay: the folders outside the share are its own."""

    def __init__(self, name, net, programs):
        folder = pathlib.Path("/var/tmp") / name
        folder.mkdir()
        super().__init__(folder, programs)
        self.name, self.net = name, net
        self.mount = pathlib.Path("/mnt") / name
        self.mount.mkdir(parents=True, exist_ok=True)
        must("ip", "netns", "add", name)
        must("ip", "link", "add", f"to-{name}", "type", "veth", "peer", "name", "eth0", "netns", name)
        must("ip", "addr", "add", f"10.9.{net}.1/24", "dev", f"to-{name}")
        must("ip", "link", "set", f"to-{name}", "up")
        self.inside("ip", "addr", "add", f"10.9.{net}.2/24", "dev", "eth0")
        for device in ("eth0", "lo"):
            self.inside("ip", "link", "set", device, "up")

    def inside(self, *words):
        return must("nsenter", f"--net=/run/netns/{self.name}", *words)

    def attach(self, share):
        """Mounts in the machine's one mount namespace, over the host's network."""
        words = SHARES[share].format(net=self.net, mount=self.mount)
        if share in FROM_THE_SERVER:
            must(*words.split())
        else:
            must("nsenter", f"--net=/run/netns/{self.name}", "unshare", "--uts", "sh", "-c",
                 f"hostname {self.name}; exec {words}")

    def detach(self):
        must("umount", self.mount)

    def set_relay(self, seed, root):
        """Its events are to be stored there."""
        self.describe(f"""state = "delivered"
[link]
serial = ["COM1"]
[[relay]]
serial = 1
identity = {{ model = "MR01", serial = "000001", plant = "Yard", description = "Feeder 1" }}
cells."05.02" = {{ number = 230.5, unit = "V" }}
generate = {{ count = {EVENTS}, kinds = [0, 1], seed = {seed} }}
""")
        (self.folder / "delivered").unlink(missing_ok=True)
        self.events = root
        self.write_ini("[RUVO_SERIAL]", "RV001=1")

    def has_locks(self):
        """As ruvoctl sees it."""
        self.set_relay(1, self.mount / "ev")
        self.events.mkdir(exist_ok=True)
        return NO_LOCKS not in self.ruvoctl("check", self.folder / "site.ini")

    def delivered(self):
        account = self.folder / "delivered"
        return len(account.read_text("utf-8").splitlines()) if account.exists() else 0

    def records(self):
        """What the day files hold, how often, and what is damaged in them."""
        told = self.ruvoctl("events", "--format", "json", self.events).splitlines()
        items = [json.loads(line) for line in told if line.startswith("{")]
        damage = [item for item in items if "error" in item]
        records = (tuple(json.dumps(item[field]) for field in FIELDS) for item in items if "error" not in item)
        return collections.Counter(records), damage

    def pending_records(self, seed):
        """What a run of this host alone makes of the relay, in a folder of its own."""
        self.set_relay(seed, self.folder / "alone")
        self.start().wait()
        wanted, _ = self.records()
        must("rm", "-r", self.events)
        return wanted


class Night:
    def __init__(self, programs, seed):
        self.random = random.Random(seed)
        self.hosts = [Host(name, net, programs) for net, name in enumerate(HOSTS)]
        self.seed = seed * 1000
        self.run_time = 1.0
        self.has_locks = True

    def visit_both(self, kills):
        begun = time.monotonic()
        runs = [host.start() for host in self.hosts]
        if kills:
            victim = self.random.choice(runs)
            try:
                victim.wait(self.random.random() * self.run_time)
            except subprocess.TimeoutExpired:
                victim.kill()
        for run in runs:
            run.wait()
        self.run_time = time.monotonic() - begun if not kills else self.run_time

    def round(self, share, kills):
        self.seed += 2
        wanted = collections.Counter()
        root = f"ev{self.seed}"
        for at, host in enumerate(self.hosts):
            wanted += host.pending_records(self.seed + at)
            host.set_relay(self.seed + at, host.mount / root)
            host.clear_log()
        self.visit_both(kills)
        refused = sum("is held by another run" in line for host in self.hosts for line in host.log())
        for _ in range(4):
            for host in self.hosts:
                host.start().wait()
            if all(host.delivered() == EVENTS for host in self.hosts):
                break
        found, damage = self.hosts[0].records()
        lost, twice = wanted - found, found - wanted
        if not self.has_locks:
            return refused, lost.total(), twice.total()
        check(f"{share}, round {self.seed}: no damage", not damage, damage)
        limit = 1 if kills else 0
        said = [line for host in self.hosts for line in host.log()]
        check(f"{share}, round {self.seed}: nothing lost", lost.total() <= limit, f"{lost.total()} {said}")
        check(f"{share}, round {self.seed}: nothing twice", twice.total() == 0, f"{twice.total()} {said}")
        waits = [line for line in said if " in journal " in line]
        check(f"{share}, round {self.seed}: nothing left waiting", not waits or lost.total() <= limit, waits)
        return refused, lost.total(), twice.total()


def test():
    programs, rounds, seed = pathlib.Path(sys.argv[1]), int(sys.argv[2]), int((sys.argv[3:] or ["1"])[0])
    serve()
    night = Night(programs, seed)
    for share in SHARES:
        for host in night.hosts:
            host.attach(share)
        night.has_locks = all([host.has_locks() for host in night.hosts])
        check(f"{share}: ruvoctl check says whether it has locks", night.has_locks == ("without" not in share))
        totals = collections.Counter()
        for number in range(rounds):
            refused, lost, twice = night.round(share, kills=number % 3 > 0)
            totals.update(rounds=1, refused=refused, lost=lost, twice=twice)
        print(f"{share}: {dict(totals)}" + ("" if night.has_locks else ", not checked: no locks"), flush=True)
        for host in night.hosts:
            host.detach()


if __name__ == "__main__":
    sys.exit(count_checks(test))
