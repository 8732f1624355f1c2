#!/usr/bin/env bash
# Simulates many nights of many relays in which relays, runs, disks and clocks fail, and accounts for every event.
#   scripts/month.sh [--verbose] [NIGHTS [RELAYS [SEED]]]      default: 8 nights of 40 relays, seed 1
# The long form: scripts/month.sh 30 1000
exec "$(dirname "$0")/../tests/month/run.sh" "$@"
