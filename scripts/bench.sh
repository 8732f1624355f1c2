#!/usr/bin/env bash
# Builds and runs the benchmarks; arguments go to them (--benchmark_filter=REGEX and so on).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
scripts/build.sh release bench_ruvo ruvo p32ls oncrpc
exec build/release/bin/bench_ruvo --benchmark_color=false "$@"
