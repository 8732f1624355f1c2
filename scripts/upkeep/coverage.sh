#!/usr/bin/env bash
# Runs the tests in a build that counts, and prints which share of lines and branches they reach, room by room.
#   scripts/upkeep/coverage.sh             also writes build/coverage/report/index.html
# Branches that only an exception takes, which the compiler adds after nearly every call, are left out.
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/setup.sh coverage
scripts/build.sh coverage
find build/coverage -name '*.gcda' -delete
# Not those that kill programs or leave them no room to write: counts cut short spoil those of all others.
ctest --test-dir build/coverage -j "$(nproc)" --output-on-failure -Q -E 'Kill|CoreImage|FullDisk' || {
    ctest --test-dir build/coverage --rerun-failed --output-on-failure
    exit 1
}
mkdir -p build/coverage/report
gcovr --root . --filter src/ --filter sim/ --filter tools/ --exclude-throw-branches --exclude-unreachable-branches \
    --gcov-ignore-parse-errors --json-summary build/coverage/summary.json \
    --html-details build/coverage/report/index.html build/coverage >/dev/null
python3 - build/coverage/summary.json <<'END'
import collections, json, sys

rooms = collections.defaultdict(lambda: [0, 0, 0, 0])
files = json.load(open(sys.argv[1]))["files"]
for file in files:
    parts = file["filename"].split("/")
    names = ["/".join(parts[:2])] if parts[0] == "src" else [parts[0]]
    for name in names + (["all of src"] if parts[0] == "src" else []):
        for i, key in enumerate(("line_covered", "line_total", "branch_covered", "branch_total")):
            rooms[name][i] += file[key]
print(f"{'room':16} {'lines':>14} {'':>6} {'branches':>14}")
for name in sorted(rooms, key=lambda name: (name == "all of src", name)):
    reached, lines, taken, branches = rooms[name]
    print(f"{name:16} {reached:6} / {lines:5} {100 * reached / max(lines, 1):5.1f}%"
          f" {taken:7} / {branches:5} {100 * taken / max(branches, 1):5.1f}%")
print("\nLeast covered files of src:")
key = lambda file: file["line_total"] - file["line_covered"]
for file in sorted((f for f in files if f["filename"].startswith("src/")), key=key, reverse=True)[:12]:
    print(f"  {key(file):4} lines of {file['line_total']:4} not reached: {file['filename']}")
END
