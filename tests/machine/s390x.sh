#!/usr/bin/env bash
# The tests of the rooms on a machine of the other byte order, in user-mode emulation: byte order and alignment. Needs root. The
# last line is the count.
#   tests/machine/s390x.sh
set -euo pipefail
cd "$(dirname "$0")/../.."
[ "$(id -u)" -eq 0 ] || { echo "s390x: libraries of another machine are mounted for the emulator, which needs root" >&2; exit 1; }
scripts/setup.sh s390x >&2
scripts/upkeep/libraries.sh s390x libssl-dev libstdc++6
scripts/build.sh s390x
passed=0 failed=0
# (The emulator has the kernel execute /proc/self/exe, which knows no such program.)
left_out=Users.ContinuesWithNothingOfRoot
for program in build/s390x/bin/test_*; do
    log=build/s390x/$(basename "$program").log status=0
    timeout 1800 tests/machine/emulated.sh s390x "$program" "--gtest_filter=-$left_out" >"$log" 2>&1 || status=$?
    good=$(grep -c '^\[       OK \]' "$log" || true)
    bad=$(($(grep -c '^\[ RUN      \]' "$log" || true) - good)) # what has begun and not ended well
    [ "$bad" -gt 0 ] || [ "$status" -eq 0 ] || bad=1
    [ "$bad" -eq 0 ] || { echo "$program: ended with $status"; cat "$log"; }
    echo "  $(basename "$program"): $good passed, $bad failed"
    passed=$((passed + good)) failed=$((failed + bad))
done
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
