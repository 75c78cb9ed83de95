"""10,000 items of a calendar: a third repeats, as in a calendar that was used for years."""

import datetime as dt

from figures import Figure

ITEMS = 10_000
RULES = ("FREQ=WEEKLY", "FREQ=WEEKLY;BYDAY=MO,WE;UNTIL=20280101T000000Z", "FREQ=YEARLY", "FREQ=MONTHLY;BYDAY=-1FR",
         "FREQ=DAILY;COUNT=30", "FREQ=WEEKLY;INTERVAL=2;WKST=SU")
ZONE = """BEGIN:VTIMEZONE
TZID:Europe/Paris
BEGIN:DAYLIGHT
TZOFFSETFROM:+0100
TZOFFSETTO:+0200
TZNAME:CEST
DTSTART:19700329T020000
RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU
END:DAYLIGHT
BEGIN:STANDARD
TZOFFSETFROM:+0200
TZOFFSETTO:+0100
TZNAME:CET
DTSTART:19701025T030000
RRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU
END:STANDARD
END:VTIMEZONE
"""


def item(number):
    start = dt.datetime(2019, 1, 1, 8) + dt.timedelta(days=number * 3 % 3000, minutes=15 * (number % 40))
    rule = f"RRULE:{RULES[number // 3 % len(RULES)]}\n" if number % 3 == 0 else ""
    return (f"BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:-//bench//EN\n{ZONE}BEGIN:VEVENT\nUID:bench-{number}\n"
            f"DTSTAMP:20190101T000000Z\nDTSTART;TZID=Europe/Paris:{start:%Y%m%dT%H%M%S}\nDURATION:PT45M\n{rule}"
            f"SUMMARY:Meeting {number}\nLOCATION:Room {number % 40}\nDESCRIPTION:What is to be said\\, in some words\n"
            "BEGIN:VALARM\nACTION:DISPLAY\nDESCRIPTION:Soon\nTRIGGER:-PT15M\nEND:VALARM\n"
            "END:VEVENT\nEND:VCALENDAR\n").replace("\n", "\r\n")


def make(folder):
    folder.mkdir(parents=True, exist_ok=True)
    for number in range(ITEMS):
        (folder / f"bench-{number}.ics").write_text(item(number), encoding="utf-8", newline="")


def calendar(bench):
    environment, folder = bench.desk("calendar")
    root = folder / "calendars/Work"
    if not (folder / "made").exists():
        make(root)
        (folder / "made").touch()
    program = bench.programs / "bench-calendar"
    got = bench.pairs(environment, {"week": ["spawn", program, "week", root], "parse": ["spawn", program, "parse", root]})
    return [Figure(f"a week of {ITEMS:,} items, from their files", got["week"]["wall"], got["parse"]["wall"],
                   "reading them and parsing them with libical", 1)]
