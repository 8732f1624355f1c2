#!/usr/bin/env bash
# Makes the packages for Windows from what a preset has built, in build/PRESET: the zip, the set-up program, and beside
# each, as .spdx.json, what it was made from. Prints the two names. The same source makes the same bytes, unless they are
# signed (packaging/windows/sign.sh).
#   packaging/windows/make_packages.sh windows-x86|windows-x64
set -euo pipefail
cd "$(dirname "$0")/../.."
preset=$1
case "$preset" in
windows-x86) target=x86-unicode bits=32 name=setup ;;
windows-x64) target=amd64-unicode bits=64 name=x64-setup ;;
*) echo "make_packages.sh: expected windows-x86 or windows-x64" >&2; exit 2 ;;
esac
build=$PWD/build/$preset
version=$(sed -n 's/^project(ruvo VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
# The date of everything in them.
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(date +%s -d "$(sed -n '/^ -- /{s/.*>  //p;q}' packaging/debian/changelog)")}
export SOURCE_DATE_EPOCH
programs=(RUVO.exe ruvoctl.exe ruvo.dll p32ls-sim.exe oncrpc.dll HalvexCryptoKit.dll) # as setup.nsi has them
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
run() { "$@" >"$work/log" 2>&1 || { cat "$work/log" >&2; echo "make_packages.sh: $1 failed" >&2; exit 1; }; }
files() { find "$1" -type f -printf '%P\n' | LC_ALL=C sort; }

zip=$build/ruvo-$version-windows-${preset#windows-}.zip
setup=$build/ruvo-$version-$name.exe
rm -f "$build"/ruvo-*.zip "$build"/ruvo-*setup.exe "$build"/ruvo-*.spdx.json
stage=$work/$(basename "$zip" .zip)
run cmake --install "$build" --prefix "$stage"
run packaging/windows/sign.sh "${programs[@]/#/$stage/}"
find "$stage" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +
run packaging/windows/make_zip.py "$stage" "$zip"

# Under the programs' folder nothing is written: these INI files are for a folder of one's own.
rm "$stage"/*.ini
skipped=$(printf '%s\n' "${programs[@]}")
files "$stage" | grep -vxF "$skipped" | while read -r file; do
    folder=$(dirname "/$file")
    [ "$folder" != / ] || folder=
    printf 'SetOutPath "$INSTDIR%s"\nFile "${STAGE}/%s"\n' "${folder//\//\\}" "$file"
done >"$work/install_files.nsh"
{
    files "$stage" | grep -vxF "$skipped" | sed 's|/|\\|g; s|.*|Delete "$INSTDIR\\&"|'
    (cd "$stage" && find . -mindepth 1 -type d -printf '%P\n' | LC_ALL=C sort -r | sed 's|/|\\|g; s|.*|RMDir "$INSTDIR\\&"|')
} >"$work/remove_files.nsh"
sign=()
[ -z "${RUVO_SIGN_CERTIFICATE:-}" ] || sign=("-DSIGN=$PWD/packaging/windows/sign.sh")
run makensis -V2 -WX "-DTARGET=$target" "-DBITS=$bits" "-DVERSION=$version" "-DSTAGE=$stage" "-DLISTS=$work" \
    "-DOUTPUT=$setup" "${sign[@]}" packaging/windows/setup.nsi
for package in "$zip" "$setup"; do
    scripts/upkeep/sbom.sh "$preset" "$package" >"$package.spdx.json"
    echo "$package"
done
