#!/usr/bin/env bash
# What one job costs: one visit of a site of 1, 100 and 1000 relays with 20 events each, by the simulated comms server in
# the same process, so that the figures are the extractor's and the simulator's together. No relay makes it wait: a real
# visit lasts as long as its lines and relays take, at next to no cost.
#   scripts/upkeep/job_cost.sh
set -euo pipefail
cd "$(dirname "$0")/../.."
[ -x /usr/bin/time ] || scripts/setup.sh package-test >&2
deb=$(scripts/package.sh)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
dpkg-deb -x "$deb" "$work/files"
private=$work/files/usr/lib/ruvo
export RUVO_REGISTRY_MACHINE=$work/registry.ini RUVO_REGISTRY_USER=/dev/null RUVO_LOCK_DIR=$work/lock RUVO_STATE_DIR=$work/state
export P32LS_SUBSTATION=$work/substation.toml
sed "s|/usr/lib/ruvo|$private|" "$work/files/usr/share/doc/ruvo/examples/simulator/registry.ini" >"$work/registry.ini"

site() { # a substation and a site file of so many relays, 250 at each address
    local number ip address
    : >"$work/substation.toml"
    printf '[RUVO_GENERAL]\nUseEthernet=1\nEventRootDir=%s\nErrorLogPathname=%s\n[RUVO_ETHERNET]\n' \
        "$work/events" "$work/log" >"$work/site.ini"
    for ((number = 0; number < $1; ++number)); do
        ip=10.0.0.$((number / 250 + 1)) address=$((number % 250 + 1))
        printf 'RV%03d=%s,%d\n' "$number" "$ip" "$address" >>"$work/site.ini"
        printf '[[relay]]\nethernet = { ip = "%s", address = %d }\nidentity = { model = "AB12", serial = "%08d" }\n' \
            "$ip" "$address" "$number" >>"$work/substation.toml"
        printf 'generate = { count = 20, kinds = [0, 1], seed = %d }\n[relay.cells]\n"05.02" = { number = 230.5, unit = "V", label = "Voltage %%k" }\n' \
            "$number" >>"$work/substation.toml"
    done
}

printf '%8s %8s %10s %10s %12s\n' relays events seconds 'CPU s' 'memory MB'
for relays in 1 100 1000; do
    site "$relays"
    rm -rf "$work/events" "$work/log"
    /usr/bin/time -f '%e %U %S %M' -o "$work/cost" "$private/run-site" "$work/site.ini"
    events=$("$private/ruvoctl" events --format json "$work/events" | wc -l)
    [ "$events" -eq $((relays * 20)) ] || { echo "job_cost.sh: $events events of $relays relays" >&2; exit 1; }
    awk -v relays="$relays" -v events="$events" \
        '{ printf "%8d %8d %10.2f %10.2f %12.1f\n", relays, events, $1, $2 + $3, $4 / 1024 }' "$work/cost"
done
