"""The transcript: headings, prose, calls with their answers, tables. Colours only on a terminal."""

import os
import shutil
import sys
import textwrap

BOLD, DIM, GREEN, YELLOW, RED, CYAN = "1", "2", "32", "33", "31", "36"
COLOURS = {"run": GREEN, "held": YELLOW, "refused": RED, "": DIM}


class Page:
    def __init__(self, out=sys.stdout, colours=None):
        self.out = out
        if hasattr(out, "reconfigure"):
            out.reconfigure(errors="replace", line_buffering=True)
        on_terminal = out.isatty() and not os.environ.get("NO_COLOR")
        self.colours = on_terminal if colours is None else colours
        self.width = min(shutil.get_terminal_size((100, 24)).columns, 100) if out.isatty() else 100

    def paint(self, text, *codes):
        return f"\033[{';'.join(codes)}m{text}\033[0m" if self.colours else text

    def line(self, text=""):
        print(text.rstrip(), file=self.out)

    def title(self, text):
        self.line(self.paint(text, BOLD))
        self.line(self.paint("=" * len(text), BOLD))

    def heading(self, text):
        self.line()
        self.line(self.paint(text, BOLD))
        self.line(self.paint("-" * len(text), DIM))

    def say(self, text):
        self.line(textwrap.fill(" ".join(text.split()), self.width))

    def call(self, text):
        """What the agent asks for."""
        self._margin("agent", CYAN, text)

    def answer(self, kind, text):
        """What came back: "run", "held", "refused"; "" goes on with the answer before."""
        self._margin(kind, COLOURS[kind], text)

    def owner(self, text):
        """What the owner does, with their own hands."""
        self._margin("owner", BOLD, text)

    def shell(self, command):
        self.line(f"  {self.paint('$', DIM)} {self.paint(command, BOLD)}")

    def output(self, text):
        for row in self._folded(text, self.width - 4):
            self.line("    " + row)

    def table(self, header, rows):
        """Columns as wide as what is in them; the last one takes what is left of the line."""
        widths = [max(len(str(row[i])) for row in [header, *rows]) for i in range(len(header))]
        widths[-1] = self.width - 4 - sum(widths[:-1]) - 2 * (len(widths) - 1)
        for number, row in enumerate([header, *rows]):
            cells = "  ".join(self._cut(str(cell), w).ljust(w) for cell, w in zip(row, widths))
            self.line("    " + (self.paint(cells.rstrip(), DIM) if number == 0 else cells))

    def _margin(self, who, colour, text):
        for number, row in enumerate(self._folded(text, self.width - 11)):
            label = self.paint(f"{who:>9}", colour) if number == 0 else " " * 9
            self.line(f"{label}  {row}")

    @staticmethod
    def _folded(text, width):
        """Long lines go on below, set in; short ones stay as they are."""
        for row in text.splitlines() or [""]:
            yield from textwrap.wrap(row, width, subsequent_indent="    ", break_on_hyphens=False) if len(row) > width else [row]

    @staticmethod
    def _cut(text, width):
        return text if len(text) <= width else text[:width - 3] + "..."
