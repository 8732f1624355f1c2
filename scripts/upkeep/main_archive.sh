#!/usr/bin/env bash
# Prints the address of Debian's main archive, as this machine's package sources name it.
#   scripts/upkeep/main_archive.sh
set -euo pipefail
targets() { apt-get indextargets --format '$(SITE)' 'Created-By: Packages' 'Component: main' "$@" | sed -n 1p; }
site=$(targets 'Origin: Debian' 'Codename: bookworm')
[ -n "$site" ] || site=$(targets --no-release-info 'Release: bookworm') # no list has been fetched yet
[ -n "$site" ] || { echo "main_archive.sh: this machine's package sources do not name Debian's main archive for bookworm" >&2; exit 1; }
echo "$site"
