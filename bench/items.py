"""Events of a week among 10,000, and 5,000 reminders: nothing has changed since the last look, or nothing is known."""

import datetime
import os
import random

from figures import Figure, added

EVENTS, TASKS = 10_000, 5_000
LONG_AGO = 1.7e9  # when the files were written
KHAL = """[calendars]
[[events]]
path = {0}/events
[locale]
local_timezone = UTC
default_timezone = UTC
[sqlite]
path = {1}
"""


def write(file, *lines):
    text = ["BEGIN:VCALENDAR", "VERSION:2.0", "PRODID:bench", *lines, "END:VCALENDAR", ""]
    file.write_bytes("\r\n".join(text).encode())
    os.utime(file, (LONG_AGO, LONG_AGO))


def make(events, tasks):
    """Every tenth event repeats; they lie in the eight years around today."""
    chance = random.Random(5)
    first = datetime.datetime.now() - datetime.timedelta(days=4 * 365)
    for folder in (events, tasks):
        folder.mkdir(parents=True)
    for number in range(EVENTS):
        start = first + datetime.timedelta(minutes=chance.randrange(8 * 365 * 1440))
        rule = ["RRULE:FREQ=WEEKLY;COUNT=10"] if number % 10 == 0 else []
        write(events / f"{number:05}.ics", "BEGIN:VEVENT", f"UID:e{number}", "DTSTAMP:20200101T000000Z",
              f"SUMMARY:Event {number}", "DESCRIPTION:" + "some words " * 12, f"DTSTART:{start:%Y%m%dT%H%M%S}Z",
              "DURATION:PT1H", *rule, "END:VEVENT")
    for number in range(TASKS):
        due = first + datetime.timedelta(days=chance.randrange(8 * 365))
        write(tasks / f"{number:05}.ics", "BEGIN:VTODO", f"UID:t{number}", "DTSTAMP:20200101T000000Z",
              f"SUMMARY:Task {number}", f"DUE;VALUE=DATE:{due:%Y%m%d}",
              *(["STATUS:COMPLETED"] if number % 2 else []), "END:VTODO")


def items(bench):
    environment, folder = bench.desk("items")
    root = folder / "items"
    if not root.exists():
        make(root / "events", root / "tasks")
    with open(folder / "config/mervo-desk/desk.toml", "a", encoding="utf-8") as settings:
        settings.write(f'[calendars]\npath = "{root}"\n[reminders]\npath = "{root}"\n')
    (folder / "khal.conf").write_text(KHAL.format(root, folder / "khal.db"), encoding="utf-8")
    mervo, parse = bench.helpers / "mervo", bench.programs / "bench-calendar"
    got = bench.pairs(environment, {
        "events": ["spawn", mervo, "run", "cal.find"], "reminders": ["spawn", mervo, "run", "reminder.find"],
        "start": ["spawn", mervo, "run", "how_it_works"], "walk": ["walk", root], "stamps": ["stamps", root],
        "khal": ["spawn", "khal", "-c", folder / "khal.conf", "list", "today", "7d"]})
    cold = bench.pairs(environment, {
        "events": ["fresh", folder / "cache/mervo-desk", mervo, "run", "cal.find"],
        "parse": ["spawn", parse, "parse", root / "events"]}, max(11, bench.rounds // 2))
    wall = {name: series["wall"] for name, series in got.items()}
    floor = f"opening and reading all {EVENTS + TASKS:,} items"
    return [
        Figure("`cal.find` among 10,000 events, nothing changed", wall["events"], wall["walk"], floor, 0.2),
        Figure("`reminder.find` among 5,000 reminders, nothing changed", wall["reminders"], wall["walk"], floor, 0.2),
        Figure("for comparison: a stat of every item, one after the other", wall["stamps"], wall["walk"], floor),
        Figure("`cal.find` again, beside what it cannot do without", wall["events"], added(wall["start"], wall["stamps"]),
               "`mervo run how_it_works` + these stats"),
        Figure("`cal.find` for the first time", cold["events"]["wall"], cold["parse"]["wall"],
               "reading the events and parsing them with libical", 3),
        Figure("`cal.find` beside `khal list`, its cache warm", wall["events"], wall["khal"], "`khal list`", 0.2),
    ]
