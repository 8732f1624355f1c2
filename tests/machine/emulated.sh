#!/usr/bin/env bash
# Runs a program of another architecture in user-mode emulation, as if the libraries that scripts/upkeep/libraries.sh has
# unpacked were installed here; needs root. (The emulator's own option for that, -L, mistakes the folder / for theirs, and
# our programs walk to files from there.)
#   tests/machine/emulated.sh ARCHITECTURE PROGRAM [ARGUMENT...]
set -euo pipefail
declare -A machines=([arm64]=aarch64 [s390x]=s390x)
libraries=$(dirname "$(realpath "$0")")/../../build/machine/$1/usr
# (The mount goes with its namespace.)
exec unshare --mount sh -c 'mount -t overlay overlay -o "lowerdir=/usr:$1" /usr && shift && exec "$@"' sh \
    "$libraries" "qemu-${machines[$1]}-static" "${@:2}"
