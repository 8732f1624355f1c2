#!/usr/bin/env bash
# Kills the extractor at random moments, and looks whether anything written before is lost. The last line is the count.
#   scripts/crash.sh [KILLS [SEED]]      default: 60 kills, seed 1
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/setup.sh
scripts/build.sh release ruvo ruvoctl p32ls oncrpc
export PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=tests/support
exec /usr/bin/python3 tests/crash/crash_test.py "$@"
