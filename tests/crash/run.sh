#!/usr/bin/env bash
# Ends the extractor in bad ways at random moments, and accounts for every event. The last line is the count.
#   scripts/crash.sh [--workers N] [--round N] [--keep FOLDER] [ROUNDS [SEED]]      default: 300 rounds, seed 1
# With --round only that round of the seed is played, as a failure says. As root, or where users may make namespaces, disks
# are filled too.
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/setup.sh
scripts/build.sh release ruvo ruvoctl p32ls oncrpc HalvexCryptoKit
export PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=tests/support
exec /usr/bin/python3 tests/crash/crash_test.py "$@"
