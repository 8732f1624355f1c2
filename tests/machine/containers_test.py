"""The container's recipe and the fleet's manifest in a container engine: containers_test.py IMAGE DEB. Needs root.

The engine cannot run the manifest itself: it passes over jobs by schedule. So its pod, claim and mounts are read here, and one
container is run with just these.
"""

import os
import pathlib
import shutil
import sys
import tempfile
import time

import yaml
from checks import check, count_checks, ends_with, equal, must, run, said
from control_groups import removed_afterwards
from counted_relay import ENTRY, PASSWORD, REGISTRY, SLOW, CountedRelay, CountedSite, texts

RECIPE = "packaging/container/Containerfile"
MANIFEST = pathlib.Path("packaging/fleet/site.yaml")
MANY = 400  # events of a visit that something happens to
PATIENCE = 120  # seconds after which something counts as not happening


class Engine:
    """The engine's images and containers are in a folder of the test's own."""

    def __init__(self, work):
        self.places = ["--root", f"{work}/images", "--runroot", f"{work}/run", "--storage-driver", "overlay"]

    def command(self, *words):
        return ["podman", *self.places, "--cgroup-manager", "cgroupfs", "--log-level", "error", *map(str, words)]

    def run(self, *words):
        """The engine's own default limits may be above those of this machine."""
        return self.command("run", "--ulimit=nofile=1024:1024", "--ulimit=nproc=1024:1024", *words)

    def build(self, base, folder):
        must(*self.command("import", "--quiet", base, "localhost/base:test"))
        must("buildah", *self.places, "bud", "--isolation", "chroot", "--build-arg", "BASE=localhost/base:test", "--quiet",
             "--tag", "ruvo:test", "--file", RECIPE, folder)


def find_pod(manifest):
    """The part of a manifest that says what a pod contains, however deep it stands."""
    if "containers" in manifest:
        return manifest
    parts = [find_pod(part) for part in manifest.values() if isinstance(part, dict)]
    return next(filter(None, parts), None)


class Pod:
    """The pod of the manifest's job, with folders of this machine for what it mounts."""

    def __init__(self, folder):
        claim, job = yaml.safe_load_all(MANIFEST.read_text("utf-8"))
        self.wanted = find_pod(job)
        self.container = self.wanted["containers"][0]
        self.user, self.group = (self.wanted["securityContext"][name] for name in ("runAsUser", "fsGroup"))
        self.folder = folder
        self.secret = folder / "secret"
        self.data = folder / claim["metadata"]["name"]
        self.secret.mkdir()
        self.data.mkdir()

    def mounts(self):
        """A secret's files belong to root and can be read by the pod's group; a claim's folders can be written by it."""
        volumes = {volume["name"]: volume for volume in self.wanted["volumes"]}
        for mount in self.container["volumeMounts"]:
            volume, place = volumes[mount["name"]], mount["mountPath"]
            if "secret" in volume:
                for file in [self.secret, *self.secret.iterdir()]:
                    os.chown(file, 0, self.group)
                    file.chmod(0o750 if file.is_dir() else volume["secret"]["defaultMode"])
                yield f"--volume={self.secret}:{place}:{'ro' if mount['readOnly'] else 'rw'}"
            elif "persistentVolumeClaim" in volume:
                folder = self.data / mount["subPath"]
                folder.mkdir(exist_ok=True)
                os.chown(folder, 0, self.group)
                folder.chmod(0o2775)
                yield f"--volume={folder}:{place}"
            else:
                yield f"--tmpfs={place}:mode=1777,size={volume['emptyDir']['sizeLimit'].replace('Mi', 'm')}"

    def options(self):
        security, context = self.container["securityContext"], self.wanted["securityContext"]
        yield "--network=none"
        yield f"--user={context['runAsUser']}:{context['runAsGroup']}"
        if security["readOnlyRootFilesystem"]:
            yield "--read-only"
            yield "--read-only-tmpfs=false"
        if not security["allowPrivilegeEscalation"]:
            yield "--security-opt=no-new-privileges"
        yield from (f"--cap-drop={name.lower()}" for name in security["capabilities"]["drop"])
        yield f"--memory={self.container['resources']['limits']['memory'].replace('Mi', 'm')}"
        yield from self.mounts()


class Site(CountedSite):
    def __init__(self, engine, pod):
        self.engine, self.pod = engine, pod
        self.events = pod.data / "events"
        self.relay = CountedRelay(pod.secret / "substation.toml", pod.data / "events/account", "/var/lib/ruvo/account")

    def make(self):
        """Its files, made as the fleet's page does: from the example, with the programs of the image."""
        ini = self.pod.secret / "yard.ini"
        text = pathlib.Path("packaging/linux/site.ini").read_text("utf-8").replace("SITE", "yard")
        ini.write_text(text.replace("RV001=10.20.0.5,2,1", f"RV001={ENTRY}"), "utf-8")
        must(*self.engine.run("--rm", "--interactive", "--network=none", "--user=0", f"--volume={self.pod.secret}:/etc/ruvo",
                                  "--entrypoint=/usr/bin/ruvoctl", "ruvo:test", "password", "set", "/etc/ruvo/yard.ini", "RV001"),
             input=f"{PASSWORD}\n")
        (self.pod.secret / "registry.ini").write_text(REGISTRY, "utf-8")
        (self.pod.secret / "yard.env").write_text("P32LS_SUBSTATION=/etc/ruvo/substation.toml\n", "utf-8")

    def container(self, *options):
        arguments = self.pod.container["args"]
        return self.engine.run("--name", "visit", *options, *self.pod.options(), "ruvo:test", *arguments)

    def visit(self):
        return run(*self.container("--rm"))

    def start(self):
        must(*self.container("--detach"))

    def end(self, *command):
        """Ends it with a command of the engine; its exit status."""
        must(*self.engine.command(*command, "visit"))
        status = int(must(*self.engine.command("wait", "visit")))
        must(*self.engine.command("rm", "visit"))
        return status

    def stored(self):
        return texts(said("build/release/bin/ruvoctl", "events", "--format", "json", self.events / "yard"))


def look_at_visits(site):
    site.relay.fill(3)
    done = site.visit()
    equal("a good visit", (done.returncode, done.stdout), (0, ""))
    site.check_ledger("a good visit")
    equal("the state is on the events' volume", [path.name for path in site.events.glob(".state/*")] != [], True)
    owners = {path.stat().st_uid for path in [site.events / "yard", *(site.events / "yard").rglob("*")]}
    equal("whose the events are", owners, {site.pod.user})
    ends_with("nothing else can be written", 1, *site.engine.run(
        "--rm", *site.pod.options(), "--entrypoint=/usr/bin/touch", "ruvo:test", "/var/lib/new"))
    site.relay.fill(1, kind=9)
    done = site.visit()
    check("a visit with a problem", done.returncode == 1 and "of unknown kind passed over" in done.stdout, done.stdout)


def look_at_ends(site):
    seconds = site.pod.wanted["terminationGracePeriodSeconds"]
    site.relay.fill(MANY, faults=SLOW)
    site.begin()
    equal("stopped: its status", site.end("stop", "--time", seconds), 3)
    check("stopped: events are left with the relay", site.relay.handed_over() < len(site.relay.events))
    site.check_ledger("stopped")
    site.begin()
    equal("killed: its status", site.end("kill", "--signal", "KILL"), 137)
    under_way = site.relay.under_way()
    done = site.visit()
    check("killed: the next visit says what it found", done.returncode == 1 and "of a visit that was ended" in done.stdout, done.stdout)
    equal("killed: the relay has none left", site.relay.handed_over(), len(site.relay.events))
    site.check_after_kill("killed", under_way)


def clean_up(engine, work):
    run(*engine.command("rm", "--all", "--force"))
    run(*engine.command("rmi", "--all", "--force"))
    # What the engine started for a container outlives it for a moment, and writes into its folders.
    end = time.monotonic() + PATIENCE
    while run("pgrep", "--full", work).returncode == 0 and time.monotonic() < end:
        time.sleep(0.1)
    run("umount", "-R", work / "images/overlay")


def test():
    base, deb = (pathlib.Path(word).resolve() for word in sys.argv[1:3])
    with tempfile.TemporaryDirectory(dir=base.parent) as work, removed_afterwards("libpod_parent"):
        work = pathlib.Path(work)
        engine = Engine(work)
        try:
            (work / "context").mkdir()
            shutil.copy(deb, work / "context")
            engine.build(base, work / "context")
            (work / "pod").mkdir()
            site = Site(engine, Pod(work / "pod"))
            site.make()
            look_at_visits(site)
            look_at_ends(site)
        finally:
            clean_up(engine, work)


if __name__ == "__main__":
    sys.exit(count_checks(test))
