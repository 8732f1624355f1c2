#!/usr/bin/env bash
# Configures and builds one preset (default: release); quiet unless something fails.
#   scripts/build.sh [PRESET [TARGET...]]
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-release}
[ $# -eq 0 ] || shift
targets=()
[ $# -eq 0 ] || targets=(--target "$@")

log=$(mktemp)
trap 'rm -f "$log"' EXIT
run() {
    "$@" >"$log" 2>&1 || {
        cat "$log" >&2
        echo "build.sh: $1 failed for preset $preset" >&2
        exit 1
    }
}
run cmake --preset "$preset"
run cmake --build "build/$preset" -j "$(nproc)" "${targets[@]}"
