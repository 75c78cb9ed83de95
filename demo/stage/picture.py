"""A terminal session as an SVG picture: monospaced text on a dark, rounded rectangle."""

import re
import unicodedata
from xml.sax.saxutils import escape

SIZE, LINE, CELL = 14, 20, 8.45  # pixels: type, line, and the width of a column (0.6 of the type, rounded up)
MARGIN, TOP = 18, 44
PAPER, INK, FAINT = "#1b1f27", "#d7dce4", "#7d8799"
FACES = "ui-monospace, 'DejaVu Sans Mono', Menlo, Consolas, monospace"
COLOURS = {"prompt": "#7d8799", "command": "#ffffff", "error": "#f28b82", "note": "#8ab4f8"}


def cells(text):
    """How many columns a text takes: East Asian characters two, combining ones none."""
    return sum(0 if unicodedata.combining(c) else 2 if unicodedata.east_asian_width(c) in "WF" else 1 for c in text)


def cut(text, columns):
    if cells(text) <= columns:
        return text
    dots = "..."[:max(columns, 0)]
    while text and cells(text) > columns - len(dots):
        text = text[:-1]
    return text + dots


def clean(text):
    """Characters that XML cannot hold become the replacement character."""
    return re.sub("[\x00-\x08\x0b-\x1f\ud800-\udfff\ufffe\uffff]", "\N{REPLACEMENT CHARACTER}", text.expandtabs(4))


def draw(rows, columns=100, title=""):
    """`rows` are lists of (style, text); a style outside of COLOURS is plain. Returns the SVG's text."""
    width, height = round(2 * MARGIN + columns * CELL), TOP + len(rows) * LINE + MARGIN
    out = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" viewBox="0 0 {width} {height}"'
        f' role="img" font-family="{FACES}" font-size="{SIZE}">',
        f"<title>{escape(clean(title))}</title>",
        f'<rect width="{width}" height="{height}" rx="10" fill="{PAPER}"/>',
        *(f'<circle cx="{MARGIN + 6 + 18 * i}" cy="20" r="5.5" fill="{FAINT}" opacity="0.5"/>' for i in range(3)),
        f'<text x="{width / 2:g}" y="24" text-anchor="middle" fill="{FAINT}">{escape(clean(title))}</text>',
    ]
    for number, row in enumerate(rows):
        left, spans = columns, []
        for style, text in row:
            text = cut(clean(text), left)
            left -= cells(text)
            weight = ' font-weight="bold"' if style == "command" else ""
            spans.append(f'<tspan fill="{COLOURS.get(style, INK)}"{weight}>{escape(text)}</tspan>')
        if any(text for _, text in row):
            out.append(f'<text x="{MARGIN}" y="{TOP + number * LINE + SIZE}" xml:space="preserve">'
                       f'{"".join(spans)}</text>')
    return "\n".join([*out, "</svg>", ""])
