#!/usr/bin/env bash
# Nights of many relays with failures of every kind, and an account of every event. The last line is the count.
#   scripts/month.sh [--verbose] [NIGHTS [RELAYS [SEED]]]      default: 8 nights of 40 relays, seed 1
# The long form is scripts/month.sh 30 1000. Where users may make no namespaces, only root can run it.
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/setup.sh month
scripts/build.sh release ruvo ruvoctl p32ls oncrpc HalvexCryptoKit
export PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=tests/support:tests/crash
exec /usr/bin/python3 tests/month/month_test.py "$@"
