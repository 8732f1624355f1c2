# What tests in shell count with, and a folder for their work, which they remove. To be sourced.
# shellcheck shell=bash
work=$(mktemp -d)
passed=0
failed=0
check() { # what, then a command that succeeds
    local what=$1
    shift
    if "$@" >"$work/check.log" 2>&1; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        echo "FAILED: $what"
        head -20 "$work/check.log"
    fi
}
equal() { [ "$1" = "$2" ] || { printf 'got:    %s\nwanted: %s\n' "$1" "$2"; return 1; }; }
not() { ! "$@"; }
ends_with() { local status=0 wanted=$1; shift; "$@" || status=$?; equal "$status" "$wanted"; }
silent() { # a command that succeeds and says nothing
    local said
    said=$("$@" 2>&1) && [ -z "$said" ] || { printf '%s\n' "$said"; return 1; }
}
