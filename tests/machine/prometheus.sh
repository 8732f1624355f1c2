#!/usr/bin/env bash
# The alert rules in a Prometheus that scrapes a node exporter, over sites whose state changes; hours are seconds. Both listen
# on the loopback alone and end with the test. Takes two minutes. The last line is the count.
#   tests/machine/prometheus.sh
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/setup.sh prometheus
[ -n "${RUVO_BIN_DIR:-}" ] || scripts/build.sh release ruvo ruvoctl p32ls oncrpc
export PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=tests/support
exec /usr/bin/python3 tests/machine/prometheus_test.py "$(realpath "${RUVO_BIN_DIR:-build/release/bin}")"
