#!/usr/bin/env bash
# Writes what a Debian package was made from and what it runs with, as SPDX 2.3 in JSON, from what the build noted down
# and dpkg knows of this machine: the packages whose headers went into the programs, the tools that built them, and the
# installed versions of what the package depends on.
#   scripts/upkeep/sbom.sh PRESET PACKAGE.deb [ROOM...]      rooms: folders of the source whose files are in the package
set -euo pipefail
cd "$(dirname "$0")/../.."
build=build/$1 deb=$2
shift 2
[ $# -gt 0 ] || set -- src sim tools

field() { dpkg-deb -f "$deb" "$1"; }
cached() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }
owners() { dpkg-query -S "$@" 2>/dev/null | sed -n 's/: .*//p' | tr -d ' ' | tr ',' '\n' | sort -u; } # of these files
# The headers that the build found outside the source while it compiled those rooms.
headers() {
    ninja -C "$build" -t deps |
        awk -v rooms="$*" 'BEGIN { n = split(rooms, room, " ") }
            /^[^ ]/ { ours = 0; for (i = 1; i <= n; i++) if (index($0, room[i] "/") == 1) ours = 1 }
            /^ +\// && ours { print $1 }' | sort -u | xargs realpath -e | grep -v "^$PWD/"
}
mapfile -t used < <(headers "$@")
tools=()
for tool in "$(cached CMAKE_CXX_COMPILER)" "$(cached CMAKE_LINKER)" "$(cached CMAKE_COMMAND)" "$(cached CMAKE_MAKE_PROGRAM)"; do
    tools+=("$(realpath -e "$tool")")
done
about() { # relation, packages
    local relation=$1
    shift
    [ $# -eq 0 ] || dpkg-query -W -f "$relation\t\${Package}\t\${Version}\t\${Architecture}\t\${source:Package}\t\${db:Status-Status}\n" "$@" 2>/dev/null || true
}
# shellcheck disable=SC2046
rows() {
    about BUILD_DEPENDENCY_OF $(owners "${used[@]}")
    about BUILD_TOOL_OF $(owners "${tools[@]}")
    about DEPENDENCY_OF $(field Depends | tr ',|' '\n' | sed 's/^ *//; s/[ (:].*//')
}
created=$(date -u -d "@${SOURCE_DATE_EPOCH:-$(date +%s)}" +%Y-%m-%dT%H:%M:%SZ)
digest=$(sha256sum "$deb" | cut -d ' ' -f 1)
rows | sort -u | awk -F '\t' -v name="$(field Package)" -v version="$(field Version)" -v architecture="$(field Architecture)" \
    -v created="$created" -v digest="$digest" '
function escaped(text) { gsub(/%/, "%25", text); gsub(/\+/, "%2B", text); gsub(/:/, "%3A", text); return text }
function id(package) { gsub(/\+/, "-plus-", package); gsub(/_/, "-", package); return "SPDXRef-" package }
function part(package, version, architecture, more) {
    return "    {\n      \"SPDXID\": \"" id(package) "\",\n      \"name\": \"" package "\",\n      \"versionInfo\": \"" version "\",\n" \
        "      \"downloadLocation\": \"NOASSERTION\",\n      \"filesAnalyzed\": false,\n" more \
        "      \"externalRefs\": [{ \"referenceCategory\": \"PACKAGE-MANAGER\", \"referenceType\": \"purl\", \"referenceLocator\": \"pkg:deb/" \
        (package == name ? "" : "debian/") escaped(package) "@" escaped(version) "?arch=" architecture "\" }]\n    }"
}
$6 == "installed" {
    relations = relations ",\n    { \"spdxElementId\": \"" id($2) "\", \"relationshipType\": \"" $1 "\", \"relatedSpdxElement\": \"" id(name) "\" }"
    if (!($2 in seen)) {
        seen[$2] = 1
        source = $5 == $2 ? "" : "      \"sourceInfo\": \"built from the source package " $5 "\",\n"
        parts = parts ",\n" part($2, $3, $4, source)
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
