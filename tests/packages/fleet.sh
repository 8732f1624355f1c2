# What docs/fleet.md offers: manifests against their schema, the container's recipe, its steps. Sourced by run.sh.
# shellcheck shell=bash
echo "Looking at the fleet's recipes"
mkdir "$work/fleet"
cp tests/packages/fleet/manifests.mjs "$work/fleet"
ln -s "$PWD/build/npm/node_modules" "$work/fleet/node_modules" # by scripts/setup.sh: nothing is downloaded here
schema() { # a file of manifests
    (cd "$work/fleet" && node manifests.mjs "$1" "$work/fleet/typed.ts" &&
        node_modules/.bin/tsc --noEmit --strict --skipLibCheck --module esnext --moduleResolution bundler typed.ts)
}
# The document's own commands make the files, Secrets and manifests of two sites.
printf '%s\n' 'east 10.20.0.5,2,1' 'west-2 10.20.0.6,2' >"$work/fleet/sites.txt"
sed -n '/^```sh$/,/^```$/p' docs/fleet.md | sed "/^\`\`\`/d; s|/usr/share|$work/files/usr/share|" >"$work/fleet/commands"
printf '#!/bin/sh\necho "$*" >>"$ASKED"\n' >"$work/bin/kubectl"
chmod +x "$work/bin/kubectl"
mkdir "$work/fleet/sites"
touch "$work/fleet/sites/east.env"
check "the commands" silent env --chdir="$work/fleet" PATH="$work/bin:$PATH" ASKED="$work/kubectl.log" bash -eu commands
check "Secrets" equal "$(cat "$work/kubectl.log")" "$(printf 'create secret generic ruvo-%s\n' \
    'east --from-file=sites/east.ini --from-file=registry.ini --from-file=sites/east.env' \
    'west-2 --from-file=sites/west-2.ini --from-file=registry.ini')"
check "a site's file: who reads it" equal "$(stat -c '%a %g' "$work/fleet/sites/west-2.ini")" "640 64100"
check "a site's file: its own" equal "$(grep -v '^;' "$work/fleet/sites/west-2.ini" | grep 'west-2\|^RV')" "$(printf '%s\n' \
    EventRootDir=/var/lib/ruvo/west-2 ErrorLogPathname=/var/log/ruvo/west-2.log RV001=10.20.0.6,2)"
for site in east west-2; do
    check "manifest of $site: schema" schema "$work/fleet/manifests/$site.yaml"
    check "manifest of $site: its own" not grep -q 'yard\|"17 ' "$work/fleet/manifests/$site.yaml"
done
# The check itself must be able to fail.
sed 's/Forbid/Never/' packaging/fleet/site.yaml >"$work/fleet/value.yaml"
sed 's/timeZone/timezone/' packaging/fleet/site.yaml >"$work/fleet/name.yaml"
check "a wrong value is found" not schema "$work/fleet/value.yaml"
check "a misspelt name is found" not schema "$work/fleet/name.yaml"

recipe=packaging/container/Containerfile
check "the container's recipe" "$work/fleet/node_modules/.bin/dockerfile-utils" lint "$PWD/$recipe"
matches() { [[ $1 == $2 ]]; }
check "it installs this package" matches "$(basename "$deb")" "$(sed -n 's/^COPY \([^ ]*\) .*/\1/p' $recipe)"
check "its user is the manifests'" equal "$(sed -n 's/^USER \([0-9]*\):.*/\1/p' $recipe)" "$(sed -n 's/.*runAsUser: //p' packaging/fleet/site.yaml)"
