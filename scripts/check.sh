#!/usr/bin/env bash
# The checks beside the tests; each can be named, all run by default.
#   scripts/check.sh [format|rooms|functions|tidy|cppcheck|clang|asan|tsan|valgrind|month ...]
# The month, a thousand relays over thirty nights, runs only when it is named. So do those that make or emulate a machine first,
# for two hours at most (tests/machine):
#   scripts/check.sh autopkgtest|containers|fleet|shares|memory_limit|s390x|arm64|windows32 ...
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh checks
sources() { git ls-files -co --exclude-standard -- src sim tools tests bench fuzz include examples | grep -E '\.(cpp|h|c)$'; }
product() { git ls-files -co --exclude-standard -- src sim tools | grep -E '\.cpp$' | grep -v /windows/; }

check_format() { sources | grep -v '\.c$' | xargs clang-format --dry-run --Werror; }
check_rooms() {
    scripts/build.sh release
    python3 -B scripts/upkeep/check_rooms.py --calls build/release
    python3 -B scripts/upkeep/check_rooms_test.py --quiet
}
check_functions() {
    python3 -B scripts/upkeep/check_functions.py
    python3 -B scripts/upkeep/check_functions_test.py --quiet
}
check_tidy() {
    cmake --preset debug >/dev/null
    product | xargs -P "$(nproc)" -n 4 clang-tidy -p build/debug --quiet 2>/dev/null
}
check_cppcheck() {
    cppcheck --enable=warning,performance,portability --inline-suppr --error-exitcode=1 --quiet --std=c++20 \
        -I src -I . --suppress=missingIncludeSystem $(product)
}
run_tests() { # preset, then variables for the run
    local preset=$1
    shift
    scripts/build.sh "$preset"
    env "$@" ctest --test-dir "build/$preset" -j "$(nproc)" --output-on-failure -Q || {
        ctest --test-dir "build/$preset" --rerun-failed --output-on-failure
        return 1
    }
}
check_clang() { run_tests clang; }
check_asan() { run_tests asan; }
check_tsan() { run_tests tsan TSAN_OPTIONS=halt_on_error=1; }
check_valgrind() {
    scripts/build.sh debug
    for program in build/debug/bin/test_*; do
        [ "$program" != build/debug/bin/test_e2e ] || continue # that one starts other programs
        valgrind --quiet --error-exitcode=1 --leak-check=full "$program" --gtest_brief=1 >/dev/null
    done
}
check_month() { scripts/month.sh 30 1000; }
for machine in autopkgtest containers fleet shares memory_limit s390x arm64 windows32; do
    eval "check_$machine() { tests/machine/$machine.sh; }"
done

for check in "${@:-format rooms functions tidy cppcheck clang asan tsan valgrind}"; do
    for name in $check; do
        echo "== $name"
        "check_$name"
    done
done
echo "all checks passed"
