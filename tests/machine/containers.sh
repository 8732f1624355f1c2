#!/usr/bin/env bash
# Builds the image of the container's recipe and runs it in a container engine as the fleet's manifest says, with visits that are
# stopped and killed. Needs root and Debian's archive; everything is below build/machine. The last line is the count.
#   tests/machine/containers.sh
set -euo pipefail
cd "$(dirname "$0")/../.."
[ "$(id -u)" -eq 0 ] || { echo "containers: an image is built for the test, which needs root" >&2; exit 1; }
scripts/setup.sh containers >&2
deb=$(scripts/package.sh)
source tests/machine/debian.sh
base=build/machine/base.tar
make_debian "$base"
export PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=tests/support
# Where both hierarchies of control groups are mounted, the engine would refuse to start: it sees only one of them.
exec unshare --mount /bin/sh -c 'umount /sys/fs/cgroup/unified 2>/dev/null; exec "$@"' sh \
    /usr/bin/python3 tests/machine/containers_test.py "$base" "$deb"
