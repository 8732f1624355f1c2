#!/usr/bin/env bash
# The Debian package on a small Debian 12 that a real systemd runs, in a container without an engine: units, timers, stops, upgrade
# and removal. Needs root; the system is made once, below build/machine. The last line is the count.
#   tests/machine/systemd.sh
set -euo pipefail
cd "$(dirname "$0")/../.."
if [ "$(id -u)" -ne 0 ]; then
    echo "systemd: a system is booted for the test, which needs root" >&2
    exit 1
fi
scripts/setup.sh systemd >&2
deb=$(scripts/package.sh)
mkdir -p build/machine
system=build/machine/systemd.tar
packages=systemd-sysv,dbus,logrotate,procps,libstdc++6,libsqlite3-0
[ -f "$system" ] || {
    rm -rf --one-file-system build/machine/systemd.new
    debootstrap --variant=minbase --include="$packages" bookworm build/machine/systemd.new >build/machine/systemd.log 2>&1 ||
        { tail -5 build/machine/systemd.log; exit 1; }
    rm -f build/machine/systemd.new/var/cache/apt/archives/*.deb
    tar -C build/machine/systemd.new -cf "$system.new" .
    rm -rf --one-file-system build/machine/systemd.new
    mv "$system.new" "$system"
}
export PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=tests/support
exec /usr/bin/python3 tests/machine/systemd_test.py "$system" "$deb"
