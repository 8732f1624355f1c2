#!/usr/bin/env bash
# The COM connector against the simulated server's program, under Wine. The last line is the count.
#   tests/windows/com.sh FOLDER      the folder of test_com.exe and p32ls-sim.exe (64 bits)
# A WINEPREFIX that exists is used, and every process in it ended; without one, a fresh one is made and removed.
set -euo pipefail
[ -f "${1:-}/test_com.exe" ] || { echo "usage: com.sh FOLDER (with test_com.exe)" >&2; exit 2; }
folder=$(cd "$1" && pwd)
work=$(mktemp -d)
wine=/usr/lib/wine/wine64
wineserver=/usr/lib/wine/wineserver
export WINEDEBUG=-all LC_ALL=C.UTF-8
# No questions, no menu files, and a program that crashes just ends.
export WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe=d;winedbg.exe=d"
unset DISPLAY WINEARCH

end_session() {
    "$wineserver" -k >/dev/null 2>&1 || true # every process of this prefix, and of no other
    "$wineserver" -w >/dev/null 2>&1 || true
}
clean_up() {
    [ ! -d "${WINEPREFIX:-$work/prefix}" ] || end_session
    rm -rf "$work"
}
trap clean_up EXIT
trap 'exit 1' INT TERM

# Into files, never pipes: a server started meanwhile keeps them open.
run() { timeout --kill-after=10 "$@" </dev/null; }
if [ ! -d "${WINEPREFIX:-}" ]; then
    export WINEPREFIX=$work/prefix
    run 300 "$wine" wineboot -i >"$work/wineboot.log" 2>&1
fi

passed=0
failed=0
# A session for each: COM hangs in the session that made the Windows, and Wine goes on offering the class object of
# a server that was killed for as long as the session lasts.
for tests in '-KilledServer.*' KilledServer.EndsTheWaitForAStartedCommand KilledServer.EndsTheCallInProgress; do
    end_session
    run 200 "$wine" "$folder/test_com.exe" --gtest_filter="$tests" >"$work/out" 2>"$work/err" && ended=0 || ended=$?
    if [ "$ended" -eq 124 ]; then
        # Wine itself hangs once in a long while, when COM lets go of an interface as a call returns.
        echo "test_com.exe $tests hung; once more in a new session"
        end_session
        run 200 "$wine" "$folder/test_com.exe" --gtest_filter="$tests" >"$work/out" 2>"$work/err" && ended=0 || ended=$?
    fi
    good=$(grep -c '^\[       OK \]' "$work/out" || true)
    bad=$(grep -c '^\[ RUN      \]' "$work/out" || true)
    bad=$((bad - good)) # what has begun and not ended well
    passed=$((passed + good))
    failed=$((failed + bad))
    if [ "$ended" -ne 0 ] || [ "$bad" -ne 0 ] || [ "$good" -eq 0 ]; then
        [ "$bad" -ne 0 ] || failed=$((failed + 1))
        echo "FAILED: test_com.exe $tests (status $ended)"
        grep -v '^\[       OK \]' "$work/out" || true
        cat "$work/err"
    fi
done
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
