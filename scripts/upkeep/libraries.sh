#!/usr/bin/env bash
# Unpacks packages of another architecture, and what they depend on, into build/machine/ARCHITECTURE, once; headers of
# libraries that programs are compiled with lie apart in its folder headers.
#   scripts/upkeep/libraries.sh ARCHITECTURE PACKAGE...
set -euo pipefail
cd "$(dirname "$0")/../.."
root=build/machine/$1 packages=${*:2}
[ "$(cat "$root/packages" 2>/dev/null)" != "$packages" ] || exit 0
archive=$(scripts/upkeep/main_archive.sh)
rm -rf "$root" "$root.new"
mkdir -p "$root.new/headers"
# Never installed beside this machine's own: what apt knows of this machine stays as it is, and in the security archive the
# versions of two architectures may differ.
mmdebstrap --quiet --variant=extract --format=tar "--architectures=$1" "--include=${packages// /,}" bookworm - \
    "deb $archive bookworm main" | tar -xf - -C "$root.new" --no-same-owner --exclude=./dev
cp -a "$root.new/lib/." "$root.new/usr/lib" # where a Debian of today has them
for name in "$root.new"/usr/include/{sqlite3*.h,openssl,*-linux-gnu/openssl}; do
    [ ! -e "$name" ] || cp -rp "$name" "$root.new/headers"
done
echo "$packages" >"$root.new/packages"
mv "$root.new" "$root"
