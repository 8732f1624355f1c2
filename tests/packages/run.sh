#!/usr/bin/env bash
# The Debian package on this machine, which is left as it was. Needs root; the last line is the count.
#   tests/packages/run.sh
set -euo pipefail
cd "$(dirname "$0")/../.."
[ "$(id -u)" -eq 0 ] || { echo "packages: the package is installed for its test, which needs root" >&2; exit 1; }
scripts/setup.sh package-test >&2
export PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=tests/support
exec /usr/bin/python3 tests/packages/packages_test.py "$(scripts/package.sh)"
