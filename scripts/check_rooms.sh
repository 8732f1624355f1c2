#!/usr/bin/env bash
# Keeps the house in order: which room may include which, no platform conditionals outside the platform room,
# tidy files. Prints what is wrong and fails.
set -euo pipefail
cd "$(dirname "$0")/.."

declare -A may=(
    [base]=""
    [platform]="base"
    [paths]="platform base"
    [model]="platform base"
    [link]="model platform base"
    [dayfile]="model paths platform base"
    [extraction]="dayfile link model paths platform base"
    [config]="paths platform base"
    [log]="config model paths platform base"
    [run]="log config extraction dayfile link model paths platform base"
    [app]="run log config extraction dayfile link model paths platform base ruvo" # ruvo/ruvo.h, the exports
)
bad=0
complain() { echo "$1" >&2; bad=1; }

for room in "${!may[@]}"; do
    allowed=" $room ${may[$room]} "
    while IFS=: read -r file line text; do
        used=$(sed -E 's/.*"([a-z]+)\/.*/\1/' <<<"$text")
        [[ "$allowed" == *" $used "* ]] || complain "$file:$line: room $room may not use $used"
    done < <(grep -rnE '^#include "[a-z]+/' "src/$room" --include='*.h' --include='*.cpp' || true)
done
# The simulated server stands behind the seam: of link it may see the seam's headers only.
while IFS=: read -r file line text; do
    complain "$file:$line: sim may use platform, model and link's seam headers only: $text"
done < <(grep -rnE '^#include "[a-z]+/' sim | grep -vE \
    '"(sim|platform|model|base)/|"link/windows/|"link/seam/' || true)

while IFS= read -r found; do
    complain "platform conditional outside the platform room: $found"
done < <(grep -rnE '^\s*#\s*(el)?if.*(_WIN32|__linux__|__unix__|__APPLE__|__MINGW)' src sim tools --include='*.h' --include='*.cpp' |
    grep -v '^src/platform/' || true)

while IFS= read -r file; do
    [ -z "$(tail -c 1 "$file")" ] || complain "$file: no line end at its end"
    ! grep -q $'\r' "$file" || complain "$file: CR LF line ends"
    # (The page that is made from the commands is as long as they are many.)
    [ "$(wc -l <"$file")" -le 400 ] || [ "$file" = docs/ruvoctl.1.md ] || complain "$file: above 400 lines"
done < <(find src sim tools tests bench fuzz scripts docs packaging -type f \( -name '*.cpp' -o -name '*.h' -o -name '*.sh' -o -name '*.md' \))
exit $bad
