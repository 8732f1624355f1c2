"""Alerts that fire and resolve in a real Prometheus.
    prometheus_test.py BIN      the folder of the programs
The alert of a disk with little room is driven only by root, who can mount one."""

import json
import os
import pathlib
import re
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import urllib.request

from checks import check, count_checks, equal, must
from substation import Substation

RULES = pathlib.Path("packaging/prometheus/ruvo.rules.yml")
DEADLINE = 150  # seconds; what is waited for takes a third on an idle machine
EVENT = '[[relay.event]]\nkind = 0\nlocation = "03.20"\ntime = {}\ntext = "Trip"\nvalue = {{ uint = 1, size = 1 }}\n'
GOOD, MALFORMED = EVENT.format("2026-11-16T03:00:00"), EVENT.format("{ none = true }")
# It asks for its password again in mid-visit, and refuses it then.
FORGETFUL = '[relay.access]\npassword = "AAAA"\nforget_after = 10\n[relay.cells]\n"00.DF" = { uint = 0, size = 1 }\n'
SLOW = '[[fault]]\noperation = "GetEvent"\nrelay = "{}"\nfrom = {}\ndelay = 2000\n'
# Site: number of its relay, the relay's events, more of the relay, faults.
SITES = {
    "calm": (1, GOOD, "", ""),
    "lost": (2, MALFORMED + GOOD, "", ""),
    "slow": (3, GOOD, "", SLOW.format("R3", 1)),
    "far": (4, "", "", ""),
    "refused": (5, GOOD * 8, FORGETFUL,
                '[[fault]]\noperation = "ChangeSetting"\nrelay = "R5"\ncell = "00.02"\nfrom = 3\nreply = 4\n'),
    "killed": (6, GOOD * 8, "", SLOW.format("R6", 4)),
}
FULL = os.geteuid() == 0
if FULL:
    SITES["full"] = (7, "", "", "")
BROKEN = {("RuvoDamage", "calm"), ("RuvoEventsLost", "lost"), ("RuvoVisitIncomplete", "slow"), ("RuvoNoVisitKnown", "gone"),
          ("RuvoRelayNotReached", "far"), ("RuvoEventsSetAside", "refused"), ("RuvoEventsWaiting", "killed"),
          ("RuvoVisitIncomplete", "killed"), *([("RuvoDiskLow", "full")] if FULL else [])}
OLD = {("RuvoNoVisit", site) for site in SITES}


def seconds_for_hours(rules):
    """An hour becomes a second, in limits and in what has to last."""
    units = {"m": 1 / 60, "h": 1, "d": 24}
    rules = re.sub(r"(\d+) \* 3600", r"\1", rules)
    return re.sub(r"for: (\d+)([mhd])", lambda m: f"for: {int(int(m[1]) * units[m[2]] * 1000)}ms", rules)


def free_port():
    with socket.socket() as found:
        found.bind(("127.0.0.1", 0))
        return found.getsockname()[1]


class Yard:
    """The sites, and the file with their metrics."""

    def __init__(self, folder):
        self.folder = folder
        self.site = Substation(folder, sys.argv[1])
        self.metrics = folder / "textfile"
        self.inis = folder / "sites"
        self.metrics.mkdir()
        self.inis.mkdir()
        self.describe("far")
        password = must(self.site.bin / "ruvoctl", "password", "encrypt", input="AAAA\n", env=self.site.environment).strip()
        for name, (number, *_) in SITES.items():
            (self.inis / f"{name}.ini").write_text(
                f"[RUVO_GENERAL]\nEventRootDir={folder}/{name}\nErrorLogPathname={folder}/{name}.log\nUseEthernet=1\n"
                f"[RUVO_ETHERNET]\nRV001=10.0.0.{number},1\n[RUVO_PASSWORDS]\nRV001={password}\n", "utf-8")

    def describe(self, absent=None):
        relays = [f'[[relay]]\nname = "R{number}"\nethernet = {{ ip = "10.0.0.{number}", address = 1 }}\n[relay.identity]\n'
                  f'model = "AB12-X"\nserial = "000{number}"\n{more}{events}'
                  for name, (number, events, more, _) in SITES.items() if name != absent]
        self.site.describe('state = "state.txt"\ntrace = "trace"\n', *relays,
                           *(faults for name, (*_, faults) in SITES.items() if name != absent))

    def command(self, name):
        return [str(self.site.bin / "ruvo"), str(self.inis / f"{name}.ini")]

    def visit(self, name, *before):
        must(*before, *self.command(name), env=self.site.environment)

    def cut_short(self, name, number, after):
        """A visit that a signal ends while it waits for an event, once the trace has so many of these calls."""
        trace = self.folder / "trace"
        trace.unlink(missing_ok=True)
        visit = subprocess.Popen(self.command(name), env=self.site.environment)
        operation, times = after
        while visit.poll() is None and (trace.read_text("utf-8") if trace.exists() else "").count(operation) < times:
            time.sleep(0.02)
        visit.send_signal(number)
        visit.wait()

    def disk(self, name, size):
        """Gives a site an event root with a disk of its own, or changes that one's size."""
        root = self.folder / name
        root.mkdir(exist_ok=True)
        must("mount", "-t", "tmpfs", "-o", f"{'remount,' if root.is_mount() else ''}size={size}", "ruvo-test", root)

    def end(self):
        if (self.folder / "full").is_mount():
            must("umount", self.folder / "full")

    def recover(self, name):
        kept = next(self.folder.glob("**/*.setaside"))
        self.site.ruvoctl("recover", self.inis / f"{name}.ini", kept)

    def measure(self):
        self.site.ruvoctl("status", "--all", self.inis, "--prometheus", self.metrics / "ruvo.prom")


class Watch:
    """A node exporter and a Prometheus, for as long as the test takes."""

    def __init__(self, yard):
        folder, exporter, self.port = yard.folder, free_port(), free_port()
        (folder / "rules.yml").write_text(seconds_for_hours(RULES.read_text("utf-8")), "utf-8")
        (folder / "prometheus.yml").write_text(
            "global: {scrape_interval: 1s, evaluation_interval: 1s}\nrule_files: [rules.yml]\nscrape_configs:\n"
            f"  - {{job_name: node, honor_labels: true, static_configs: [{{targets: ['127.0.0.1:{exporter}']}}]}}\n", "utf-8")
        must("promtool", "check", "rules", folder / "rules.yml")
        commands = (["prometheus-node-exporter", f"--web.listen-address=127.0.0.1:{exporter}", "--collector.disable-defaults",
                     "--collector.textfile", f"--collector.textfile.directory={yard.metrics}"],
                    ["prometheus", f"--config.file={folder}/prometheus.yml", f"--storage.tsdb.path={folder}/data",
                     f"--web.listen-address=127.0.0.1:{self.port}"])
        self.log = open(folder / "watch.log", "wb")
        self.programs = [subprocess.Popen(command, stdout=self.log, stderr=self.log) for command in commands]
        self.ended = threading.Event()
        self.measuring = threading.Event()
        self.thread = threading.Thread(target=self.measure, args=(yard,))
        self.measuring.set()
        self.thread.start()

    def measure(self, yard):
        while not self.ended.wait(1):
            if self.measuring.is_set():
                yard.measure()

    def firing(self):
        try:
            with urllib.request.urlopen(f"http://127.0.0.1:{self.port}/api/v1/alerts", timeout=5) as answer:
                alerts = json.load(answer)["data"]["alerts"]
        except OSError:
            return None  # it has not started yet
        return {(alert["labels"]["alertname"], alert["labels"]["site"]) for alert in alerts if alert["state"] == "firing"}

    def wait(self, what, good, meanwhile=lambda: None):
        end = time.monotonic() + DEADLINE
        seen = self.firing()
        while (seen is None or not good(seen)) and time.monotonic() < end:
            meanwhile()
            time.sleep(0.5)
            seen = self.firing()
        check(what, seen is not None and good(seen), seen)

    def end(self):
        self.ended.set()
        self.thread.join()
        for program in self.programs:
            program.terminate()
            program.wait()
        self.log.close()


def watch_over(yard, watch):
    for night in (3, 2, 1):
        yard.visit("far", "faketime", "-f", f"-{night}d")
    yard.visit("calm")
    yard.visit("refused")
    if FULL:
        yard.disk("full", "100m")
        yard.visit("full")
    damaged = next(yard.folder.glob("calm/*/*.evt"))
    whole = damaged.read_bytes()
    watch.wait("nothing fires for a site that is well", lambda seen: not any(site == "calm" for _, site in seen))
    # What is broken fires, and then what is old.
    damaged.write_bytes(whole + b"\0\xff" * 20)
    yard.visit("lost")
    yard.cut_short("slow", signal.SIGTERM, ("GetDeviceStatus", 1))
    yard.cut_short("killed", signal.SIGKILL, ("GetEvent", 4))
    yard.visit("far")
    (yard.inis / "gone.ini").symlink_to("nowhere")
    watch.wait("what is broken fires", lambda seen: BROKEN <= seen)
    watch.wait("and a site that is not visited", lambda seen: OLD <= seen)
    equal("and nothing else", watch.firing() - BROKEN - OLD, set())
    # What is mended resolves.
    damaged.write_bytes(whole)
    (yard.inis / "gone.ini").unlink()
    yard.recover("refused")
    if FULL:
        yard.disk("full", "2g")
    yard.describe()

    def visits():
        for name in SITES:
            yard.visit(name)

    watch.wait("what is mended resolves", lambda seen: not seen, visits)
    # The job that writes the metrics stops, and goes on.
    watch.measuring.clear()
    missing = {("RuvoStatusMissing", site) for site in SITES}
    watch.wait("figures that are too old fire", lambda seen: missing <= seen)
    watch.measuring.set()
    watch.wait("new ones resolve them", lambda seen: not seen, visits)


def test():
    with tempfile.TemporaryDirectory(prefix="ruvo-prometheus-") as name:
        yard = Yard(pathlib.Path(name))
        watch = Watch(yard)
        try:
            watch_over(yard, watch)
        finally:
            watch.end()
            yard.end()


sys.exit(count_checks(test))
