#!/usr/bin/env bash
# The Windows programs: builds them for 32 and 64 bits, looks into them and runs them under Wine. The last line is the
# count.
#   tests/windows/run.sh
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/setup.sh windows
for preset in windows-x86 windows-x64; do
    echo "Building ($preset)"
    scripts/build.sh "$preset"
done
export PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=tests/support
exec /usr/bin/python3 tests/windows/windows_test.py
