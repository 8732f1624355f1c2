#!/usr/bin/env bash
# Builds the Debian package and leaves it in build/PRESET.
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
rm -f "build/$preset"/ruvo_*.deb
log=$(mktemp)
trap 'rm -f "$log"' EXIT
cmake -E chdir "build/$preset" cpack -G DEB >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
ls "build/$preset"/ruvo_*.deb
