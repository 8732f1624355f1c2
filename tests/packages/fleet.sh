# What docs/fleet.md offers: manifests against their schema, the container's recipe, its steps. Sourced by run.sh.
# shellcheck shell=bash
echo "Looking at the fleet's recipes"
mkdir "$work/fleet" "$work/fleet/sites" "$work/fleet/manifests"
cp tests/packages/fleet/manifests.mjs "$work/fleet"
ln -s "$PWD/build/npm/node_modules" "$work/fleet/node_modules" # by scripts/setup.sh: nothing is downloaded here
schema() { # a file of manifests
    (cd "$work/fleet" && node manifests.mjs "$1" "$work/fleet/typed.ts" &&
        node_modules/.bin/tsc --noEmit --strict --skipLibCheck --module esnext --moduleResolution bundler typed.ts)
}
# The document's own loop makes the manifests of two sites.
touch "$work/fleet/sites/east.ini" "$work/fleet/sites/west-2.ini"
ln -s "$PWD/packaging" "$work/fleet/packaging"
sed -n '/^```sh$/,/^```$/p' docs/fleet.md | sed '/^```/d' >"$work/fleet/loop"
(cd "$work/fleet" && bash -eu loop)
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
check "it installs this package" grep -q "^COPY $(basename "$deb") " "$recipe"
check "its user is the manifests'" equal "$(sed -n 's/^USER \([0-9]*\):.*/\1/p' $recipe)" "$(sed -n 's/.*runAsUser: //p' packaging/fleet/site.yaml)"
