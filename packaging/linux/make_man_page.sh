#!/bin/sh
# Creates a manual page from a page of docs/, which begins with "# name(section) — what it is in a few words".
#   make_man_page.sh VERSION DATE SOURCE.md PAGE
set -eu
version=$1 date=$(date -u -d "$2" +%F) source=$3 page=$4
heading='^# \([a-z.-]*\)(\([1-9]\)) — \(.*\)$'
name=$(sed -n "1s/$heading/\\1/p" "$source")
section=$(sed -n "1s/$heading/\\2/p" "$source")
if [ -z "$name" ]; then
    echo "$source: expected \"# name(section) — what it is\" in its first line" >&2
    exit 1
fi

# No paragraph begins right after a heading. Tables have no boxes, their last column as wide as there is room. Names in
# the first column and short words in the others are not filled like running text: their column is then as wide as they
# are.
tidy() {
    awk '
        function Width(text) {
            gsub(/\\f./, "", text)
            gsub(/\\\(../, "x", text)
            return length(text)
        }
        isAfterHeading && /^\.[LP]P$/ { isAfterHeading = 0; next }
        /^\.S[HS]$/ { print; getline; print; isAfterHeading = 1; next }
        { isAfterHeading = 0 }
        /^\.TS$/ { inTable = 1 }
        /^\.TE$/ { inTable = 0 }
        inTable && /^tab\(\|\)/ { sub(/ expand allbox/, "") }
        inTable && /l\.$/ { sub(/l\.$/, "lx.") }
        inTable && /^T\{$/ { inCell = 1; cell = ""; lines = 0; next }
        inCell && /^T\}/ {
            isLast = $0 == "T}"
            if (isLast || lines > 1 || Width(cell) > (column++ == 0 ? 30 : 14)) {
                printf "T{\n%s%sT}", cell, (lines > 0 ? "\n" : "")
            } else {
                printf "%s", cell
            }
            printf "%s", (isLast ? "\n" : "|")
            inCell = !isLast; cell = ""; lines = 0; column = isLast ? 0 : column
            next
        }
        inCell { cell = cell (lines++ > 0 ? "\n" : "") $0; next }
        { print }'
}

# Chapters become sections, with their names in capitals as everywhere, and what is typed as it
# stands is bold. No name is broken in two: somebody will search for it.
sed "1s/$heading/## Name\n\n\\1 - \\3/" "$source" |
    lowdown -s -Tman --out-no-smarty --nroff-nolinks -M shiftheadinglevelby=-1 -M title="$name" -M section="$section" |
    sed -e 's/\\fC/\\fB/g' -e '/^\.SH$/{n;s/\\f.//g;s/.*/\U&/}' \
        -e "s/^\.TH .*/.TH \"$(echo "$name" | tr '[:lower:]' '[:upper:]')\" \"$section\" \"$date\" \"ruvo $version\"/" |
    sed -e '/^\.TH /a .nr HY 0\n.nh\n.ad l' -e "1i '\\\\\" t" |
    tidy >"$page"
