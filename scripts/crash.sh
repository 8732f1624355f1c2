#!/usr/bin/env bash
# Ends the extractor in bad ways at random moments of its runs, and accounts for every event.
#   scripts/crash.sh [--workers N] [--round N] [--keep FOLDER] [ROUNDS [SEED]]      default: 300 rounds, seed 1
exec "$(dirname "$0")/../tests/crash/run.sh" "$@"
