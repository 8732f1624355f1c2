"""What a terminal showed, from standard input, as a picture (SVG) that follows the reader's theme."""

import sys
from xml.sax.saxutils import escape

COLUMN, LINE, MARGIN, TITLE = 8.4, 20, 20, 34
STYLE = """
text { font: 14px ui-monospace, "Cascadia Mono", Menlo, Consolas, "DejaVu Sans Mono", monospace; fill: #24303d; white-space: pre; }
.window { fill: #fbfcfd; stroke: #c9d1da; } .bar { fill: #e9edf2; } .dot { fill: #b6c0cb; }
.command { fill: #1f5fbf; font-weight: 600; } .head { fill: #5b6877; }
@media (prefers-color-scheme: dark) {
text { fill: #dbe2ea; } .window { fill: #161b22; stroke: #39424d; } .bar { fill: #222a34; } .dot { fill: #55606d; }
.command { fill: #6ea8fe; } .head { fill: #9ba7b4; } }
"""


def line_class(lines, at):
    if lines[at].startswith("$ "):
        return "command"
    isHead = at > 0 and lines[at - 1].startswith("$ ") and lines[at].startswith("time ")
    return "head" if isHead else ""


def draw(lines):
    width = max(map(len, lines)) * COLUMN + 2 * MARGIN
    height = len(lines) * LINE + TITLE + 2 * MARGIN - 8
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width:.0f} {height}" width="{width:.0f}" height="{height}">',
             f"<style>{STYLE}</style>",
             f'<rect class="window" x=".5" y=".5" width="{width - 1:.0f}" height="{height - 1}" rx="10"/>',
             f'<path class="bar" d="M1 {TITLE}V11A10 10 0 0 1 11 1H{width - 11:.0f}A10 10 0 0 1 {width - 1:.0f} 11V{TITLE}Z"/>']
    parts += [f'<circle class="dot" cx="{20 + 18 * at}" cy="17" r="5.5"/>' for at in range(3)]
    for at, line in enumerate(lines):
        if line:
            y = TITLE + MARGIN + at * LINE + 10
            # The length keeps columns aligned whatever the reader's font.
            parts.append(f'<text class="{line_class(lines, at)}" x="{MARGIN}" y="{y}" xml:space="preserve" '
                         f'textLength="{len(line) * COLUMN:.1f}">{escape(line)}</text>')
    return "\n".join(parts) + "\n</svg>\n"


sys.stdout.write(draw(sys.stdin.read().rstrip("\n").split("\n")))
