#!/usr/bin/env bash
# The test that the Debian package has with it, run by autopkgtest on a small Debian 12 that has nothing but what the package
# depends on. Needs root and Debian's archive. The last line is the count.
#   tests/machine/autopkgtest.sh
set -euo pipefail
cd "$(dirname "$0")/../.."
[ "$(id -u)" -eq 0 ] || { echo "autopkgtest: a system is made for the test, which needs root" >&2; exit 1; }
scripts/setup.sh autopkgtest >&2
deb=$(scripts/package.sh)
source tests/machine/debian.sh
base=build/machine/base.tar work=build/machine/autopkgtest
make_debian "$base"
rm -rf --one-file-system "$work"
mkdir -p "$work/root" "$work/source/examples"
tar -C "$work/root" -xf "$base"
cp /etc/resolv.conf "$work/root/etc"
cp -r packaging/debian "$work/source/debian"
cp -r examples/substation "$work/source/examples"
touch "$work/source/debian/files" # which says that all is built: else the tools for that are installed first
status=0
# (A mount of its own goes with its namespace.)
unshare --mount sh -c 'mount --bind /proc "$1/root/proc" && exec autopkgtest -B "$2" "$1/source" -- chroot "$1/root"' sh \
    "$work" "$deb" >"$work/log" 2>&1 || status=$?
passed=$(grep -cE '^autopkgtest.*: PASS$|^demo-substation +PASS' "$work/log" || true)
[ "$status" -eq 0 ] && [ "$passed" -gt 0 ] || tail -40 "$work/log"
rm -rf --one-file-system "$work/root"
[ "$status" -eq 0 ] || passed=0
echo "$((passed > 0 ? 1 : 0)) passed, $((passed > 0 ? 0 : 1)) failed"
[ "$passed" -gt 0 ]
