#!/usr/bin/env bash
# Fuzzes under the sanitizers. The last line is the count of targets.
#   scripts/fuzz.sh [--short] [TARGET...]     a fixed number of executions each, from the committed inputs alone
#   scripts/fuzz.sh MINUTES [TARGET...]       so many minutes each, one target per processor at a time
#   scripts/fuzz.sh --runs COUNT [TARGET...]  so many executions each
exec "$(dirname "$0")/../fuzz/run.sh" "$@"
