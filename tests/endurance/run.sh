#!/usr/bin/env bash
# Relays that never end and relays that never answer, and a night of a thousand slow ones in seconds.
#   tests/endurance/run.sh
# Prints what was measured; the last line is the count of what was checked.
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/setup.sh
scripts/build.sh release ruvo ruvoctl p32ls oncrpc
bin=$PWD/build/release/bin

dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
export LC_ALL=C TZ=UTC P32LS_SUBSTATION=$dir/substation.toml RUVO_LOCK_DIR=$dir
export RUVO_REGISTRY_USER=$dir/no-registry RUVO_REGISTRY_MACHINE=$dir/no-registry

passed=0 failed=0
check() { # what; a command that succeeds when it is so
    if "${@:2}"; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        echo "FAILED: $1" >&2
    fi
}
start_anew() {
    rm -rf "$dir/ev" "$dir/log" "$dir/trace"
    : >"$dir/log"
}
write_ini() { # what stands behind the paths, a line each
    printf '%s\n' '[RUVO_GENERAL]' "EventRootDir=$dir/ev" "ErrorLogPathname=$dir/log" "$@" >"$dir/site.ini"
}
relay() { # name, where it is; more TOML follows on standard input
    printf '[[relay]]\nname = "%s"\n%s\nidentity = { model = "EN", serial = "%s", plant = "Yard", description = "Feeder" }\n' "$1" "$2" "$1"
    cat
}
run() { # leaves its time in milliseconds and its highest memory in KB
    local begun=${EPOCHREALTIME/./} pid value
    "$bin/ruvo" "$dir/site.ini" &
    pid=$!
    peak=0
    while value=$(grep -s VmHWM "/proc/$pid/status"); do
        value=${value//[!0-9]/}
        peak=${value:-$peak}
        sleep 0.02
    done
    wait "$pid"
    took=$(((${EPOCHREALTIME/./} - begun) / 1000))
}
log() { tr -d '\r' <"$dir/log" | cut -c21-; }
log_is() { diff <(log) - >&2; } # the promised log is on standard input
has_records() { # number, files; texts may hold line ends, but every record begins with its file
    [ "$("$bin/ruvoctl" events --format csv "${@:2}" | grep -cE "^\"?$dir/ev/")" -eq "$1" ]
}
details() { echo "Connection details - COM Port: COM1, device address: $1."; }
serial_link=$'[link]\nserial = ["COM1"]'

echo "A relay that never runs out of events"
start_anew
write_ini '[RUVO_SERIAL]' RV001=1 RV002=2
{
    echo "$serial_link"
    relay 0001 'serial = 1' <<<'generate = { count = 1000, kinds = [0, 1], seed = 1, endless = true }'
    relay 0002 'serial = 2' <<<'generate = { count = 5 }'
} >"$P32LS_SUBSTATION"
run
echo "  1,000,000 events in $took ms, $(stat -c %s "$dir"/ev/EN-0001/*.evt) bytes, at most $((peak / 1024)) MB"
check "the visit ends at its limit and says so" \
    log_is <<<"This visit has taken 1000000 events; the rest waits in the relay for the next run. $(details 1)"
check "all events taken are stored" has_records 1000000 "$dir/ev/EN-0001"
check "the next relay is visited" has_records 5 "$dir/ev/EN-0002"

echo "A relay that never runs out of events as long as can be"
start_anew
{
    echo "$serial_link"
    value="{ text = \"$(printf '%0255d' 0)\" }"
    relay 0001 'serial = 1' <<END
generate = { count = 0, endless = true }
[[relay.event]]
kind = 1
location = "00.04"
time = 2026-03-05T14:07:10
text = "Long"
value = { uint = 1 }
format = "%s"
values = [$(for _ in {1..250}; do printf '%s, ' "$value"; done)]
END
    relay 0002 'serial = 2' <<<'generate = { count = 5 }'
} >"$P32LS_SUBSTATION"
run
bytes=$(stat -c %s "$dir"/ev/EN-0001/*.evt)
taken=$(log | grep -oP 'This visit has taken \K[0-9]+')
echo "  $taken events in $took ms, $bytes bytes, at most $((peak / 1024)) MB"
check "the visit ends at 256 MB" [ $((bytes / 1024 / 1024)) -eq 256 ]
check "it says so" log_is <<<"This visit has taken $taken events; the rest waits in the relay for the next run. $(details 1)"
check "the next relay is visited" has_records 5 "$dir/ev/EN-0002"

echo "A server that stops answering"
start_anew
{
    echo "$serial_link"
    relay 0001 'serial = 1' <<<'generate = { count = 5 }'
    relay 0002 'serial = 2' <<<$'cells."09.01" = { flags = 5, size = 1 }\ngenerate = { count = 5 }'
    printf '[[fault]]\noperation = "StartGetStrings"\nrelay = "0002"\ncall = 3\nhang = true\n'
} >"$P32LS_SUBSTATION"
"$bin/ruvo" "$dir/site.ini" &
hanging=$!
for _ in {1..500}; do # until the relay before it is done, and then a while
    [ "$(stat -c %s "$dir"/ev/EN-0001/*.evt 2>/dev/null || echo 0)" -eq 0 ] || break
    sleep 0.02
done
sleep 0.5
check "the run waits: how long a relay may take is the server's to say" kill -0 "$hanging"
check "the relay before it is on the disk" has_records 5 "$dir/ev/EN-0001"
"$bin/ruvo" "$dir/site.ini"
check "each later run says that one is still there" log_is <<<"Only one instance can be running at one time."
kill -KILL "$hanging"
wait "$hanging" 2>/dev/null || true
: >"$dir/log"
sed -i '/^\[\[fault/,$d' "$P32LS_SUBSTATION"
"$bin/ruvo" "$dir/site.ini"
check "once it is ended, the next run works" log_is </dev/null
check "and stores the events" has_records 5 "$dir/ev/EN-0002"

echo "A thousand relays through slow tunnels"
start_anew
ip() { echo "10.$(($1 / 250)).$(($1 % 250)).1"; }
mapfile -t keys < <(for i in {0..999}; do printf 'RV%03d=%s,2\n' "$i" "$(ip "$i")"; done)
delay() { printf '[[fault]]\noperation = "%s"\ndelay = %d\n' "$1" "$2"; }
declare -A slow=([OpenPort]=2000 [GetValue]=300 [GetDeviceStatus]=100 [GetEvent]=400 [StartGetStrings]=500)
{
    echo 'trace = "trace"'
    echo 'speed = 2000'
    for i in {0..999}; do
        [ $((i % 50)) -ne 7 ] || continue # has no tunnel
        relay "$(printf %04d "$i")" "ethernet = { ip = \"$(ip "$i")\", address = 2 }" <<END
cells."09.01" = { flags = 5, size = 1, strings = ["Start", "Trip", "Close"] }
generate = { count = 20, kinds = [0, 1, 4], seed = $i }
END
        # stops answering after ten events
        [ $((i % 50)) -ne 21 ] ||
            printf '[[fault]]\noperation = "GetEvent"\nrelay = "%04d"\ncall = 11\nstatus = 8\n' "$i" >>"$dir/faults"
    done
    cat "$dir/faults"
    for operation in "${!slow[@]}"; do delay "$operation" "${slow[$operation]}"; done
} >"$P32LS_SUBSTATION"
write_ini UseEthernet=1 '[RUVO_ETHERNET]' "${keys[@]:0:100}"
run
peak_of_100=$peak
start_anew
write_ini UseEthernet=1 '[RUVO_ETHERNET]' "${keys[@]}"
run
simulated=0
for operation in "${!slow[@]}"; do
    simulated=$((simulated + $(grep -c "^$operation " "$dir/trace") * slow[$operation]))
done
echo "  $((simulated / 60000)) minutes passed in $((took / 1000)) s; at most $((peak / 1024)) MB, $((peak_of_100 / 1024)) MB with the first 100 relays alone"
check "several hours pass" [ "$simulated" -gt $((3 * 3600 * 1000)) ]
check "memory does not grow with the relays visited" [ "$peak" -lt $((peak_of_100 + 2048)) ]
check "the log tells of each relay in trouble, and of no other" log_is < <(
    for i in {0..999}; do
        case $((i % 50)) in
        7) echo "Failed to open ethernet connection. Connection string: TNLC=\"RPCDll.Dll\",\"$(ip "$i")\",\"0\",\"2\",\"0\". P32LS status: P32LS Error - cannot open port" ;;
        21) echo "A problem occured during events extraction. Connection details - device IP: $(ip "$i"), device address: 2, bus address: 0. P32LS status: P32LS Error - device is either not connected or not responding" ;;
        esac
    done
)
check "every event handed over is stored" has_records $((960 * 20 + 20 * 10)) "$dir/ev"
check "each relay has its file" [ "$(find "$dir/ev" -name '*.evt' | wc -l)" -eq 980 ]

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
