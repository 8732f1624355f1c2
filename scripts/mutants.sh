#!/usr/bin/env bash
# Asks whether the tests notice: makes single random changes in src, one at a time, in copies of the tree, and prints
# those that every test lets pass. The last line is the count: noticed as passed, survivors as failed.
#   scripts/mutants.sh [COUNT [SEED]]        default: 300 1; scripts/upkeep/mutants.py --help has more
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh mutants
exec python3 -B scripts/upkeep/mutants.py "$@"
