"""Calendars and lists of reminders as folders of files, written and read by python-icalendar rather than the desk."""

import datetime
import pathlib

import icalendar
from dateutil import tz

ZONE = tz.gettz()  # of the environment, TZ


def soon(days=1, hour=12):
    """A local time on a day from today."""
    day = datetime.date.today() + datetime.timedelta(days)
    return datetime.datetime(day.year, day.month, day.day, hour, tzinfo=ZONE)


class Vdir:
    """A calendar or list: a folder of files with one item each."""

    def __init__(self, path, title=None):
        self.path = pathlib.Path(path)
        self.path.mkdir(parents=True, exist_ok=True)
        if title:
            (self.path / "displayname").write_text(title, encoding="utf-8")

    def put(self, kind, uid, *lines):
        """An item with these lines of its own, as another program would write it."""
        text = ["BEGIN:VCALENDAR", "VERSION:2.0", "PRODID:-//x//y//EN", f"BEGIN:{kind}", f"UID:{uid}",
                "DTSTAMP:20260101T000000Z", *lines, f"END:{kind}", "END:VCALENDAR", ""]
        file = self.path / f"{uid}.ics"
        file.write_text("\r\n".join(text), encoding="utf-8", newline="")
        return file

    def event(self, uid, title, start, *lines, hours=1):
        """One that lies at these times everywhere: in UTC."""
        times = [f"{name}:{when.astimezone(datetime.timezone.utc):%Y%m%dT%H%M%SZ}"
                 for name, when in (("DTSTART", start), ("DTEND", start + datetime.timedelta(hours=hours)))]
        return self.put("VEVENT", uid, f"SUMMARY:{title}", *times, *lines)

    def todo(self, uid, title, *lines):
        return self.put("VTODO", uid, f"SUMMARY:{title}", *lines)

    def items(self, kind):
        """The components of all files."""
        return [part for file in sorted(self.path.glob("*.ics"))
                for part in icalendar.Calendar.from_ical(file.read_bytes()).walk(kind)]

    def titles(self, kind):
        return sorted(str(item["SUMMARY"]) for item in self.items(kind))
