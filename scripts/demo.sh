#!/usr/bin/env bash
# Builds the extractor and runs it over the bundled simulated substation, then shows what came out.
#   scripts/demo.sh [DIR]        default: demo-out; what an earlier demo left there is replaced
# Exit status 0 only when the run did what the substation promises.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
dir=${1:-$root/demo-out}
mkdir -p "$dir"
dir=$(cd "$dir" && pwd)
if [ -n "$(ls -A "$dir")" ] && [ ! -e "$dir/.ruvo-demo" ]; then
    echo "demo.sh: $dir is not empty and holds no earlier demo" >&2
    exit 2
fi
touch "$dir/.ruvo-demo"
rm -rf "$dir/events" "$dir"/*.ini "$dir/RUVO_Errors.log"

cd "$root"
scripts/setup.sh
echo "Building (the first time takes a few minutes)"
scripts/build.sh release ruvo ruvoctl p32ls oncrpc HalvexCryptoKit
bin=build/release/bin
example=examples/substation
export P32LS_SUBSTATION=$root/$example/substation.toml RUVO_LOCK_DIR=$dir RUVO_STATE_DIR=$dir/state
export RUVO_REGISTRY_USER=$dir/no-registry RUVO_REGISTRY_MACHINE=$dir/no-registry

echo
echo "The substation of $example: relays on a serial port, a modem line and Ethernet tunnels."
for link in serial modem ethernet; do
    sed -e "s|^EventRootDir=.*|EventRootDir=$dir/events|" -e "s|^ErrorLogPathname=.*|ErrorLogPathname=$dir/RUVO_Errors.log|" \
        "$example/$link.ini" >"$dir/$link.ini"
    echo "\$ ruvo $link.ini"
    "$bin/ruvo" "$dir/$link.ini"
done

echo
echo "The error log, one line per problem ($dir/RUVO_Errors.log):"
sed 's/^/  /; s/\r$//' "$dir/RUVO_Errors.log"

cat <<'END'
The causes: address 4 does not exist; 5 has another password than serial.ini; 8 and 9 require user names, which
the INI file cannot contain; 10 reports that its password is blocked; modem address 12 sends a malformed event
(the two before it are kept); one event of 10.20.0.5 is of an unknown kind; 10.20.0.9 has no tunnel.
All other relays were read, one of them (7) with an encrypted password.
END

echo
echo "The day files, with the number of events in each ($dir/events):"
failed=0
promised=$example/promised-events.txt
while IFS='|' read -r count relay; do
    file=$(find "$dir/events/$relay" -name '*-DEV.evt' 2>/dev/null | head -1)
    found=0
    [ -z "$file" ] || found=$("$bin/ruvoctl" events --format json "$file" | wc -l)
    printf '  %5d  %s\n' "$found" "${file#"$dir/events/"}"
    [ "$found" -eq "$count" ] || { echo "         promised: $count events of $relay"; failed=1; }
done <"$promised"
[ "$(find "$dir/events" -name '*.evt' | wc -l)" -eq "$(wc -l <"$promised")" ] || { echo "  other day files than promised"; failed=1; }
if ! diff <(cut -c21- "$dir/RUVO_Errors.log" | tr -d '\r') "$example/promised-log.txt" >"$dir/log.diff"; then
    echo "The error log is not the one promised:"
    cat "$dir/log.diff"
    failed=1
fi
rm -f "$dir/log.diff"

echo
echo "What happened around three o'clock (ruvoctl events, without the many of Bay 1):"
"$bin/ruvoctl" events --sort time "$dir/events" --since 2026-11-16T02:00:00 --until 2026-11-16T08:00:00 |
    grep -v 'BY90-00009001' | head -40 || true

[ "$failed" -eq 0 ] || { echo "The demo did NOT do what the substation promises." >&2; exit 1; }
echo
echo "All as the substation promises. More: $bin/ruvoctl events --help"
