"""Plays the story, and compares what ruvoctl says with the texts in this folder."""

import argparse
import difflib
import pathlib
import re
import shlex
import shutil
import sys
import tempfile

from checks import check, count_checks, equal
from two_sites import HERE, TwoSites

DISK = re.compile(r"^(ruvo_disk_free_bytes\{.*\}) \d+$", re.MULTILINE)


def steps():
    """Moment, word, and the parts behind it."""
    for line in (HERE / "story.txt").read_text("utf-8").splitlines():
        if line and not line.startswith("#"):
            moment, word, *parts = [part.strip() for part in line.split("|", 3)]
            yield moment, *word.split(" ", 1), parts


class Story:
    def __init__(self, sites, update):
        self.sites = sites
        self.update = update
        self.seen = set()

    def play(self):
        for moment, word, rest, parts in steps():
            getattr(self, word)(moment, rest.strip(), *parts)
        equal("every text in the folder is of a morning", self.seen, {path.name for path in HERE.glob("mornings/*")})

    def visit(self, moment, site):
        equal(f"what the visit of {site} says, {moment}", self.sites.visit(moment, site), "")

    def kill(self, moment, site, text):
        self.sites.kill(moment, site, text)

    def fault(self, _, site, name, toml):
        self.sites.faults[site][name] = toml

    def mended(self, _, site, name):
        del self.sites.faults[site][name]

    def event(self, moment, site, relay, toml):
        time = "" if "time =" in toml else f"time = {moment.replace(' ', 'T')}, "
        self.sites.events[site].append((relay, time + toml))

    def ruvoctl(self, moment, words):
        said = self.sites.ruvoctl(moment, shlex.split(words))
        check(f"ruvoctl {words}", "exit status" not in said, said)

    def look(self, moment, words):
        name, *words = shlex.split(words)
        if words[0] == "cat":
            self.compare(name, DISK.sub(r"\1 N", (self.sites.folder / words[1]).read_text("utf-8")))
        else:
            command = "" if name.endswith(".html") else f"{moment} $ ruvoctl {' '.join(words)}\n"
            self.compare(name, command + self.sites.ruvoctl(moment, words))

    def compare(self, name, text):
        path = HERE / "mornings" / name
        wanted = path.read_text("utf-8") if path.exists() else ""
        self.seen.add(name)
        if self.update and text != wanted:
            path.write_text(text, "utf-8")
            print(f"updated {path}")
        else:
            difference = difflib.unified_diff(wanted.splitlines(), text.splitlines(), name, "now", lineterm="")
            check(name, text == wanted, "\n" + "\n".join(difference))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--update", action="store_true")
    parser.add_argument("--keep", action="store_true")
    parser.add_argument("programs", nargs="?", default="build/release/bin")
    options = parser.parse_args()
    # (As long on every machine: lines are broken by their length.)
    folder = pathlib.Path(tempfile.mkdtemp(prefix="night-", dir="/tmp"))
    try:
        return count_checks(Story(TwoSites(folder, options.programs), options.update).play)
    finally:
        if options.keep:
            print(f"The sites are in {folder}.")
        else:
            shutil.rmtree(folder)


sys.exit(main())
