#!/usr/bin/env bash
# Builds the Debian package and leaves it in build/PRESET, and beside it, as .spdx.json, what it was made from.
#   scripts/package.sh [PRESET]       default: release
#   scripts/package.sh --test         also installs, runs, upgrades and removes it on this machine, as root, and
#                                     leaves the machine as it was; the last line is the count
set -euo pipefail
cd "$(dirname "$0")/.."
if [ "${1:-}" = --test ]; then
    exec tests/packages/run.sh
fi
preset=${1:-release}
scripts/setup.sh packages >&2
scripts/build.sh "$preset" package_files
rm -f "build/$preset"/ruvo_*.deb "build/$preset"/ruvo_*.spdx.json
# The date of everything in it, so that the same source makes the same bytes at any time.
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(dpkg-parsechangelog -l packaging/debian/changelog -S Timestamp)}
export SOURCE_DATE_EPOCH
log=$(mktemp)
trap 'rm -f "$log"' EXIT
cmake -E chdir "build/$preset" cpack -G DEB >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
deb=$(ls "build/$preset"/ruvo_*.deb)
scripts/upkeep/sbom.sh "$preset" "$deb" >"${deb%.deb}.spdx.json"
echo "$deb"
