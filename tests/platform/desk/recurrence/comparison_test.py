"""Generated events against other programs: python-dateutil with zoneinfo, khal, and python-icalendar.

Every difference is a fault of ours unless it stands in `dateutil_fault` or `khal_fault`, with the words of RFC 5545.
More of them by hand: comparison_test.py CONTENTS --items 5000 --seed 7
"""

import argparse
import collections
import dataclasses
import datetime as dt
import pathlib
import random
import signal
import subprocess
import sys
import tempfile
import unittest
import zoneinfo

import icalendar
from dateutil import rrule

LOCAL = "America/New_York"
ZONES = ("Europe/Berlin", "Australia/Sydney", "Asia/Kolkata")
DAYS = ("MO", "TU", "WE", "TH", "FR", "SA", "SU")
HOUR = dt.timedelta(hours=1)
SPANS = [(dt.datetime(2023, 2, 1), dt.datetime(2023, 5, 1)), (dt.datetime(2024, 9, 28, 12), dt.datetime(2024, 11, 6)),
         (dt.datetime(2026, 1, 1), dt.datetime(2027, 1, 1)), (dt.datetime(2032, 2, 27), dt.datetime(2032, 3, 2, 3)),
         (dt.datetime(2025, 3, 30, 1), dt.datetime(2025, 3, 30, 1, 30))]  # UTC


@dataclasses.dataclass
class Item:
    uid: str
    zone: str  # "": all day; "UTC"; "floating"; or a name
    start: dt.datetime  # on the clock of the zone
    length: dt.timedelta
    nominal: bool = False  # DURATION in place of DTEND
    rules: list = dataclasses.field(default_factory=list)
    rdates: list = dataclasses.field(default_factory=list)
    exdates: list = dataclasses.field(default_factory=list)
    changes: dict = dataclasses.field(default_factory=dict)  # date of the rule -> new start
    future: dt.datetime | None = None  # which of the changes is for all that follow

    def value(self, moment):
        if not self.zone:
            return moment.strftime("%Y%m%d")
        return moment.strftime("%Y%m%dT%H%M%S") + ("Z" if self.zone == "UTC" else "")

    def line(self, name, *moments, extra=""):
        zone = ";VALUE=DATE" if not self.zone else ""
        zone = f";TZID={self.zone}" if "/" in self.zone else zone
        return f"{name}{zone}{extra}:" + ",".join(map(self.value, moments))

    def tz(self):
        return zoneinfo.ZoneInfo(self.zone if "/" in self.zone else "UTC" if self.zone == "UTC" else LOCAL)

    def utc(self, moment):
        return moment.replace(tzinfo=self.tz()).astimezone(dt.timezone.utc).replace(tzinfo=None)

    def end(self, start):
        """The end of an occurrence in UTC: exact with DTEND, on the clock with DURATION in days (RFC 5545, 3.8.5.3)."""
        if not self.zone or (self.nominal and self.length.seconds == 0):
            return self.utc(start + self.length)
        if self.nominal:
            return self.utc(start + dt.timedelta(days=self.length.days)) + dt.timedelta(seconds=self.length.seconds)
        return self.utc(start) + (self.utc(self.start + self.length) - self.utc(self.start))

    def ics(self):
        lines = ["BEGIN:VCALENDAR", "VERSION:2.0", "PRODID:-//compare", *self.event(self.start, {})]
        for date, start in self.changes.items():
            lines += self.event(start, {date: "" if date != self.future else ";RANGE=THISANDFUTURE"})
        return "\r\n".join(lines + ["END:VCALENDAR", ""])

    def event(self, start, changed):
        days, rest = self.length.days, self.length.seconds
        length = f"DURATION:P{days}D" + (f"T{rest // 60}M" if rest else "")
        lines = ["BEGIN:VEVENT", f"UID:{self.uid}", "DTSTAMP:20200101T000000Z", f"SUMMARY:{self.uid}",
                 self.line("DTSTART", start), length if self.nominal else self.line("DTEND", start + self.length)]
        if changed:
            lines += [self.line("RECURRENCE-ID", date, extra=extra) for date, extra in changed.items()]
        else:
            lines += [f"RRULE:{rule}" for rule in self.rules]
            lines += [self.line("RDATE", *self.rdates)] if self.rdates else []
            lines += [self.line("EXDATE", *self.exdates)] if self.exdates else []
        return lines + ["END:VEVENT"]


def some(random_, choices, most=3):
    return ",".join(map(str, sorted(random_.sample(choices, random_.randint(1, most)))))


def parts(r, frequency):
    """Parts for a rule, each with some chance; all that RFC 5545 allows for the frequency, and what it leaves out."""
    sub = frequency in ("HOURLY", "MINUTELY", "SECONDLY")
    found = {}
    if r.random() < 0.35:
        found["BYMONTH"] = some(r, range(1, 13), 6 if sub else 3)
    if r.random() < 0.45:
        days = r.sample(DAYS, r.randint(1, 4))
        if frequency in ("MONTHLY", "YEARLY") and r.random() < 0.6:
            most = 5 if frequency == "MONTHLY" or "BYMONTH" in found else 53
            days = [f"{r.choice((-1, 1)) * r.choice((1, 1, 2, 3, 4, 5, r.randint(1, most)))}{day}" for day in days]
        found["BYDAY"] = ",".join(days)
    if frequency != "WEEKLY" and r.random() < 0.25:
        found["BYMONTHDAY"] = some(r, [*range(1, 32), *range(-31, 0)], 8)
    if frequency in ("YEARLY", "HOURLY", "MINUTELY") and r.random() < 0.15:
        found["BYYEARDAY"] = some(r, [*range(1, 367), *range(-366, 0)], 12)
    if frequency == "YEARLY" and r.random() < 0.2:
        found["BYWEEKNO"] = some(r, [1, 2, 52, 53, -1, -2, -53, *range(3, 52)], 5)
    return found


def times(r, frequency, found):
    if r.random() < 0.2:
        found["BYHOUR"] = some(r, range(24), 4)
    if frequency != "SECONDLY" and r.random() < 0.15 or frequency == "HOURLY" and r.random() < 0.4:
        found["BYMINUTE"] = some(r, range(60), 3)
    if r.random() < 0.07:
        found["BYSECOND"] = some(r, range(60), 2)


def rule(r, item):
    frequency = r.choice(("YEARLY", "MONTHLY", "WEEKLY", "DAILY") * 3 + (() if not item.zone else
                                                                        ("HOURLY", "MINUTELY", "SECONDLY")))
    found = parts(r, frequency)
    if item.zone:
        times(r, frequency, found)
    if found and r.random() < 0.25:
        found["BYSETPOS"] = some(r, [1, 2, 3, -1, -2, -3, r.randint(1, 20)], 3)
    if r.random() < 0.4:
        found["INTERVAL"] = r.choice((2, 2, 3, 4, 5, 7, 13, 1440))
    if r.random() < 0.3:
        found["WKST"] = r.choice(DAYS)
    sub = frequency in ("HOURLY", "MINUTELY", "SECONDLY")
    end = r.random()
    if end < 0.3:
        found["COUNT"] = r.choice((1, 3, 10, 50, 300))
    elif end < 0.6 or sub:
        days = r.randint(0, 40) if sub else r.randint(0, 5000)
        until = item.start + dt.timedelta(days=min(days, 2 if frequency == "SECONDLY" else days))
        if item.zone in ZONES or item.zone == "UTC":
            found["UNTIL"] = item.utc(until).strftime("%Y%m%dT%H%M%SZ")
        else:
            found["UNTIL"] = item.value(until)
    words = list(found.items())
    r.shuffle(words)
    return ";".join([f"FREQ={frequency}", *(f"{name}={value}" for name, value in words)])


class TooLong(Exception):
    """dateutil walks to the year 9999 for a rule that matches nothing."""


def within(seconds, work):
    """What `work` returns; TooLong when it takes more processor time."""
    def stop(*_):
        raise TooLong

    signal.signal(signal.SIGVTALRM, stop)
    signal.setitimer(signal.ITIMER_VIRTUAL, seconds)
    try:
        return work()
    finally:
        signal.setitimer(signal.ITIMER_VIRTUAL, 0)


def items(seed, count):
    """Each with its own seed; those that dateutil cannot expand are left out."""
    for number in range(count):
        try:
            yield within(0.5, lambda: make(random.Random(f"{seed}-{number}"), number))
        except (TooLong, ValueError):  # ValueError: a rule that never matches, found out at once
            continue


def make(r, number):
    zone = r.choice(ZONES * 3 + ("", "", "UTC", "floating"))
    year = r.choice((2023, 2024, 2024, 2025, 2026, r.randint(2000, 2026)))
    start = dt.datetime(year, 1, 1) + dt.timedelta(days=r.randint(0, 365))
    item = Item(f"item-{number}", zone, start, dt.timedelta(days=r.choice((1, 1, 2, 10))))
    if zone:  # often at the hours when clocks change
        item.start += dt.timedelta(hours=r.choice((0, 1, 2, 2, 3, 9, 17, 23)), minutes=r.choice((0, 0, 15, 30)))
        item.length = r.choice((dt.timedelta(0), HOUR, HOUR, 8 * HOUR, dt.timedelta(days=1), dt.timedelta(days=3)))
    item.nominal = r.random() < 0.3
    if r.random() < 0.92:
        item.rules = [rule(r, item) for _ in range(1 if r.random() < 0.95 else 2)]
    if r.random() < 0.2:
        item.rdates = [item.start + dt.timedelta(days=r.randint(1, 900)) for _ in range(r.randint(1, 4))]
    dates = sorted({*base(item, dt.datetime(2026, 6, 1))})[:400]
    if dates and r.random() < 0.4:
        item.exdates = r.sample(dates, min(len(dates), r.randint(1, 4)))
    left = [date for date in dates if date not in item.exdates]
    if left and (item.rules or item.rdates) and r.random() < 0.35:
        for date in r.sample(left, min(len(left), r.randint(1, 3))):
            item.changes[date] = date + r.choice((1, -1)) * dt.timedelta(days=r.randint(0, 9))
            item.changes[date] += dt.timedelta(hours=r.randint(0, 5)) if zone else dt.timedelta(0)
        if r.random() < 0.3:
            item.future = max(item.changes)
    return item


def expand(item, text, last):
    """The dates of a rule on the clock of its event, up to `last`."""
    made = rrule.rrulestr(text, dtstart=item.start, ignoretz=True)
    if made._until is not None and text.find("Z") > 0:
        until = made._until.replace(tzinfo=dt.timezone.utc).astimezone(item.tz()).replace(tzinfo=None)
        made = made.replace(until=until)
    for number, date in enumerate(made.xafter(item.start, inc=True)):
        if date > last or number > 200_000:
            return
        yield date


def base(item, last):
    dates = set(item.rdates)
    for text in item.rules:
        dates.update(expand(item, text, last))
    return dates | ({item.start} if not item.rules else set())


def expected(item):
    """What dateutil says: {(start, end, date of the rule)} in UTC."""
    last = max(end for _, end in SPANS) + dt.timedelta(days=12)
    found = set()
    for date in base(item, last) - set(item.exdates) - set(item.changes):
        start = date
        if item.future is not None and date > item.future:
            start += item.changes[item.future] - item.future
        found.add((item.utc(start), item.end(start) if start == date else moved_end(item, start), item.value(date)))
    for date, start in item.changes.items():
        found.add((item.utc(start), moved_end(item, start, own=True), item.value(date)))
    return found


def moved_end(item, start, own=False):
    """The end of a changed occurrence: its own DTEND says how long it lasts, and how long those behind it do."""
    changed = item.changes[item.future] if not own else start
    return dataclasses.replace(item, start=changed).end(start)


def fields(text):
    return dict(part.split("=") for part in text.split(";"))


def dateutil_fault(item):
    """Why dateutil's answer about an item is not the RFC's; nothing where it is."""
    for text in item.rules:
        found = fields(text)
        days = [day for day in found.get("BYDAY", "").split(",") if day]
        if "BYWEEKNO" in found and not {"BYDAY", "BYMONTHDAY", "BYYEARDAY"} & found.keys():
            # 3.3.10: "Information, not contained in the rule, necessary to determine the various recurrence instance
            # start time and dates are derived from the Start Time (DTSTART)". dateutil takes every day of the week.
            return "a week without a day"
        if {"-53", "-52"} & set(found.get("BYWEEKNO", "").split(",")):
            # 3.3.10: "week number one of the calendar year is the first week that contains at least four (4) days in that
            # calendar year". Counted from the end it may begin in the December before, where dateutil looks for 1 alone.
            return "the first week, counted from the end"
        if len({len(day) > 2 for day in days}) > 1:
            # 3.3.10: "The BYDAY rule part specifies a COMMA-separated list of days of the week". dateutil wants days
            # with and without a number to match at once.
            return "days with and without a number"
        if found["FREQ"] == "WEEKLY" and "BYSETPOS" in found and \
                DAYS[item.start.weekday()] != found.get("WKST", "MO"):
            # 3.3.10: "BYSETPOS operates on a set of recurrence instances in one interval of the recurrence rule. For
            # example, in a WEEKLY rule, the interval would be one week". dateutil's first week begins with DTSTART.
            return "a first week cut short"
    return None


KHAL = """[calendars]
[[all]]
path = {0}/items
[locale]
local_timezone = UTC
default_timezone = UTC
timeformat = %H:%M:%S
dateformat = %Y-%m-%d
longdateformat = %Y-%m-%d
datetimeformat = %Y-%m-%dT%H:%M:%S
longdatetimeformat = %Y-%m-%dT%H:%M:%S
[sqlite]
path = {0}/khal.db
"""


def khal_fault(item):
    """Why khal cannot be asked about an item, or its answer is not the RFC's; dateutil's faults are khal's too."""
    if len(item.rules) > 1 or any("MINUTELY" in text or "SECONDLY" in text for text in item.rules):
        return "it reads one rule, and keeps a row for each date up to 2037"
    if any(len(day.lstrip("-")) > 3 for text in item.rules for day in fields(text).get("BYDAY", "").split(",")):
        # 3.3.10: weekdaynum = [[plus / minus] ordwk] weekday; ordwk = 1*2DIGIT. Its reader takes one digit, and khal ends
        # with an error.
        return "the tenth weekday of a year"
    if not item.length:
        # 3.6.1: "the event ends on the same calendar date and time of day specified by the DTSTART property". khal
        # takes an hour.
        return "no length"
    if item.nominal and item.zone:
        # 3.8.5.3: "the same nominal duration will apply". khal adds exact seconds.
        return "days on the clock"
    if item.future is not None and item.zone in ZONES:
        return "it moves what follows by exact seconds"  # 3.2.13: by the same difference as the changed instance
    if not any(True for text in item.rules for _ in expand(item, text, dt.datetime(2037, 1, 1))) and item.rules:
        return "it leaves an event out whose rule gives no date, with its RDATE"  # 3.8.5.3: the union of both
    return dateutil_fault(item)


def is_twice(item, moment):
    """A time that occurs twice: 3.3.5: "refers to the first occurrence of the referenced time". khal takes the second."""
    wall = moment.replace(tzinfo=dt.timezone.utc).astimezone(item.tz()).replace(tzinfo=item.tz(), fold=0)
    return wall.utcoffset() != wall.replace(fold=1).utcoffset()


def khals(folder, first, last):
    """{(uid, start, end)} in UTC of whole days."""
    (folder / "config").write_text(KHAL.format(folder))
    words = ["khal", "-c", folder / "config", "list", "--day-format", "", "--format",
             "{uid}|{start-long-full}|{end-long-full}", f"{first:%Y-%m-%d}", f"{last:%Y-%m-%d}"]
    answer = subprocess.run(words, capture_output=True, text=True, check=True, timeout=600).stdout
    rows = (line.split("|") for line in answer.splitlines() if line.startswith("item-"))
    return {(uid, dt.datetime.fromisoformat(start), dt.datetime.fromisoformat(end)) for uid, start, end in rows}


def ours(contents, folder, span, zone=LOCAL):
    seconds = [str(int(moment.replace(tzinfo=dt.timezone.utc).timestamp())) for moment in span]
    files = "".join(f"{path}\n" for path in sorted(folder.glob("*.ics")))
    answer = subprocess.run([contents / "Tests/occurrences-of", *seconds], input=files, text=True, check=True,
                            capture_output=True, timeout=600, env={"TZ": zone}).stdout
    found = collections.defaultdict(set)
    for line in answer.splitlines():
        words = line.split()
        uid = pathlib.Path(words[0]).stem
        if words[1] == "bounded":
            found[uid].add("bounded")
        else:
            start, end = (dt.datetime.fromtimestamp(int(word), dt.timezone.utc).replace(tzinfo=None)
                          for word in words[1:3])
            found[uid].add((start, end, words[5]))
    return found


def overlapping(dates, span):
    return {date for date in dates if date[0] < span[1] and (date[1] > span[0] or date[0] == date[1] >= span[0])}


class Comparison(unittest.TestCase):
    contents, count, seed = None, 400, 20260105

    @classmethod
    def setUpClass(cls):
        cls.items = list(items(cls.seed, cls.count))
        cls.keep = tempfile.TemporaryDirectory(prefix="recurrence-")
        cls.folder = pathlib.Path(cls.keep.name)
        for item in cls.items:
            (cls.folder / f"{item.uid}.ics").write_bytes(item.ics().encode())
        cls.answers = [ours(cls.contents, cls.folder, span) for span in SPANS]

    @classmethod
    def tearDownClass(cls):
        cls.keep.cleanup()

    def test_every_occurrence_is_dateutils(self):
        compared, differences = 0, []
        for item in self.items:
            if dateutil_fault(item):
                continue
            try:
                all_ = within(2, lambda it=item: expected(it))
            except TooLong:
                continue
            compared += len(item.rules)
            for span, answer in zip(SPANS, self.answers, strict=True):
                wanted, found = overlapping(all_, span), answer[item.uid]
                if not item.rules and not item.rdates:
                    found = {(start, end, item.value(item.start)) for start, end, _ in found}
                if "bounded" in found:
                    self.assertGreater(len(wanted), 9_000, item)
                elif wanted != found:
                    differences.append(f"{item.ics()}\n{span[0]} to {span[1]}\n  dateutil alone: "
                                       f"{sorted(wanted - found)[:5]}\n  ours alone: {sorted(found - wanted)[:5]}")
        self.assertFalse(differences, f"{len(differences)}:\n" + "\n".join(differences[:3]))
        self.assertGreaterEqual(compared, min(200, self.count // 2))
        print(f"{compared} rules compared with dateutil", file=sys.stderr)

    def test_every_occurrence_is_khals(self):
        folder = self.folder / "khal"
        (folder / "items").mkdir(parents=True)
        asked = {item.uid: item for item in self.items if not khal_fault(item)}
        asked = dict(list(asked.items())[:150])
        for item in asked.values():
            (folder / "items" / f"{item.uid}.ics").write_bytes(item.ics().encode())
        for first, last in ((dt.datetime(2024, 9, 28), dt.datetime(2024, 11, 6)),
                            (dt.datetime(2026, 3, 1), dt.datetime(2026, 4, 20))):
            span = (first, last + dt.timedelta(days=1))
            found = {(uid, start, end) for uid, dates in ours(self.contents, folder / "items", span, "UTC").items()
                     for start, end, _ in dates}
            theirs = {(uid, start, end + dt.timedelta(days=0 if asked[uid].zone else 1))  # the last day, all day long
                      for uid, start, end in khals(folder, first, last)}
            alone = {date for date in found ^ theirs
                     if not is_twice(asked[date[0]], date[1]) and not is_twice(asked[date[0]], date[2])}
            self.assertFalse(alone, "\n".join(f"{date} {date in found}\n{asked[date[0]].ics()}"
                                              for date in sorted(alone)[:3]))
        self.assertGreaterEqual(len(asked), min(100, self.count // 5))

    def test_icalendar_reads_the_same_times(self):
        for item in self.items:
            calendar = icalendar.Calendar.from_ical(item.ics())
            events = calendar.walk("VEVENT")
            self.assertEqual(len(events), 1 + len(item.changes))
            starts = [event.decoded("DTSTART") for event in events]
            wanted = [item.start, *item.changes.values()]
            naive = [dt.datetime(*start.timetuple()[:6]) for start in starts]
            self.assertEqual(naive, wanted, item)


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("contents", type=pathlib.Path)
    parser.add_argument("--items", type=int, default=Comparison.count)
    parser.add_argument("--seed", type=int, default=Comparison.seed)
    given, rest = parser.parse_known_args()
    Comparison.contents, Comparison.count, Comparison.seed = given.contents, given.items, given.seed
    unittest.main(argv=[sys.argv[0], *rest])
