#!/usr/bin/env bash
# The Debian package for arm64: cross-built, and its programs run in user-mode emulation, where they visit the simulated substation
# and read what this machine's programs wrote, and these what they wrote. The package stays in build/arm64. The last line is
# the count. Needs root.
#   tests/machine/arm64.sh
set -euo pipefail
cd "$(dirname "$0")/../.."
[ "$(id -u)" -eq 0 ] || { echo "arm64: libraries of another machine are mounted for the emulator, which needs root" >&2; exit 1; }
scripts/setup.sh packages arm64 >&2
deb=$(scripts/package.sh arm64)
native=$(ls build/release/ruvo_*.deb)
work=$PWD/build/arm64/test
rm -rf "$work"
mkdir -p "$work"/{here,there}
dpkg-deb -x "$native" "$work/here/package"
dpkg-deb -x "$deb" "$work/there/package"
emulator=("$PWD/tests/machine/emulated.sh" arm64)
private=package/usr/lib/ruvo

passed=0 failed=0
check() { # what, a command
    local what=$1
    shift
    if "$@" >"$work/log" 2>&1; then passed=$((passed + 1)); else failed=$((failed + 1)); echo "FAILED: $what"; cat "$work/log"; fi
}
here() { "$work/here/$private/$1" "${@:2}"; }
there() { "${emulator[@]}" "$work/there/$private/$1" "${@:2}"; }
same() { # what this command says
    here "$@" >"$work/here.said" && [ -s "$work/here.said" ] && there "$@" | diff "$work/here.said" -
}
programs() { ls "$work/$1/$private"/{ruvo,ruvoctl,*.so,simulator/*.so}; }
same_files() { diff <(dpkg-deb -c "$native" | awk '{ print $1, $2, $6, $7, $8 }') <(dpkg-deb -c "$deb" | awk '{ print $1, $2, $6, $7, $8 }'); }
all_arm() { programs there | xargs file | awk '!/ARM aarch64.* stripped/ { print; bad = 1 } END { exit bad || NR != 6 }'; }
# (What is not signed is the compiler's own code at start and end.)
sign_returns() { programs there | xargs aarch64-linux-gnu-objdump -d |
    awk '/\tpaciasp/ { signed++ } /\tstp\tx29, x30/ { kept++ } END { print kept, signed; exit !(kept > 1000 && signed > kept * 0.9) }'; }
# What the programs need of others: libraries, and of each the newest version that one of its functions is of.
needs() {
    programs "$1" | xargs readelf -W -d -V | grep -oE '\[.*\.so\.[0-9]*\]|(GLIBC|GLIBCXX|CXXABI|OPENSSL)_[0-9.]+' | grep -v ld-linux |
        sort -uV | newest
}
newest() { awk -F _ '/\[/ { print; next } { newest[$1] = $0 } END { for (name in newest) print newest[name] }' | sort; }
needs_no_more() { # a newer version than the package of this machine needs sorts after it
    local there=$work/there.needs here=$work/here.needs
    needs there >"$there" && needs here >"$here" && [ -s "$there" ]
    diff <(grep '\[' "$here") <(grep '\[' "$there") && sort -uV "$here" "$there" | newest | diff "$here" -
}
visit() { # whose programs, a command that runs them
    mkdir "$work/$1/visit"
    AUTOPKGTEST_TMP=$work/$1/visit packaging/debian/tests/demo-substation "$work/$1/package" "${@:2}"
}
check_only() ( # whose programs: what they say of the substation's sites
    visit=$work/$1/visit
    export RUVO_REGISTRY_MACHINE=$visit/registry.ini RUVO_REGISTRY_USER=$visit/none RUVO_LOCK_DIR=$visit RUVO_STATE_DIR=$visit/state
    export P32LS_SUBSTATION=$work/$1/package/usr/share/doc/ruvo/examples/simulator/substation.toml
    for link in serial modem ethernet; do
        "$1" ruvo -t "$visit/$link.ini"
        "$1" ruvoctl check "$visit/$link.ini"
    done 2>&1 | tr -d '\r' | sed "s|$work/$1|.|g"
)
same_check_only() { check_only here >"$work/here.said" && check_only there | diff "$work/here.said" - && ! grep "failed to open" "$work/here.said"; }
check "the same files as for this machine" same_files
check "every program and library is for that machine" all_arm
check "functions sign the address that they return to" sign_returns
check "its architecture" test "$(dpkg-deb -f "$deb" Architecture)" = arm64
check "it needs no newer library than the package of this machine, whose dependencies it has" needs_no_more
check "nothing but what it may say" lintian --allow-root -I --fail-on error,warning,info "$deb"
check "the version" same ruvoctl --version
check "the substation's visit" visit there "${emulator[@]}"
cat "$work/log"
check "the same visit here" visit here
check "check-only runs, and what is said of the INI files" same_check_only
for program in here there; do
    visit=$work/$program/visit
    for format in text json csv; do
        check "events as $format, written $program" same ruvoctl events --sort time --format $format "$visit/events"
    done
    check "a search in the archive, made $program" same ruvoctl find "$visit/archive.db" trip
    check "the relays of an INI file" same ruvoctl list "$visit/modem.ini"
done
echo "$passed passed, $failed failed"
[ $failed -eq 0 ]
