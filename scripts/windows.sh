#!/usr/bin/env bash
# Builds the Windows programs for 32 and 64 bits, looks into them, and runs the 64-bit ones under Wine.
#   scripts/windows.sh
exec "$(dirname "$0")/../tests/windows/run.sh" "$@"
