#!/usr/bin/env bash
# Relays that never end and relays that never answer, and a night of a thousand slow ones. The last line is the count.
#   tests/endurance/run.sh
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/setup.sh
scripts/build.sh release ruvo ruvoctl p32ls oncrpc
export PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=tests/support
exec /usr/bin/python3 tests/endurance/endurance_test.py
