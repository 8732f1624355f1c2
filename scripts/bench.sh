#!/usr/bin/env bash
# Builds and runs the benchmarks, and prints one table: each figure beside what it is to be compared with.
# Arguments go to the benchmarks (--benchmark_filter=REGEX leaves rows out). A figure that misses its aim does
# not fail the script: what a disk or a busy machine takes is no fault of the program.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
scripts/build.sh release bench_ruvo ruvo ruvoctl p32ls oncrpc
exec build/release/bin/bench_ruvo "$@"
