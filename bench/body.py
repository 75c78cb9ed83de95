"""The cleaning of a message's text, which is anyone's: the time must grow as the text does, whatever it holds."""

import os

from figures import MS, Figure

TEXTS = {  # by bench-body's name
    "page": "an ordinary page of HTML", "letter": "an ordinary letter", "open": "“<” alone", "script": "“<script” without an end",
    "scripts": "“<script>” and “<style>” without an end", "comment": "comments within comments", "blanks": "blanks alone",
    "wrote": "“On … wrote:” within a line", "begun": "lines that begin like “On … wrote:”", "ecrit": "“Le … a écrit :” with more behind"}


def body(bench):
    got = bench.samples(os.environ, bench.programs / "bench-body", [str(bench.rounds)])

    def quarters(name):
        return [4 * time for time in got[name + "-quarter"]["wall"]]

    return [
        *(Figure(f"1 MB: {title}", got[name]["wall"], quarters(name), "four times a fourth of it", 2)
          for name, title in TEXTS.items()),
        Figure("the slowest of them", max((got[name]["wall"] for name in TEXTS), key=sum), None, "", 100 * MS, True),
        Figure("for comparison: one search by RE2 in 1 MB", got["page-pass"]["wall"]),
    ]
