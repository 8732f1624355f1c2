#!/usr/bin/env bash
# The package's limit of memory (MemoryMax=), reached in mid-visit, on an emulated machine: a container that systemd boots has no
# such limits. Takes six minutes and 4 GB below build/machine. The last line is the count.
#   tests/machine/memory_limit.sh
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/setup.sh machine >&2
deb=$(scripts/package.sh)
source tests/machine/emulator.sh
system=build/machine/memory_limit.tar root=build/machine/memory_limit
make_machine $system python3,libstdc++6,libsqlite3-0
unpack_machine $system $root
place=$root/opt/ruvo
mkdir -p $place
cp "$deb" tests/support/checks.py tests/machine/{booted_system,counted_relay,packaged_site,memory_limit_test}.py $place
run_machine $root 3G "cd /opt/ruvo && python3 memory_limit_test.py $(basename "$deb")" 1h
