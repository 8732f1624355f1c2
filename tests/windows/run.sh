#!/usr/bin/env bash
# The Windows programs: builds them for 32 and 64 bits, looks into the 32-bit files, which nothing here can run, and
# runs their 64-bit twins under Wine, in a Windows of their own. The last line is the count.
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/setup.sh windows
for preset in windows-x86 windows-x64; do
    echo "Building ($preset)"
    scripts/build.sh "$preset"
done
x86=build/windows-x86/bin
x64=build/windows-x64/bin

source tests/support/counting.sh
export WINEPREFIX=$work/prefix WINEDEBUG=-all LC_ALL=C.UTF-8
export WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe=d" # no questions, no menu files
unset DISPLAY WINEARCH
wine=/usr/lib/wine/wine64
wineserver=/usr/lib/wine/wineserver
clean_up() {
    if [ -d "$WINEPREFIX" ]; then
        "$wineserver" -k >/dev/null 2>&1 || true # every process of this prefix, and of no other
        "$wineserver" -w >/dev/null 2>&1 || true
    fi
    rm -rf "$work"
}
trap clean_up EXIT
trap 'exit 1' INT TERM

echo "Looking into the 32-bit files"
version=$(sed -n 's/^project(ruvo VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
headers() { i686-w64-mingw32-objdump -p "$x86/$1"; }
exports() { headers "$1" | sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/p' | sed -n 's/^.*\[ *[0-9]*\] //p' | LC_ALL=C sort | tr '\n' ' '; }
ordinals() { headers "$1" | sed -n '/^Export Address Table/,/^\[Ordinal/p' | sed -n 's/.*+base\[ *\([0-9]*\)\].*/\1/p' | tr '\n' ' '; }
resources() { i686-w64-mingw32-windres -J coff -O rc "$x86/$1"; }
only_system_libraries() {
    local library
    for library in $(headers "$1" | sed -n 's/.*DLL Name: //p' | tr 'A-Z' 'a-z'); do
        case "$library" in
        kernel32.dll | user32.dll | gdi32.dll | advapi32.dll | ole32.dll | oleaut32.dll | msvcrt.dll | bcrypt.dll | \
            shell32.dll | version.dll) ;;
        *) echo "needs $library"; return 1 ;;
        esac
    done
}
for file in RUVO.exe ruvoctl.exe p32ls-sim.exe ruvo.dll oncrpc.dll HalvexCryptoKit.dll; do
    check "$file is for 32-bit Windows" equal "$(i686-w64-mingw32-objdump -f "$x86/$file" | sed -n 's/.*file format //p')" pei-i386
    check "$file needs the system's libraries alone" only_system_libraries "$file"
done
for row in "RUVO.exe|Windows GUI" "p32ls-sim.exe|Windows GUI" "ruvoctl.exe|Windows CUI"; do
    check "${row%|*}: subsystem" equal "$(headers "${row%|*}" | sed -n 's/^Subsystem.*(\(.*\))/\1/p')" "${row#*|}"
done
for file in RUVO.exe ruvo.dll; do
    check "$file: exports" equal "$(exports "$file")" "_TestConnectionExt@8 _decrypt@8 _encrypt@8 "
    resources "$file" >"$work/resources.rc"
    check "$file: version" grep -q "FILEVERSION ${version//./, *}, *0" "$work/resources.rc"
done
check "HalvexCryptoKit.dll: ordinals" equal "$(ordinals HalvexCryptoKit.dll)" "2 9 13 "
check "HalvexCryptoKit.dll: no names" equal "$(exports HalvexCryptoKit.dll)" ""
resources RUVO.exe >"$work/resources.rc"
check "RUVO.exe: manifest" grep -q 'requestedExecutionLevel' "$x86/RUVO.exe"
# Both scripts in the same words: the one that was compiled in, and the one found in the program.
i686-w64-mingw32-windres -O coff build/windows-x86/resources/string_table.rc "$work/table.o"
i686-w64-mingw32-windres -J coff -O rc "$work/table.o" >"$work/table.rc"
strings_of() { sed -n 's|^ *\([0-9]*, ".*\)$|\1|p' "$1"; }
check "RUVO.exe: some texts" test "$(strings_of "$work/resources.rc" | wc -l)" -gt 100
check "RUVO.exe: string table" diff <(strings_of "$work/table.rc") <(strings_of "$work/resources.rc")

echo "Packing"
for preset in windows-x86 windows-x64; do
    check "the zip of $preset" cmake -E chdir "build/$preset" cpack
    check "what is in it" test "$(cmake -E tar tf build/"$preset"/ruvo-*-"$preset".zip | grep -c -E '/(RUVO\.exe|ruvoctl\.exe|p32ls-sim\.exe|ruvo\.dll|oncrpc\.dll|HalvexCryptoKit\.dll|README\.txt|RUVO\.ini|substation\.toml)$')" -eq 9
done

echo "Running the 64-bit twins under Wine"
# Into files, never pipes: a server started meanwhile keeps them open. Waited for in the background, so that a signal
# ends this script, and with it all of Wine, at once.
run() {
    timeout --kill-after=10 "$@" </dev/null &
    wait $!
}
run 300 "$wine" wineboot -i >"$work/wineboot.log" 2>&1
# Windows without a screen.
run 60 "$wine" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /t REG_SZ /d null /f >"$work/reg.log" 2>&1
# The calls that tell a box's icon, which no other process can see.
run 60 "$wine" reg add 'HKCU\Software\Wine\Debug' /v RelayInclude /t REG_SZ /d 'user32.MessageBoxA' /f >"$work/reg.log" 2>&1
"$wineserver" -k || true # COM hangs in the session that made the Windows
"$wineserver" -w

count() { # a test program's name and output: takes its last line, a count
    local last
    last=$(tail -1 "$2" | tr -d '\r')
    if [[ "$last" =~ ^([0-9]+)\ passed,\ ([0-9]+)\ failed$ ]]; then
        local good=${BASH_REMATCH[1]} bad=${BASH_REMATCH[2]}
        # A program that compares thousands of generated inputs is one test.
        [[ "$1" != *_difference ]] || { bad=$((bad > 0)); good=$((1 - bad)); }
        passed=$((passed + good))
        failed=$((failed + bad))
        [ "$bad" -eq 0 ] || cat "$2"
    else
        failed=$((failed + 1))
        cat "$2"
        echo "FAILED: $1 did not come to its end"
    fi
    echo "  $1: $last"
}
run_test() { WINEDEBUG=-all,+relay run 400 "$wine" "$x64/test_$1.exe" >"$work/$1.log" 2>"$work/$1.calls" || true; }
for test in path_difference ini_difference system end_to_end; do
    run_test "$test"
    if ! tail -1 "$work/$test.log" | grep -q ' passed, '; then
        # Wine itself hangs once in a long while, when COM lets go of an interface as a call returns.
        echo "  $test did not come to its end; once more in a new session"
        "$wineserver" -k || true
        "$wineserver" -w
        run_test "$test"
    fi
    count "$test" "$work/$test.log"
done
tests/windows/com.sh "$x64" >"$work/com.log" 2>&1 || true
count com "$work/com.log"
icon() { sed -n "s/.*Call user32.MessageBoxA(.*$1.*,\(000000[0-9]*\)) ret.*/\1/p" "$work/end_to_end.calls" | sort -u | tr '\n' ' '; }
check "icon of a good check" equal "$(icon 'No input errors found')" "00000040 "
check "icon of an error found" equal "$(icon 'BaudRate value error')" "00000030 "
check "icon of the registry's information" equal "$(icon 'Registry entry with destination')" "00000040 "

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
