#!/usr/bin/env bash
# Writes what a package (for Debian, or a zip or set-up program for Windows) was made from and what it runs with, as SPDX
# 2.3 in JSON, from what the build noted down
# and dpkg knows of this machine: the packages whose headers went into the programs, the tools that built them, and the
# installed versions of what the package depends on.
#   scripts/upkeep/sbom.sh PRESET PACKAGE [ROOM...]      rooms: folders of the source whose files are in the package
set -euo pipefail
cd "$(dirname "$0")/../.."
preset=$1 build=build/$1 package=$2
shift 2
[ $# -gt 0 ] || set -- src sim tools

cached() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }
field() { # of a package for Debian; of another one, the little that it has
    case "$package:$1" in
    *.deb:*) dpkg-deb -f "$package" "$1" ;;
    *:Package) echo ruvo ;;
    *:Version) cached CMAKE_PROJECT_VERSION ;;
    *:Architecture) echo "${preset#windows-}" ;;
    esac
}
owners() { dpkg-query -S "$@" 2>/dev/null | sed -n 's/: .*//p' | tr -d ' ' | tr ',' '\n' | sort -u; } # of these files
# The headers that the build found outside the source while it compiled those rooms.
headers() {
    ninja -C "$build" -t deps |
        awk -v rooms="$*" 'BEGIN { n = split(rooms, room, " ") }
            /^[^ ]/ { ours = 0; for (i = 1; i <= n; i++) if (index($0, room[i] "/") == 1) ours = 1 }
            /^ +(\/|cli11\/|tomlplusplus\/)/ && ours { print $1 }' |
        # (For Windows these two were copied from where they are installed.)
        sed -E "s|^($PWD/$build/)?cli11/|$(cached RUVO_CLI11_DIR)/|
            s|^($PWD/$build/)?tomlplusplus/|$(cached RUVO_TOMLPLUSPLUS_DIR)/|" |
        sort -u | xargs realpath -e | grep -v "^$PWD/"
}
# The library that is compiled in for Windows, which no package of this machine has.
compiled() {
    case "$preset" in
    windows-*) printf 'BUILD_DEPENDENCY_OF\tsqlite3\t%s\tsource\tsqlite3\tcompiled\n' \
        "$(sed -n 's/^#define SQLITE_VERSION  *"\(.*\)"/\1/p' build/sqlite/sqlite3.h)" ;;
    esac
}
mapfile -t used < <(headers "$@")
tools=()
compiler=$(sed -n 's/^set(CMAKE_CXX_COMPILER "\(.*\)")/\1/p' "$build"/CMakeFiles/*/CMakeCXXCompiler.cmake)
for tool in "$compiler" "$(cached CMAKE_LINKER)" "$(cached CMAKE_COMMAND)" "$(cached CMAKE_MAKE_PROGRAM)"; do
    tools+=("$(realpath -e "$tool")")
done
case "$package" in *.exe) tools+=("$(command -v makensis)") ;; esac # a set-up program holds code of it
about() { # relation, packages
    local relation=$1
    shift
    [ $# -eq 0 ] || dpkg-query -W -f "$relation\t\${Package}\t\${Version}\t\${Architecture}\t\${source:Package}\t\${db:Status-Status}\n" "$@" 2>/dev/null || true
}
# shellcheck disable=SC2046
rows() {
    about BUILD_DEPENDENCY_OF $(owners "${used[@]}")
    about BUILD_TOOL_OF $(owners "${tools[@]}")
    compiled
    about DEPENDENCY_OF $(field Depends | tr ',|' '\n' | sed 's/^ *//; s/[ (:].*//')
}
created=$(date -u -d "@${SOURCE_DATE_EPOCH:-$(date +%s)}" +%Y-%m-%dT%H:%M:%SZ)
digest=$(sha256sum "$package" | cut -d ' ' -f 1)
rows | sort -u | awk -F '\t' -v name="$(field Package)" -v version="$(field Version)" -v architecture="$(field Architecture)" \
    -v created="$created" -v digest="$digest" -v deb="$(case "$package" in *.deb) echo 1 ;; esac)" '
function escaped(text) { gsub(/%/, "%25", text); gsub(/\+/, "%2B", text); gsub(/:/, "%3A", text); return text }
function id(package) { gsub(/\+/, "-plus-", package); gsub(/_/, "-", package); return "SPDXRef-" package }
function part(package, version, architecture, more, kind) {
    return "    {\n      \"SPDXID\": \"" id(package) "\",\n      \"name\": \"" package "\",\n      \"versionInfo\": \"" version "\",\n" \
        "      \"downloadLocation\": \"NOASSERTION\",\n      \"filesAnalyzed\": false,\n" more \
        "      \"externalRefs\": [{ \"referenceCategory\": \"PACKAGE-MANAGER\", \"referenceType\": \"purl\", \"referenceLocator\": \"pkg:" \
        (kind == "compiled" ? "generic/" : package != name ? "deb/debian/" : deb ? "deb/" : "generic/") escaped(package) "@" escaped(version) "?arch=" architecture "\" }]\n    }"
}
$6 == "installed" || $6 == "compiled" {
    relations = relations ",\n    { \"spdxElementId\": \"" id($2) "\", \"relationshipType\": \"" $1 "\", \"relatedSpdxElement\": \"" id(name) "\" }"
    if (!($2 in seen)) {
        seen[$2] = 1
        source = $5 == $2 ? "" : "      \"sourceInfo\": \"built from the source package " $5 "\",\n"
        parts = parts ",\n" part($2, $3, $4, source, $6)
    }
}
END {
    print "{\n  \"spdxVersion\": \"SPDX-2.3\",\n  \"dataLicense\": \"CC0-1.0\",\n  \"SPDXID\": \"SPDXRef-DOCUMENT\","
    print "  \"name\": \"" name "-" version "-" architecture "\","
    print "  \"documentNamespace\": \"https://ruvo.invalid/spdx/" name "-" version "-" architecture "-" digest "\","
    print "  \"creationInfo\": { \"created\": \"" created "\", \"creators\": [\"Tool: scripts/upkeep/sbom.sh\"] },"
    print "  \"packages\": [\n" part(name, version, architecture, "      \"licenseDeclared\": \"MIT\",\n      \"checksums\": [{ \"algorithm\": \"SHA256\", \"checksumValue\": \"" digest "\" }],\n") parts "\n  ],"
    print "  \"relationships\": [\n    { \"spdxElementId\": \"SPDXRef-DOCUMENT\", \"relationshipType\": \"DESCRIBES\", \"relatedSpdxElement\": \"" id(name) "\" }" relations "\n  ]\n}"
}'
