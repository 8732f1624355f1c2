#!/usr/bin/env bash
# Makes the pictures of README anew: a report page of a week's events, and what ruvoctl says on a terminal.
#   scripts/upkeep/pictures.sh
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/setup.sh browser
scripts/build.sh release ruvoctl
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 1' INT TERM
bin=$PWD/build/release/bin
pictures=$PWD/docs/pictures
export PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=$PWD/tests/browser
/usr/bin/python3 tests/browser/sites.py week "$work"

# The commands run where the events are, so that paths are short; what is shown is what they said.
scripts=$PWD/scripts/upkeep/pictures
(
    cd "$work"
    export PATH=$bin:$PATH COLUMNS=96
    said=$work/said.txt
    say() { # a command line, then what it says
        printf '$ %s\n' "$1"
        bash -c "$1" 2>&1
    } >>"$said"
    say 'ruvoctl events events --sort time --relay FD31 --since 2026-11-18T22:25 --until 2026-11-18T22:26'
    echo >>"$said"
    say 'ruvoctl report events --log RUVO_Errors.log --title "Northfield 33 kV" -o week.html'
    /usr/bin/python3 "$scripts/terminal.py" <"$said" >"$pictures/terminal.svg"
    /usr/bin/python3 "$scripts/page.py" week.html "$pictures/report.png"
)
ls -l "$pictures"
