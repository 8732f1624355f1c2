"""Three nodes of Slurm on this machine, each in a process namespace of its own, so that its end is the loss of the machine."""

import os
import pathlib
import signal
import socket
import subprocess

from checks import must, run, said, wait_for

NODES = ("n1", "n2", "n3")
PATIENCE = 900  # seconds after which something counts as not happening
CONFIGURATION = """ClusterName=night
SlurmctldHost={host}(127.0.0.1)
SlurmctldPort={port}
SlurmUser=root
SlurmdUser=root
AuthType=auth/none
CredType=cred/none
AuthInfo=cred_expire=5
CommunicationParameters=NoCtldInAddrAny,NoInAddrAny
PluginDir={plugins}
StateSaveLocation={work}/state
SlurmdSpoolDir={work}/spool/%n
SlurmctldPidFile={work}/slurmctld.pid
SlurmdPidFile={work}/slurmd.%n.pid
SlurmctldLogFile={work}/log/slurmctld.log
SlurmdLogFile={work}/log/slurmd.%n.log
MailProg=/bin/true
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
SwitchType=switch/none
MpiDefault=none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SchedulerType=sched/backfill
SchedulerParameters=default_queue_depth=1000,sched_interval=1,sched_min_interval=0,bf_interval=2
PriorityType=priority/basic
SlurmdParameters=config_overrides
ReturnToService=2
JobRequeue=1
SlurmdTimeout=3
MessageTimeout=2
TCPTimeout=2
KillWait=90
MinJobAge=600
MaxArraySize=1001
PartitionName=night Nodes=ALL Default=YES LLN=YES MaxTime=INFINITE DefaultTime=60 State=UP
"""
NODE = "NodeName={name} NodeHostname={name} NodeAddr=127.0.0.1 Port={port} CPUs={cpus} RealMemory=20000 State=UNKNOWN\n"
# The first process of a node's namespace: ends with the node's daemon only when it is told to.
KEEPER = """#!/bin/bash
slurmd -D -N "$1" -f "$SLURM_CONF" -d "$2/slurmstepd-wlm" &
echo $! >"$3"
while :; do sleep 1000 & wait $!; done
"""


def read(process, file):
    try:
        return pathlib.Path(f"/proc/{process}/{file}").read_text("utf-8")
    except OSError:
        return ""  # it has ended


def tell(processes, what):
    for process in processes:
        try:
            os.kill(process, what)
        except ProcessLookupError:
            continue  # it has ended


class SlurmCluster:
    def __init__(self, work, port=17000, cpus=40):
        """Its packages are unpacked below `work`, not installed: no user is made, no service started."""
        self.work = work
        self.port, self.cpus = port, cpus
        self.nodes = {}
        for folder in ("debs/partial", "root", "state", "spool", "log"):
            (work / folder).mkdir(parents=True)
        must("apt-get", "install", "-y", "-qq", "--no-install-recommends", "--download-only", "-o", f"Dir::Cache::archives={work}/debs",
             "slurmctld", "slurmd", "slurm-client")
        for deb in (work / "debs").glob("*.deb"):
            must("dpkg", "-x", deb, work / "root")
        libraries = work / "root/usr/lib/x86_64-linux-gnu"
        self.programs = work / "root/usr/sbin"
        (self.programs / "slurmd").symlink_to("slurmd-wlm")
        self.environment = {**os.environ, "SLURM_CONF": str(work / "slurm.conf"),
                            "LD_LIBRARY_PATH": f"{libraries}:{libraries}/slurm-wlm",
                            "PATH": f"{work}/root/usr/bin:{self.programs}:{os.environ['PATH']}"}
        text = CONFIGURATION.format(host=socket.gethostname().split(".")[0], port=port, plugins=libraries / "slurm-wlm", work=work)
        text += "".join(NODE.format(name=name, port=port + 1 + at, cpus=cpus) for at, name in enumerate(NODES))
        (work / "slurm.conf").write_text(text, "utf-8")
        (work / "keeper").write_text(KEEPER, "utf-8")
        (work / "keeper").chmod(0o755)

    def spawn(self, name, *command):
        with open(self.work / f"log/{name}.out", "ab") as out:
            return subprocess.Popen(list(map(str, command)), env=self.environment, stdin=subprocess.DEVNULL, stdout=out, stderr=out,
                                    start_new_session=True)

    def start_controller(self, *options):
        self.controller = self.spawn("controller", "slurmctld-wlm", "-D", *options, "-f", self.work / "slurm.conf")

    def start_node(self, name):
        self.nodes[name] = self.spawn(name, "unshare", "--pid", "--fork", "--mount-proc", "--kill-child", self.work / "keeper", name,
                                      self.programs, self.work / f"{name}.daemon")

    def start(self):
        self.start_controller("-c")
        for name in NODES:
            self.start_node(name)
        self.wait_for("three idle nodes", lambda: len(self.said("sinfo", "-h", "-N", "-t", "idle", "-o", "%N").split()) == len(NODES))

    def run(self, *command, **options):
        return run(*command, env=self.environment, **options)

    def said(self, *command, **options):
        return said(*command, env=self.environment, **{"stderr": subprocess.DEVNULL, **options})

    def must(self, *command, **options):
        return must(*command, env=self.environment, **options)

    def wait_for(self, what, happened):
        wait_for(what, happened, PATIENCE)

    def set_right(self):
        """What is left to an operator where the controller has started tasks beside copies that it had forgotten: it drains the nodes
        for that and holds the tasks."""
        nodes = self.said("sinfo", "-h", "-N", "-t", "drain", "-o", "%N").split()
        if nodes:
            self.must("scontrol", "update", f"NodeName={','.join(nodes)}", "State=RESUME")
        tasks = [line.split()[0] for line in self.said("squeue", "-h", "-r", "-t", "PD", "-o", "%i %r").splitlines() if "held" in line]
        if tasks:
            self.must("scontrol", "release", ",".join(tasks))
        return len(nodes), len(tasks)

    def namespace(self, name):
        """The processes of a node as this machine numbers them, its keeper first."""
        keeper = pathlib.Path(f"/proc/{self.nodes[name].pid}/task/{self.nodes[name].pid}/children").read_text("utf-8").split()[0]
        own = os.readlink(f"/proc/{keeper}/ns/pid")
        found = [keeper]
        for process in filter(str.isdigit, os.listdir("/proc")):
            try:
                if process != keeper and os.readlink(f"/proc/{process}/ns/pid") == own:
                    found.append(process)
            except OSError:
                continue  # it has ended
        return [int(process) for process in found]

    def command_lines(self, name):
        """The words of each process of a node."""
        return [read(process, "cmdline").split("\0") for process in self.namespace(name)]

    def lose(self, name):
        """All processes of the node end at once."""
        self.nodes[name].kill()
        self.nodes[name].wait()

    def kill_daemon(self, name):
        """The node's daemon ends; its visits live on."""
        daemon = [process for process in self.namespace(name) if read(process, "comm") == "slurmd\n"]
        os.kill(min(daemon), signal.SIGKILL)  # the others are its children on their way to a step

    def freeze(self, name):
        self.frozen = self.namespace(name)
        tell(self.frozen, signal.SIGSTOP)

    def wake(self):
        tell(self.frozen, signal.SIGCONT)

    def close(self):
        run("timeout", "10", "scancel", "-u", "root", env=self.environment)
        for node in self.nodes.values():
            node.kill()
            node.wait()
        self.controller.terminate()
        try:
            self.controller.wait(20)
        except subprocess.TimeoutExpired:
            self.controller.kill()
            self.controller.wait()
