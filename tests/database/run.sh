#!/usr/bin/env bash
# Loads the rows of ruvoctl archive into a real PostgreSQL server with the very commands of docs/archive.md.
# The server is this script's own: in a temporary folder, on a Unix socket there, and gone at the end.
# Last line: N passed, N failed.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
bin=${RUVO_BIN_DIR:-$root/build/release/bin}
for folder in /usr/lib/postgresql/*/bin; do PATH=$folder:$PATH; done # Debian keeps the server out of the path
PATH=$bin:$PATH
work=$(mktemp -d /tmp/ruvo-database-XXXXXX) # a short path: a socket's is limited
passed=0
failed=0

as_owner() { # the server refuses to run as root
    if [ "$(id -u)" -eq 0 ]; then
        (cd / && exec setpriv --reuid postgres --regid postgres --init-groups env PATH="$PATH" "$@")
    else
        "$@"
    fi
}
finish() {
    local status=$?
    # Broken off is failed, whatever was counted until then.
    [ "$status" -eq 0 ] || [ "$failed" -gt 0 ] || failed=1
    as_owner pg_ctl -D "$work/data" -m immediate -w stop >/dev/null 2>&1 || true
    rm -rf "$work"
    echo "$passed passed, $failed failed"
}
trap finish EXIT
check() { # what, wanted, found
    if [ "$2" = "$3" ]; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        printf 'FAILED: %s\n  wanted: %s\n  found:  %s\n' "$1" "$2" "$3"
    fi
}
ask() { psql -v ON_ERROR_STOP=1 -qAtX -c "$1"; }
load() { (cd "$work" && bash -e load.sh); }

start_server() {
    mkdir "$work/socket"
    [ "$(id -u)" -ne 0 ] || chown postgres "$work" "$work/socket"
    as_owner initdb -D "$work/data" -U postgres -A trust -E UTF8 --no-locale --no-sync >"$work/initdb.log" 2>&1 ||
        { cat "$work/initdb.log"; return 1; }
    as_owner pg_ctl -D "$work/data" -l "$work/data/server.log" -w -t 60 \
        -o "-c listen_addresses='' -c unix_socket_directories='$work/socket' -c fsync=off" start >"$work/start.log" 2>&1 ||
        { cat "$work/start.log" "$work/data/server.log"; return 1; }
    export PGHOST=$work/socket PGPORT=5432 PGUSER=postgres PGDATABASE=postgres
    unset PGSERVICE PGHOSTADDR PGPASSWORD PGOPTIONS
}

# The blocks of the document that carry a file's name.
take_commands() {
    awk -v dir="$work" '
        /^<!-- file: [a-z.]+ -->$/ { name = $3; next }
        /^```/ { if (inside) { inside = name = ""; close(out) } else if (name) { inside = 1; out = dir "/" name }; next }
        inside { print > out }' "$root/docs/archive.md"
}

# Day files of the simulated substation.
make_events() {
    export P32LS_SUBSTATION=$root/examples/substation/substation.toml RUVO_LOCK_DIR=$work
    export RUVO_REGISTRY_USER=$work/none RUVO_REGISTRY_MACHINE=$work/none
    for link in serial ethernet; do
        sed -e "s|^EventRootDir=.*|EventRootDir=$work/events|" -e "s|^ErrorLogPathname=.*|ErrorLogPathname=$work/log|" \
            "$root/examples/substation/$link.ini" >"$work/$link.ini"
        ruvo "$work/$link.ini"
    done
    export EVENTROOT=$work/events
}
# A sound simple record with that event text, in which printf finds its escapes; at most 100 bytes.
# shellcheck disable=SC2059
hostile_record() {
    local text size
    text=$(printf '%s' "$1")
    size=$(printf "$text" | wc -c)
    printf "\\0\\x$(printf %02x $((size + 27)))\\0\\0\\0\\0\\0\\0\\x3c\\x07\\0\\0\\x1e\\x06\\x10\\x0b\\x1a\\0\\0\\x01\\x06"
    printf '\0\0\0\x02\x01'
    printf "\\x$(printf %02x "$size")$text\\xff\\0\\0"
}

start_server
take_commands
make_events
records=$(ruvoctl events --format json "$EVENTROOT" | wc -l)
check "the substation gave events" yes "$([ "$records" -gt 100 ] && echo yes)"

load
check "every record is loaded" "$records" "$(ask 'SELECT count(*) FROM ruvo_records')"
load
check "loading again adds nothing" "$records" "$(ask 'SELECT count(*) FROM ruvo_records')"
check "columns are what ruvoctl shows" \
    "$(ruvoctl events --format json "$EVENTROOT" | grep -o '"event_text":"Relay outputs"' | wc -l)" \
    "$(ask "SELECT count(*) FROM ruvo_records WHERE event = 'Relay outputs'")"
check "the bytes are those of the day files" "$records" \
    "$(ask "SELECT count(*) FROM ruvo_records WHERE get_byte(bytes, 0) = 0 AND length(bytes) > 30")"
check "cells are JSON that can be asked" \
    "$(ruvoctl events --format json "$EVENTROOT" | grep -c '"template":"Event Value "')" \
    "$(ask "SELECT count(*) FROM ruvo_records WHERE cells @> '[{\"template\": \"Event Value \"}]'")"
psql -qAtX -v ON_ERROR_STOP=1 -f "$work/find.sql" >"$work/found"
check "the question of the document" \
    "$(ruvoctl events --format json --match trip "$EVENTROOT" | grep -cE '"(event|text)":"[^"]*\b[Tt]rip\b')" "$(wc -l <"$work/found")"

file=$(find "$EVENTROOT" -name 'CB05*.evt' | head -1)
{
    hostile_record "a\\\\0b\\\\\\\\\\x22\\\\n'); DROP TABLE ruvo_records; --"
    hostile_record 'n\0ul\x01\x02\x1b[2J\xe9\t,\x5c.'
    hostile_record 'twin'
    hostile_record 'twin'
} >>"$file"
check "the hostile records are sound" "$((records + 4))" "$(ruvoctl events --format json "$EVENTROOT" | grep -c '"kind"')"
load
check "appended records are added, twins both" "$((records + 4))" "$(ask 'SELECT count(*) FROM ruvo_records')"
check "a hostile text is a text" 1 "$(ask "SELECT count(*) FROM ruvo_records WHERE event LIKE '%DROP TABLE%'")"
check "the twins" 2 "$(ask "SELECT count(*) FROM ruvo_records WHERE event = 'twin'")"

ruvoctl archive "$EVENTROOT" --sqlite "$work/site.sqlite" >/dev/null
columns="relay, day_file, byte_offset, kind, unique_id, event_code, location, event, text, value, plant, description, model"
order='ORDER BY day_file COLLATE "C", byte_offset'
check "both archives hold the same" \
    "$(sqlite3 -separator '|' "$work/site.sqlite" "SELECT $columns FROM events ORDER BY day_file, byte_offset" | md5sum)" \
    "$(ask "SELECT $columns FROM ruvo_records $order" | md5sum)"
[ "$failed" -eq 0 ]
