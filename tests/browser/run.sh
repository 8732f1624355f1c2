#!/usr/bin/env bash
# Looks at the pages of ruvoctl report in a headless browser. The last line is the count.
#   tests/browser/run.sh
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/setup.sh browser
scripts/build.sh release ruvoctl
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 1' INT TERM
PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=tests/support /usr/bin/python3 tests/browser/report_test.py build/release/bin/ruvoctl "$work"
