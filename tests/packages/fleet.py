"""What docs/fleet.md offers: manifests against their schema, the container's recipe, its steps."""

import fnmatch
import os
import pathlib
import re

from checks import check, equal, fails, silent, succeeds

RECIPE = pathlib.Path("packaging/container/Containerfile")
SITE = pathlib.Path("packaging/fleet/site.yaml")


class Schema:
    """The check of a file of manifests. Nothing is downloaded for it here: scripts/setup.sh has done that."""

    def __init__(self, folder):
        self.folder = folder
        (folder / "manifests.mjs").write_bytes(pathlib.Path("tests/packages/fleet/manifests.mjs").read_bytes())
        (folder / "node_modules").symlink_to(pathlib.Path("build/npm/node_modules").resolve())

    def command(self, manifests):
        return ("sh", "-c", 'node manifests.mjs "$1" typed.ts && node_modules/.bin/tsc --noEmit --strict --skipLibCheck '
                '--module esnext --moduleResolution bundler typed.ts', "_", manifests)


def make_sites(machine, folder):
    """The document's own commands make the files, Secrets and manifests of two sites."""
    (folder / "sites.txt").write_text("east 10.20.0.5,2,1\nwest-2 10.20.0.6,2\n", "utf-8")
    blocks = re.findall(r"(?ms)^```sh\n(.*?)^```$", pathlib.Path("docs/fleet.md").read_text("utf-8"))
    (folder / "commands").write_text("".join(blocks).replace("/usr/share", f"{machine.work}/files/usr/share"), "utf-8")
    machine.stand_in("kubectl", '#!/bin/sh\necho "$*" >>"$ASKED"\n')
    (folder / "sites").mkdir()
    (folder / "sites/east.env").touch()
    silent("the commands", "bash", "-eu", "commands", cwd=folder,
           env={**os.environ, "PATH": machine.path, "ASKED": str(folder / "asked")})
    return (folder / "asked").read_text("utf-8")


def look_at_sites(folder, asked, schema):
    equal("Secrets", asked, "".join(f"create secret generic ruvo-{files}\n" for files in (
        "east --from-file=sites/east.ini --from-file=registry.ini --from-file=sites/east.env",
        "west-2 --from-file=sites/west-2.ini --from-file=registry.ini")))
    west = folder / "sites/west-2.ini"
    equal("a site's file: who reads it", (oct(west.stat().st_mode & 0o7777), west.stat().st_gid), ("0o640", 64100))
    own = [line for line in west.read_text("utf-8").splitlines() if not line.startswith(";") and
           ("west-2" in line or line.startswith("RV"))]
    equal("a site's file: its own", own, ["EventRootDir=/var/lib/ruvo/west-2", "ErrorLogPathname=/var/log/ruvo/west-2.log",
                                          "RV001=10.20.0.6,2"])
    for site in ("east", "west-2"):
        manifest = folder / f"manifests/{site}.yaml"
        succeeds(f"manifest of {site}: schema", *schema.command(manifest), cwd=folder)
        text = manifest.read_text("utf-8")
        check(f"manifest of {site}: its own", "yard" not in text and '"17 ' not in text, text)


def look_at_recipe(folder, deb):
    succeeds("the container's recipe", folder / "node_modules/.bin/dockerfile-utils", "lint", RECIPE.resolve())
    recipe = RECIPE.read_text("utf-8")
    check("it installs this package", fnmatch.fnmatch(deb.name, re.search(r"(?m)^COPY ([^ ]*) ", recipe)[1]), recipe)
    equal("its user is the manifests'", re.findall(r"(?m)^USER ([0-9]*):", recipe),
          re.findall(r"runAsUser: (.*)", SITE.read_text("utf-8")))


def test(machine):
    print("Looking at the fleet's recipes", flush=True)
    folder = machine.work / "fleet"
    folder.mkdir()
    schema = Schema(folder)
    look_at_sites(folder, make_sites(machine, folder), schema)
    # The check itself must be able to fail.
    for what, right, wrong in (("a wrong value", "Forbid", "Never"), ("a misspelt name", "timeZone", "timezone")):
        (folder / "wrong.yaml").write_text(SITE.read_text("utf-8").replace(right, wrong), "utf-8")
        fails(f"{what} is found", *schema.command(folder / "wrong.yaml"), cwd=folder)
    look_at_recipe(folder, machine.deb)
