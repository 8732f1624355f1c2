#!/usr/bin/env bash
# A night of 200 simulated sites on a Slurm cluster of three nodes on this machine: nodes are lost and frozen, daemons and the controller
# are killed; then the account. Needs root and Debian's archive. The last line is the count.
#   tests/machine/fleet.sh [SITES]
set -euo pipefail
cd "$(dirname "$0")/../.."
[ "$(id -u)" -eq 0 ] || { echo "fleet: the cluster's nodes are namespaces, which need root" >&2; exit 1; }
scripts/setup.sh database >&2
deb=$(scripts/package.sh)
mkdir -p build/machine
export PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=tests/support
exec /usr/bin/python3 tests/machine/fleet_test.py "$deb" "${1:-200}"
