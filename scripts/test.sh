#!/usr/bin/env bash
# Sets up, builds and runs all tests. The last line is the count.
#   scripts/test.sh [PRESET]        default: release
# What needs more tools, such as the Windows programs, is tested too where scripts/setup.sh SET has installed them.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-release}
scripts/setup.sh
echo "Building ($preset)"
scripts/build.sh "$preset"
python3 -B scripts/upkeep/check_rooms.py --calls "build/$preset"

echo "Testing"
log=build/$preset/test.log
ctest --test-dir "build/$preset" -j "$(nproc)" --output-on-failure >"$log" 2>&1 || true
total=$(grep -oP 'tests? failed out of \K[0-9]+' "$log" || echo 0)
failed=$(grep -oP '[0-9]+(?= tests? failed out of)' "$log" || echo "$total")
if [ "$total" -eq 0 ] || [ "$failed" -gt 0 ]; then
    cat "$log"
    [ "$total" -gt 0 ] || { echo "test.sh: no test ran" >&2; failed=1; total=1; }
fi

leg() { # a part that needs more tools: what, the set of setup.sh that installs them, its script, the tools
    local what=$1 set=$2 script=$3
    shift 3
    if [ "$(command -v "$@" | wc -l)" -lt $# ]; then
        echo "$what: skipped (scripts/setup.sh $set installs their tools)"
        return
    fi
    echo "Testing $what"
    local log=build/$set.log passed lost
    "$script" >"$log" 2>&1 || cat "$log"
    passed=$(tail -1 "$log" | grep -oP '^[0-9]+(?= passed, [0-9]+ failed$)' || echo 0)
    lost=$(tail -1 "$log" | grep -oP '(?<= passed, )[0-9]+(?= failed$)' || echo 1)
    total=$((total + passed + lost))
    failed=$((failed + lost))
}
# Each script's last line is its count.
leg "an account of events over bad ends" crash tests/crash/run.sh
leg "nights with failures of every kind" month tests/month/run.sh faketime
leg "endless and silent relays" endurance tests/endurance/run.sh
leg "the Windows programs" windows tests/windows/run.sh /usr/lib/wine/wine64 i686-w64-mingw32-g++-posix \
    x86_64-w64-mingw32-g++-posix x86_64-w64-mingw32-widl
leg "the fuzz targets" fuzz fuzz/run.sh clang++
leg "the report in a browser" browser tests/browser/run.sh chromium chromedriver
RUVO_BIN_DIR=$PWD/build/$preset/bin leg "the metrics and their alert rules" alerts tests/alerts/run.sh promtool
RUVO_BIN_DIR=$PWD/build/$preset/bin leg "alerts in a Prometheus" prometheus tests/machine/prometheus.sh prometheus promtool \
    prometheus-node-exporter faketime
RUVO_BIN_DIR=$PWD/build/$preset/bin leg "the archive in a database server" database tests/database/run.sh psql sqlite3 \
    /usr/lib/postgresql/*/bin/postgres
if [ "$(id -u)" -eq 0 ]; then
    leg "the Debian package" package-test tests/packages/run.sh lintian lowdown mandoc man systemd-analyze node npm
    leg "the package under systemd" systemd tests/machine/systemd.sh debootstrap systemd-nspawn lowdown
else
    echo "the Debian package: skipped (it is installed for its test, which needs root)"
fi

count() { git ls-files -- "$@" | grep -E '\.(cpp|h|c|idl|rc|def)$' | xargs -r cat | grep -cvE '^\s*$' || true; }
if git rev-parse --git-dir >/dev/null 2>&1; then
    code=$(count src sim tools include)
    tests=$(count tests)
    echo "Lines of tests / lines of code: $tests / $code = $(awk "BEGIN { printf \"%.2f\", $tests / $code }")"
fi
echo "$((total - failed)) passed, $failed failed"
[ "$failed" -eq 0 ]
