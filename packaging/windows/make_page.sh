#!/bin/sh
# Makes a page for a browser from a document: make_page.sh SOURCE.md PAGE.html
set -eu
mkdir -p "$(dirname "$2")"
{
    printf '<!DOCTYPE html>\n<html lang="en">\n<head>\n<meta charset="utf-8">\n<title>%s</title>\n' \
        "$(sed -n '1s/^#* *//p' "$1")"
    printf '<style>body { max-width: 50em; margin: 1em auto; padding: 0 1em; font-family: sans-serif; line-height: 1.4 }\n'
    printf 'pre { background: #f2f2f2; padding: .5em; overflow-x: auto } table { border-collapse: collapse }\n'
    printf 'td, th { border: 1px solid #bbb; padding: .2em .5em; text-align: left; vertical-align: top }</style>\n'
    printf '</head>\n<body>\n'
    # Its links lead to the other pages.
    lowdown -thtml "$1" | sed 's/href="\([A-Za-z0-9.-]*\)\.md\([#"]\)/href="\1.html\2/g'
    printf '</body>\n</html>\n'
} >"$2.new"
mv "$2.new" "$2"
