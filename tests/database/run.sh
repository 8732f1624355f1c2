#!/usr/bin/env bash
# The rows of ruvoctl archive in a real PostgreSQL server. The last line is the count.
#   tests/database/run.sh
set -euo pipefail
cd "$(dirname "$0")/../.."
export PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=tests/support
exec /usr/bin/python3 tests/database/database_test.py "$(realpath "${RUVO_BIN_DIR:-build/release/bin}")"
