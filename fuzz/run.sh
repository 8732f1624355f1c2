#!/usr/bin/env bash
# Builds the targets of this folder under the sanitizers and runs them; scripts/fuzz.sh describes the arguments. The last
# line is the count of targets. Inputs found by a run with minutes or --runs are kept in build/fuzz/inputs, and the next run
# begins with them. An input that fails is left in build/fuzz/findings; once its cause is fixed, move it to
# fuzz/regressions/TARGET.
set -euo pipefail
cd "$(dirname "$0")/.."

declare -A short=([archive]=6000 [cell]=20000 [day_file]=4000 [ethernet]=200000 [extraction]=4000 [find]=5000
    [format]=20000 [ini]=6000 [ini_edit]=8000 [log]=20000 [record]=30000 [recording]=4000 [registry]=20000 [report]=3000
    [scramble]=200000 [status]=1500 [substation]=3000 [values]=10000 [variant]=50000)
declare -A longest=([ethernet]=64 [scramble]=64 [variant]=64 [find]=128 [registry]=256 [format]=512 [cell]=512
    [values]=512 [record]=1024 [extraction]=1024 [ini]=1024 [ini_edit]=1024 [log]=1024 [archive]=1024 [day_file]=2048
    [report]=2048 [recording]=2048 [status]=2048 [substation]=2048) # bytes
# Targets whose inputs have the form of those of another one, and so use its dictionary.
declare -A alike=([archive]=day_file [report]=day_file [status]=day_file [ini_edit]=ini)

kept=yes
case "${1:---short}" in
--short)
    [ $# -eq 0 ] || shift
    kept=
    ;;
--runs)
    runs=${2:-}
    [[ "$runs" =~ ^[1-9][0-9]*$ ]] || { echo "fuzz.sh: --runs: expected a number of executions" >&2; exit 2; }
    shift 2
    ;;
*[!0-9]*) kept= ;; # a target
*)
    minutes=$1
    shift
    ;;
esac
targets=("$@")
[ $# -gt 0 ] || mapfile -t targets < <(printf '%s\n' "${!short[@]}" | sort)
for target in "${targets[@]}"; do
    [ -n "${short[$target]:-}" ] || { echo "fuzz.sh: no target '$target' (there are: ${!short[*]})" >&2; exit 2; }
done

scripts/setup.sh fuzz
echo "Building (fuzz)"
scripts/build.sh fuzz "${targets[@]/#/fuzz_}"
out=build/fuzz
mkdir -p $out/inputs $out/findings $out/logs
# Short call stacks of allocations, and a small quarantine for freed memory: twice as fast.
export ASAN_OPTIONS=malloc_context_size=4:quarantine_size_mb=16

# Some targets need a folder, which is quickest in memory.
[ ! -w /dev/shm ] || export TMPDIR=/dev/shm

run() { # one target
    local target=$1 inputs=$out/inputs/$1 limit=(-runs="${runs:-${short[$1]}}") TIMEFORMAT=%U
    [ -z "${minutes:-}" ] || limit=(-max_total_time=$((minutes * 60)))
    if [ -z "$kept" ]; then
        inputs=$(mktemp -d "$out/short.XXXXXX")
        limit+=(-seed=1)
    fi
    mkdir -p "$inputs" fuzz/regressions/"$target"
    local dictionary=fuzz/dictionaries/$target
    [ -f "$dictionary" ] || dictionary=fuzz/dictionaries/${alike[$target]:-}
    [ ! -f "$dictionary" ] || limit+=(-dict="$dictionary")
    # (The fuzzer's entropic schedule would take more time than the target itself.)
    { time $out/bin/fuzz_"$target" "${limit[@]}" -max_len="${longest[$target]}" -entropic=0 -timeout=20 \
        -rss_limit_mb=3072 -print_final_stats=1 -artifact_prefix="$out/findings/$target-" \
        "$inputs" fuzz/corpus/"$target" fuzz/regressions/"$target" >"$out/logs/$target" 2>&1; } \
        2>"$out/logs/$target.seconds" || echo FAILED >>"$out/logs/$target"
    [ -n "$kept" ] || rm -rf "$inputs"
}

running=0
for target in "${targets[@]}"; do
    if [ "$running" -ge "$(nproc)" ]; then
        wait -n
        running=$((running - 1))
    fi
    run "$target" &
    running=$((running + 1))
done
wait

failed=0
row() { printf '%-12s %14s %10s %8s %8s %9s\n' "$@"; }
row target executions cpu-second edges corpus findings
rate() { awk -v count="$1" -v seconds="$2" 'BEGIN { printf "%.0f", (seconds > 0 ? count / seconds : 0) }'; }
for target in "${targets[@]}"; do
    log=$out/logs/$target
    stat() { grep -aoP "^stat::$1: *\K[0-9]+" "$log" | tail -1 || true; }
    last() { grep -aoP "$1" "$log" | tail -1 || true; }
    findings=$(grep -acP '^(PROPERTY DOES NOT HOLD|SUMMARY: |FAILED$)' "$log" || true)
    [ "$findings" -eq 0 ] || failed=$((failed + 1))
    executions=$(stat number_of_executed_units)
    row "$target" "$executions" "$(rate "${executions:-0}" "$(tail -1 "$log.seconds")")" "$(last ' cov: \K[0-9]+')" \
        "$(last ' corp: \K[0-9]+')" "$((findings > 0 ? 1 : 0))"
done
for target in "${targets[@]}"; do
    grep -aP '^(PROPERTY DOES NOT HOLD|SUMMARY: |.*runtime error: |.*Test unit written to )' "$out/logs/$target" |
        sed "s/^/$target: /" >&2 || true
done
echo "$((${#targets[@]} - failed)) passed, $failed failed"
[ "$failed" -eq 0 ]
