#!/usr/bin/env bash
# Sets up, builds and runs all tests. The last line is the count.
#   scripts/test.sh [PRESET]        default: release
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-release}
scripts/setup.sh
echo "Building ($preset)"
scripts/build.sh "$preset"
scripts/check_rooms.sh

echo "Testing"
log=build/$preset/test.log
ctest --test-dir "build/$preset" -j "$(nproc)" --output-on-failure >"$log" 2>&1 || true
total=$(grep -oP 'tests? failed out of \K[0-9]+' "$log" || echo 0)
failed=$(grep -oP '[0-9]+(?= tests? failed out of)' "$log" || echo "$total")
if [ "$total" -eq 0 ] || [ "$failed" -gt 0 ]; then
    cat "$log"
    [ "$total" -gt 0 ] || { echo "test.sh: no test ran" >&2; failed=1; total=1; }
fi

count() { git ls-files -- "$@" | grep -E '\.(cpp|h|c|idl|rc|def)$' | xargs -r cat | grep -cvE '^\s*$' || true; }
if git rev-parse --git-dir >/dev/null 2>&1; then
    code=$(count src sim tools include)
    tests=$(count tests)
    echo "Lines of tests / lines of code: $tests / $code = $(awk "BEGIN { printf \"%.2f\", $tests / $code }")"
fi
echo "$((total - failed)) passed, $failed failed"
[ "$failed" -eq 0 ]
