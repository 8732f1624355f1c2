"""How an installed site is visited: by whom, one at a time, with whose files and which environment."""

import glob
import os
import pathlib
import re
import shutil

from checks import check, ends_with, equal, run, said, silent, succeeds

RUN_SITE = "/usr/lib/ruvo/run-site"
YARD = pathlib.Path("/etc/ruvo/yard.ini")
ENVIRONMENT = pathlib.Path("/etc/ruvo/yard.env")
EVENTS = "/var/lib/ruvo/yard"
LOG = pathlib.Path("/var/log/ruvo/yard.log")


def visit(site):
    return "runuser", "-u", "ruvo", "--", RUN_SITE, site


def count_events(folder=EVENTS):
    return len(said("ruvoctl", "events", "--format", "json", folder).splitlines())


def look_at_exit_statuses():
    text = re.sub(r"(?m)^RV001=10.*", "RV001=10.20.0.6,2", YARD.read_text("utf-8"))
    YARD.write_text(text[:text.index("[RUVO_PASSWORDS]")] + "[RUVO_PASSWORDS]\n", "utf-8")
    silent("a visit without problems", *visit("yard"))
    pathlib.Path("/etc/ruvo/shut.ini").write_text(
        YARD.read_text("utf-8").replace("/var/lib/ruvo/yard", "/usr/lib/ruvo/events"), "utf-8")
    ends_with("a site that cannot write its events", 2, *visit("shut"))
    pathlib.Path("/etc/ruvo/full.ini").write_text(
        YARD.read_text("utf-8").replace("RV001=10.20.0.6", "RV001=10.20.0.99").replace("yard.log", "full.log"), "utf-8")
    ends_with("a site whose log takes no line", 2, "sh", "-c", 'ulimit -f 0; exec "$@"', "sh", *visit("full"))
    ends_with("a site that is not there", 2, *visit("nowhere"))
    silent("the site's name with its ending", *visit("yard.ini"))
    equal("run-site --help", len(re.findall("(?m)^.*(?:run-site .*SITE|Exit status:)", said(RUN_SITE, "--help"))), 2)
    ends_with("an option that is none", 2, *visit("--chekc"))


def look_at_runs_at_once(work):
    lock = glob.glob("/run/ruvo/ruvo*HX.lock")[0]

    def while_visited(site, *command):
        """A site that is being visited, and what is done meanwhile."""
        return ("flock", "--shared", lock, "flock", f"{lock.removesuffix('.lock')}@{site}.lock", "runuser", "-u", "ruvo", "--",
                *command)

    def refused(what, status, *command):
        done = run(*command)
        last = LOG.read_text("latin-1").splitlines()[-1]
        check(what, done.returncode == status and "Only one instance" in last, f"{done.returncode} {done.stdout} {last}")

    ends_with("one site never twice", 1, *while_visited("yard", RUN_SITE, "yard"))
    refused("not beside it, started by hand", 0, *while_visited("yard", "env", "HOME=/root", f"XDG_RUNTIME_DIR={work}", "ruvo",
                                                                YARD))
    refused("nor beside one that was", 1, "flock", lock, *visit("yard"))
    silent("two sites at once", *while_visited("demo", RUN_SITE, "yard"))


def look_at_roots_visits(work):
    """Root goes on as the user that owns what it finds: neither a link nor a file may become root's."""
    victim, bait = work / "roots", pathlib.Path("/etc/ruvo/bait.ini")
    link, events = pathlib.Path("/var/log/ruvo/bait.log"), pathlib.Path("/var/lib/ruvo/bait")
    victim.write_text("untouched\n", "utf-8")
    bait.write_text(YARD.read_text("utf-8").replace("/yard", "/bait"), "utf-8")
    shutil.copy(ENVIRONMENT, "/etc/ruvo/bait.env")
    shutil.chown(bait, group="ruvo")
    events.mkdir()
    shutil.chown(events, "ruvo", "ruvo-events")
    link.symlink_to(victim)
    run("chown", "-h", "ruvo", link)
    ends_with("root: a planted link", 2, RUN_SITE, "bait")
    equal("root: is not followed", victim.read_text("utf-8"), "untouched\n")
    for left in ("/etc/ruvo/bait.ini", "/etc/ruvo/bait.env", link):
        os.remove(left)
    shutil.rmtree(events)
    silent("root: a visit", RUN_SITE, "yard")
    equal("root: leaves nothing of its own", said("find", "/var/lib/ruvo/yard", "/var/log/ruvo", "-not", "-user", "ruvo"), "")


def site_text(events, log):
    return f"[RUVO_GENERAL]\nEventRootDir={events}\nErrorLogPathname={log}\n[RUVO_SERIAL]\nRV001=5\n"


def look_at_files_of_others(work):
    others = work / "nobody"
    others.mkdir()
    work.chmod(0o711)
    own, log, roots = others / "own.ini", others / "log", work / "of-root"
    own.write_text(site_text(others / "a/b", log), "utf-8")
    shutil.copy(ENVIRONMENT, others / "own.env")
    for path in (others, own, others / "own.env"):
        shutil.chown(path, "nobody")
    ends_with("root: another file", 2, RUN_SITE, own)  # its owner has no home, and so no lock
    equal("root: as its owner", log.owner(), "nobody")
    own.write_text(site_text(roots, log), "utf-8")
    ends_with("root: not with the file of another", 2, RUN_SITE, own)
    equal("root: nothing of it was done", (len(log.read_text("utf-8").splitlines()), roots.exists()), (1, False))
    # A file of root's own, whose events or log another user leads to a place of root's.
    roots.mkdir()
    (others / "way").symlink_to(roots)
    for what, events, where in (("events", others / "way/a", work / "roots.log"), ("log", roots, others / "way/log")):
        (work / "roots.ini").write_text(site_text(events, where), "utf-8")
        done = run(RUN_SITE, work / "roots.ini")
        check(f"root: no {what} where another leads",
              done.returncode == 2 and not os.listdir(roots) and not (work / "roots.log").exists(), done.stdout)


def look_at_environment(work):
    """Lines of the environment reach the programs and nothing else; any other line is reported, and the visit is made."""
    whole = ENVIRONMENT.read_text("utf-8")

    def visited_with(what, status, line):
        before = count_events()
        ENVIRONMENT.write_text(f"{whole}{line}\n", "utf-8")
        done = run(*visit("yard"))
        ENVIRONMENT.write_text(whole, "utf-8")
        equal(what, (done.returncode, count_events() - before), (status, 1))

    for line in "mode=fast here=/x ini=/x site=x line=x log=/x lines= status=1 PATH= IFS=u OPTIND=x".split():
        visited_with(f"environment: {line}", 0, line)
    for line in "COMMS-PORT=1 1ST=x =x alone RUVO_LOCK_DIR=/none RUVO_SITE=x RUVO_INI_NAME=x".split():
        visited_with(f"environment: {line} is refused", 2, line)
    for what, let, end in (("where the group may write it", "chmod g+w", "chmod g-w"),
                           ("where others may write it", "chmod o+w", "chmod o-w"),
                           ("another user's", "chown nobody", "chown root")):
        run(*let.split(), ENVIRONMENT)
        done = run(*visit("yard"))
        run(*end.split(), ENVIRONMENT)
        equal(f"environment: not {what}", (done.returncode, done.stdout.count("yard.env: ignored, because")), (2, 1))
    registry = pathlib.Path("/var/lib/ruvo/.config/ruvo")
    registry.mkdir(parents=True)
    shutil.chown(registry, "ruvo")
    (registry / "registry.ini").write_text(
        "[CLSID\\{9A69E99F-E86F-455D-B971-355C1139963E}]\nInprocServer32=/none.so\n", "utf-8")
    succeeds("no registry of the services' user", "runuser", "-u", "ruvo", "--", "env", "HOME=/var/lib/ruvo", RUN_SITE, "yard")
    shutil.rmtree(registry.parent)


def look_at_programs_after():
    """As the visit's user; none that others could have written, and no copy that an upgrade has left."""
    folder = pathlib.Path("/etc/ruvo/after-visit.d")
    had_folder = folder.exists()
    folder.mkdir(exist_ok=True)
    script = '#!/bin/sh\necho "$(id -un) $RUVO_SITE $RUVO_STATUS: $RUVO_REACHED of $RUVO_RELAYS, $RUVO_STORED"\n'
    for name, mode in (("10-counts", 0o755), ("30-anybodys", 0o757), ("50-copy.dpkg-old", 0o755)):
        (folder / name).write_text(script, "utf-8")
        (folder / name).chmod(mode)
    done = run(*visit("yard"))
    for file in folder.iterdir():
        file.unlink()
    if not had_folder:
        folder.rmdir()
    lines = [line for line in done.stdout.splitlines() if not line.startswith("ruvoctl: ")]  # warnings are on the other stream
    equal("programs after: the visit is good, and what they say", (done.returncode, lines), (0, ["ruvo yard 0: 1 of 1, 1"]))
    equal("programs after: one that is anybody's is a warning",
          done.stdout.count("30-anybodys: not started, because users other than"), 1)


def test(work):
    look_at_exit_statuses()
    look_at_runs_at_once(work)
    look_at_roots_visits(work)
    look_at_files_of_others(work)
    look_at_environment(work)
    look_at_programs_after()
    told = said("runuser", "-u", "ruvo", "--", "env", ENVIRONMENT.read_text("utf-8").strip(), "ruvo", "-t", YARD)
    check("ruvo -t", "No input errors found" in told, told)
