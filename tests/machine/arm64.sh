#!/usr/bin/env bash
# The Debian package for arm64: cross-built, and its programs run in user-mode emulation, where they visit the simulated substation.
# The package stays in build/arm64. The last line is the count.
#   tests/machine/arm64.sh
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/setup.sh packages arm64 >&2
native=$(scripts/package.sh)
root=$PWD/build/machine/arm64
source tests/machine/debian.sh
unpack_libraries arm64 libsqlite3-dev,libssl-dev,libstdc++6

RUVO_DEPENDS=$(dpkg-deb -f "$native" Depends)
export RUVO_DEPENDS
scripts/build.sh arm64 package_files
rm -f build/arm64/ruvo_*.deb
SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -l packaging/debian/changelog -S Timestamp)
export SOURCE_DATE_EPOCH
cmake -E chdir build/arm64 cpack -G DEB >build/machine/arm64.log
deb=$(ls build/arm64/ruvo_*_arm64.deb)
rm -rf "$root/package"
dpkg-deb -x "$deb" "$root/package"

passed=0 failed=0
check() { # what, a command
    local what=$1
    shift
    if "$@" >build/machine/arm64.log 2>&1; then passed=$((passed + 1)); else failed=$((failed + 1)); echo "FAILED: $what"; cat build/machine/arm64.log; fi
}
emulated="qemu-aarch64-static -L $root"
same_files() { diff <(dpkg-deb -c "$native" | awk '{ print $1, $2, $6, $7, $8 }') <(dpkg-deb -c "$deb" | awk '{ print $1, $2, $6, $7, $8 }'); }
all_arm() { file "$root"/package/usr/lib/ruvo/{ruvo,ruvoctl,*.so,simulator/*.so} | awk '!/ARM aarch64/ { print; bad = 1 } END { exit bad }'; }
check "the same files as for this machine" same_files
check "every program and library is for that machine" all_arm
check "its architecture" test "$(dpkg-deb -f "$deb" Architecture)" = arm64
check "what it depends on" test "$(dpkg-deb -f "$deb" Depends)" = "$RUVO_DEPENDS"
check "the substation's visit" packaging/debian/tests/demo-substation "$root/package" $emulated
cat build/machine/arm64.log
check "the version" sh -c "$emulated '$root/package/usr/lib/ruvo/ruvoctl' --version | grep -q '[0-9]'"
check "nothing but what it may say" lintian --allow-root -I --fail-on error,warning,info "$deb"
echo "$passed passed, $failed failed"
[ $failed -eq 0 ]
