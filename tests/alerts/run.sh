#!/usr/bin/env bash
# The alert rules for Prometheus, and the metrics that they are about, by Prometheus' own tool. The last line is the count.
#   tests/alerts/run.sh
set -euo pipefail
cd "$(dirname "$0")/../.."
export PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=tests/support
exec /usr/bin/python3 tests/alerts/alerts_test.py "$(realpath "${RUVO_BIN_DIR:-build/release/bin}")"
