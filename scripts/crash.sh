#!/usr/bin/env bash
# Kills the extractor at random moments of its runs, and looks each time whether anything written before is lost.
#   scripts/crash.sh [KILLS [SEED]]      default: 60 kills, seed 1
exec "$(dirname "$0")/../tests/crash/run.sh" "$@"
