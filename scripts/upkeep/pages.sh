#!/usr/bin/env bash
# Puts what the commands of ruvoctl say of themselves into docs/ruvoctl.1.md, and the tables of the INI file's keys into
# docs/ruvo.ini.5.md, and what the lines of the error log mean into docs/ruvo-log.5.md. Run it after a change of a command's
# options or notes, of a key, or of a line; a test fails when it was forgotten.
#   scripts/upkeep/pages.sh [PRESET]       default: release
set -euo pipefail
cd "$(dirname "$0")/../.."
preset=${1:-release}
scripts/build.sh "$preset" make_command_pages
"build/$preset/pages/make_command_pages" update docs/ruvoctl.1.md docs/ruvo.ini.5.md docs/ruvo-log.5.md
