#!/usr/bin/env bash
# Kills the extractor at random moments of runs that append, and looks each time whether anything written before is lost.
#   scripts/crash.sh [KILLS [SEED]]      default: 60 kills, seed 1
# After each kill all day files are read with ruvoctl: every earlier byte and record must be as it was. In every third
# case what the killed run had added to its files is first cut at a random place, as a power failure may do that comes
# before the bytes are on the disk. Then a run must complete, store all its events, and say in the error log which files
# it found torn, and where. The moments come from SEED, as far as the machine runs alike. The last line is the count.
set -euo pipefail
cd "$(dirname "$0")/../.."
kills=${1:-60}
RANDOM=${2:-1}
round=5 # kills until the files start anew, so that reading them stays quick
scripts/setup.sh
scripts/build.sh release ruvo ruvoctl p32ls oncrpc

dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
bin=$dir/bin # a copy, so that a long run does not mind a new build
mkdir "$bin"
cp build/release/bin/{ruvo,ruvoctl,p32ls.so,oncrpc.so} "$bin"
export LC_ALL=C TZ=UTC P32LS_SUBSTATION=$dir/substation.toml RUVO_LOCK_DIR=$dir
export RUVO_REGISTRY_USER=$dir/no-registry RUVO_REGISTRY_MACHINE=$dir/no-registry
mkfifo "$dir/never"
exec 3<>"$dir/never" # nothing ever comes from it: a wait without a process

# Without a state file every run gets all events anew: those of relays 1 to 3.
events=(1 12 187)
all=200
{
    echo '[link]'
    echo 'serial = ["COM1"]'
    for i in 1 2 3; do
        cat <<END
[[relay]]
serial = $i
identity = { model = "CR$i", serial = "0000$i", plant = "Yard", description = "Feeder $i" }
cells."05.02" = { number = 230.5, unit = "V" }
cells."09.01" = { flags = 5, size = 1, strings = ["Start", "Trip", "Close"] }
generate = { count = ${events[i - 1]}, kinds = [0, 1, 4], seed = $i }
END
    done
} >"$P32LS_SUBSTATION"
printf '%s\n' '[RUVO_GENERAL]' "EventRootDir=$dir/ev" "ErrorLogPathname=$dir/log" '[RUVO_SERIAL]' RV001=1 RV002=2 RV003=3 >"$dir/site.ini"

# Of the JSON lines of two readings: says which earlier records are gone, how many there are now, and which files end
# torn at which byte.
cat >"$dir/compare.awk" <<'AWK'
function field(name) { match($0, "\"" name "\":(\"[^\"]*\"|[0-9]+)"); return substr($0, RSTART + length(name) + 3, RLENGTH - length(name) - 3) }
FILENAME == ARGV[1] { if (!/"error":/) before[$0]; next }
/"error":/ { torn[field("file")] = field("length") > 0 ? field("offset") : "no"; next }
{ ++now; delete before[$0]; torn[field("file")] = "no" }
END {
    for (line in before) print "gone " line
    print "now " now + 0
    for (file in torn) if (torn[file] != "no") print "torn " substr(file, 2, length(file) - 2) " " torn[file]
}
AWK

passed=0 failed=0 untouched=0 grown=0 cut=0 torn=0 torn_by_kill=0 is_cut=false
declare -A size expected
complain() {
    echo "kill $((passed + failed + 1)): $1" >&2
    good=false
}
start_anew() {
    rm -rf "$dir/ev" "$dir/before"
    mkdir "$dir/ev" "$dir/before"
    : >"$dir/log"
    : >"$dir/before.json"
    want=0 # records that must be there
    size=() expected=()
}
# Runs of this loop by the thousand: nothing below starts a process that the shell can do without.
take_sizes() { # true when they are not those of before
    local changed=1 bytes file
    files=("$dir"/ev/*/*.evt)
    [ -e "${files[0]}" ] || return 1
    while read -r bytes file; do
        [ "${size[$file]:-0}" -eq "$bytes" ] || changed=0
        now[$file]=$bytes
    done < <(stat -c '%s %n' "${files[@]}")
    return $changed
}
complete_run() {
    local begun=${EPOCHREALTIME/./} file
    local -A now=()
    "$bin/ruvo" "$dir/site.ini" || complain "a following run does not complete"
    run_time=$((${EPOCHREALTIME/./} - begun)) # microseconds
    want=$((want + all))
    take_sizes || complain "a following run stores nothing"
    for file in "${!now[@]}"; do size[$file]=${now[$file]}; done
}
kill_run() { # false when the run was over before the kill
    local pid moment=$(((RANDOM * 32768 + RANDOM) % run_time))
    "$bin/ruvo" "$dir/site.ini" &
    pid=$!
    read -r -t "$(printf '%d.%06d' $((moment / 1000000)) $((moment % 1000000)))" -u 3 || true
    kill -KILL "$pid" 2>/dev/null || true
    ! wait "$pid" 2>/dev/null
}
look_at_files() { # and perhaps cut what the killed run has added
    local file
    local -A now=()
    is_cut=false
    if ! take_sizes; then
        untouched=$((untouched + 1))
        return
    fi
    grown=$((grown + 1))
    [ $((RANDOM % 3)) -eq 0 ] || return 0
    cut=$((cut + 1))
    is_cut=true
    for file in "${!now[@]}"; do
        local before=${size[$file]:-0}
        [ "${now[$file]}" -le "$before" ] ||
            truncate -s $((before + (RANDOM * 32768 + RANDOM) % (now[$file] - before))) "$file"
    done
}
look_at_records() { # notes in `expected` what the next run has to say
    local file said what rest
    for file in "$dir"/before/*.evt; do
        [ -e "$file" ] || break
        said=$(cmp "$file" "$dir"/ev/*/"${file##*/}" 2>&1 || true)
        [[ -z $said || $said == "cmp: EOF on $file "* ]] || complain "earlier bytes are not what they were: $said"
    done
    "$bin/ruvoctl" events --format json "$dir/ev" >"$dir/now.json" || true
    while read -r what rest; do
        case $what in
        gone) complain "a record is gone: $rest" ;;
        now)
            [ "$rest" -ge "$want" ] || complain "$rest records are read; $want were stored"
            want=$rest
            ;;
        torn)
            expected["Day file ${rest% *} does not end with a whole record: damage at byte ${rest##* }."]=untold
            torn=$((torn + 1))
            $is_cut || torn_by_kill=$((torn_by_kill + 1))
            ;;
        esac
    done < <(awk -f "$dir/compare.awk" "$dir/before.json" "$dir/now.json")
    cp "$dir/now.json" "$dir/before.json"
    [ ! -e "${files[0]}" ] || cp -t "$dir/before" "$dir"/ev/*/*.evt
}
look_at_log() {
    local line
    while IFS= read -r line; do
        line=${line:20}
        line=${line%% Connection details - *}
        [ -n "${expected[$line]:-}" ] || complain "the error log says: $line"
        expected[$line]=told
    done <"$dir/log"
    for line in "${!expected[@]}"; do
        [ "${expected[$line]}" = told ] || complain "the error log does not say: $line"
    done
    : >"$dir/log"
    expected=()
}

begun=$SECONDS
start_anew
complete_run
while [ $((passed + failed)) -lt "$kills" ]; do
    good=true
    if [ $(((passed + failed) % round)) -eq 0 ]; then
        look_at_records
        start_anew
        # Half of the rounds begin with a kill among files that are still to be made.
        [ $((RANDOM % 2)) -eq 0 ] || complete_run
    fi
    printf -v day '%(%F)T'
    if ! kill_run; then
        start_anew
        complete_run
        continue
    fi
    look_at_files
    look_at_records
    complete_run
    printf -v today '%(%F)T'
    # At midnight the next run starts new files and says nothing of the old ones.
    if [ "$day" != "$today" ]; then expected=(); fi
    look_at_log
    if $good; then passed=$((passed + 1)); else failed=$((failed + 1)); fi
    [ $(((passed + failed) % 200)) -gt 0 ] || echo "$((passed + failed)) kills in $((SECONDS - begun)) s"
done
look_at_records
echo "Killed before a day file grew: $untouched; after: $grown, of which cut as by a power failure: $cut."
echo "Torn files told and read: $torn, of which $torn_by_kill by the kill alone. $((SECONDS - begun)) s."
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
