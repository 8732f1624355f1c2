#!/usr/bin/env bash
# Builds the packages and leaves them in build/PRESET, and beside each, as .spdx.json, what it was made from: of
# windows-x86 and windows-x64 a zip and a set-up program, of another preset the Debian package.
#   scripts/package.sh [PRESET]       default: release. Files for Windows are signed if RUVO_SIGN_CERTIFICATE and
#                                     RUVO_SIGN_KEY name a certificate (packaging/windows/sign.sh)
#   scripts/package.sh arm64          the Debian package for arm64, cross-built, without a .spdx.json; that of this
#                                     machine, which tells what it depends on, is built first
#   scripts/package.sh --test         also installs, runs, upgrades and removes it on this machine, as root, and
#                                     leaves the machine as it was; the last line is the count
set -euo pipefail
cd "$(dirname "$0")/.."
if [ "${1:-}" = --test ]; then
    exec tests/packages/run.sh
fi
umask 022 # folders of the package get their modes by it
preset=${1:-release}
case "$preset" in
windows-*)
    scripts/setup.sh windows >&2
    scripts/build.sh "$preset"
    exec packaging/windows/make_packages.sh "$preset"
    ;;
arm64)
    native=$(scripts/package.sh)
    scripts/setup.sh arm64 >&2
    # (The last one is for those who run the programs in an emulator.)
    scripts/upkeep/libraries.sh arm64 libsqlite3-dev libssl-dev libstdc++6
    RUVO_DEPENDS=$(dpkg-deb -f "$native" Depends)
    export RUVO_DEPENDS
    ;;
esac
scripts/setup.sh packages >&2
scripts/build.sh "$preset" package_files
rm -f "build/$preset"/ruvo_*.deb "build/$preset"/ruvo_*.spdx.json
# The date of everything in it, so that the same source makes the same bytes at any time. (Not so if a compiler cache rewrites
# the names of folders, such as ccache with a base_dir: they are part of what the programs' build IDs are made from.)
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(dpkg-parsechangelog -l packaging/debian/changelog -S Timestamp)}
export SOURCE_DATE_EPOCH
log=$(mktemp)
trap 'rm -f "$log"' EXIT
cmake -E chdir "build/$preset" cpack -G DEB >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
deb=$(ls "build/$preset"/ruvo_*.deb)
# (What was unpacked for another machine is not what dpkg knows of this one.)
[ "$preset" = arm64 ] || scripts/upkeep/sbom.sh "$preset" "$deb" >"${deb%.deb}.spdx.json"
echo "$deb"
