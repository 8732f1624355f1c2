#!/usr/bin/env bash
# Puts what the commands of ruvoctl say of themselves into docs/ruvoctl.1.md. Run it after a change of a command's
# options or notes; a test tells when it was forgotten.
#   scripts/upkeep/pages.sh [PRESET]       default: release
set -euo pipefail
cd "$(dirname "$0")/../.."
preset=${1:-release}
scripts/build.sh "$preset" make_command_pages
"build/$preset/pages/make_command_pages" update docs/ruvoctl.1.md
