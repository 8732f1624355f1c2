#!/usr/bin/env bash
# Two sites over two weeks of simulated nights; what ruvoctl then says of them is compared with the texts in this folder.
#   tests/night/run.sh [--update] [--keep] [PROGRAMS]
# The last line is the count. With --update the texts become what ruvoctl says now: read the difference before you commit it.
set -euo pipefail
cd "$(dirname "$0")/../.."
export PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=tests/support
exec /usr/bin/python3 tests/night/night_test.py "$@"
