#!/usr/bin/env bash
# The Debian package on a small Debian 12 that a real systemd runs, in a container without an engine: units, timers, stops, upgrade
# and removal. Needs root; the system is made once, below build/machine. The last line is the count.
#   tests/machine/systemd.sh
set -euo pipefail
cd "$(dirname "$0")/../.."
[ "$(id -u)" -eq 0 ] || { echo "systemd: a system is booted for the test, which needs root" >&2; exit 1; }
scripts/setup.sh systemd >&2
deb=$(scripts/package.sh)
source tests/machine/debian.sh
system=build/machine/systemd.tar
make_debian "$system" --include=systemd-sysv,dbus,logrotate,procps,libstdc++6,libsqlite3-0
export PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=tests/support
exec /usr/bin/python3 tests/machine/systemd_test.py "$system" "$deb"
