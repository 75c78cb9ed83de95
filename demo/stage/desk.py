"""Sets the stage: a person's desk in a throw-away folder, with mail, messages, a calendar and an address book, and an
empty home for Mervo."""

import datetime
import email
import email.policy
import json
import os
import pathlib
import shlex
import sqlite3
import subprocess
import sys

ACCOUNT = "Personal"
ADDRESS = "alex.martin@mail.example.org"
MESSAGES = 320
APPLE_EPOCH = datetime.datetime(2001, 1, 1, tzinfo=datetime.timezone.utc)

TEXTS = [  # minutes ago, from whom, what; an empty handle is the owner
    (190, "+33 6 39 98 00 11", "Are we still on for the harbour walk on Saturday?"),
    (180, "", "Yes! Ten o'clock at the lighthouse."),
    (95, "maya@lighthouse.example.com", "The boiler man comes at 14:00, please be home"),
    (41, "+33 6 39 98 00 11", "Great. I bring the sandwiches \N{SANDWICH}"),
    (12, "maya@lighthouse.example.com", "He moved it to 15:30"),
]


WALK = """BEGIN:VCALENDAR\r
VERSION:2.0\r
PRODID:-//Example//Another calendar program//EN\r
BEGIN:VEVENT\r
UID:walk@lighthouse.example.com\r
DTSTAMP:{day:%Y%m%d}T080000Z\r
SUMMARY:Harbour walk\r
LOCATION:Lighthouse\r
DTSTART:{day:%Y%m%d}T100000\r
DTEND:{day:%Y%m%d}T120000\r
RRULE:FREQ=WEEKLY\r
END:VEVENT\r
END:VCALENDAR\r
"""

FRIEND = """BEGIN:VCARD\r
VERSION:3.0\r
UID:maya@lighthouse.example.com\r
FN:Maya Keeper\r
N:Keeper;Maya;;;\r
ORG:Lighthouse\r
EMAIL;TYPE=INTERNET:maya@lighthouse.example.com\r
TEL;TYPE=CELL:+33 6 39 98 00 12\r
END:VCARD\r
"""


def mark_home(home):
    """Makes a home of the demonstration: only in one that bears its own path does demo-approve say yes."""
    home.mkdir(mode=0o700)
    (home / ".demonstration").write_text(str(home.resolve()), encoding="utf-8")


class Desk:
    def __init__(self, folder, helpers):
        self.folder = pathlib.Path(folder)
        self.user = self.folder / "user"  # stands for the person's home folder
        self.home = self.folder / "mervo"
        self.maildir = self.user / "Mail" / "personal"
        self.helpers = pathlib.Path(helpers)
        self.variables = {
            "HOME": str(self.user),
            "MERVO_HOME": str(self.home),
            "XDG_CONFIG_HOME": str(self.user / ".config"),
            "XDG_DATA_HOME": str(self.user / ".local/share"),
            "XDG_CACHE_HOME": str(self.user / ".cache"),
        }

    @property
    def environment(self):
        return os.environ | self.variables

    def set_up(self):
        mark_home(self.home)
        self._mail()
        self._messages()
        self._days_and_people()
        exports = [f"export {name}={shlex.quote(value)}" for name, value in self.variables.items()]
        path = f'export PATH={shlex.quote(str(self.helpers))}:"$PATH"'
        (self.folder / "env.sh").write_text("\n".join([*exports, path, ""]), encoding="utf-8")

    def _mail(self):
        self.maildir.parent.mkdir(parents=True)
        maker = pathlib.Path(__file__).parent.parent / "make-maildir"
        now = datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")
        subprocess.run([sys.executable, maker, "--out", self.maildir, "--messages", str(MESSAGES), "--folders", "13",
                        "--days", "730", "--now", now], check=True, stdout=subprocess.DEVNULL)
        config = self.user / ".config/mervo-desk/desk.toml"
        config.parent.mkdir(parents=True)
        config.write_text(f'[[mail.account]]\nname = "{ACCOUNT}"\nemail = ["{ADDRESS}"]\npath = "{self.maildir}"\n'
                          '[calendars]\npath = "~/.calendars"\n[reminders]\npath = "~/.calendars"\n'
                          '[contacts]\npath = "~/.contacts"\n[notes]\npath = "~/Notes"\nformat = "markdown"\n'
                          '[jobs]\nrunner = "none"\n',  # which would outlive this desk
                          encoding="utf-8")

    def _messages(self):
        file = self.user / "Library/Messages/chat.db"
        file.parent.mkdir(parents=True)
        now = datetime.datetime.now(datetime.timezone.utc)
        handles = sorted({handle for _, handle, _ in TEXTS if handle})
        with sqlite3.connect(file) as database:
            database.execute("CREATE TABLE handle (ROWID INTEGER PRIMARY KEY, id TEXT NOT NULL)")
            database.execute("CREATE TABLE message (ROWID INTEGER PRIMARY KEY, date INTEGER, is_from_me INTEGER,"
                             " text TEXT, handle_id INTEGER)")
            database.executemany("INSERT INTO handle VALUES (?, ?)", enumerate(handles, 1))
            for minutes, handle, text in TEXTS:
                date = now - datetime.timedelta(minutes=minutes) - APPLE_EPOCH
                number = handles.index(handle) + 1 if handle else 0
                database.execute("INSERT INTO message (date, is_from_me, text, handle_id) VALUES (?, ?, ?, ?)",
                                 (int(date.total_seconds()) * 10**9, int(not handle), text, number))
        database.close()

    def _days_and_people(self):
        """What a synchroniser brings from a server: folders of one file for each event and each person."""
        for name, text in ((".calendars/Home/walk.ics", WALK), (".contacts/people/maya.vcf", FRIEND)):
            file = self.user / name
            file.parent.mkdir(parents=True)
            file.write_text(text.format(day=datetime.date.today() - datetime.timedelta(days=4)), encoding="utf-8",
                            newline="")
        (self.user / "Notes/Ideas").mkdir(parents=True)
        (self.user / "Notes/Ideas/Boat.md").write_text("# Boat\n\nPaint it **before** the winter.\n", encoding="utf-8")

    def texts(self, pattern):
        """The files below the person's home folder, by name."""
        return {str(file.relative_to(self.user)): file.read_text(encoding="utf-8") for file in self.user.glob(pattern)}

    def files(self, mailbox):
        """The messages of one mailbox, as files."""
        folder = self.maildir / ("" if mailbox == "INBOX" else "." + mailbox)
        return sorted([*folder.glob("cur/*"), *folder.glob("new/*")])

    def message(self, file):
        return email.message_from_bytes(file.read_bytes(), policy=email.policy.default)

    def rows(self, query, *values):
        """What a query of the home's database gives, read as the owner would with any SQLite tool."""
        database = sqlite3.connect(f"file:{self.home}/mervo.sqlite?mode=ro", uri=True)
        try:
            return database.execute(query, values).fetchall()
        finally:
            database.close()

    def configure(self, **settings):
        """What the owner sets in the cockpit's settings."""
        file = self.home / "config.json"
        known = json.loads(file.read_text(encoding="utf-8")) if file.exists() else {}
        file.write_text(json.dumps(known | settings), encoding="utf-8")

    def add_rule(self, rule):
        """One row of policy_rules: what the cockpit writes when the owner makes a rule."""
        with sqlite3.connect(self.home / "mervo.sqlite") as database:
            database.execute("INSERT INTO policy_rules (id, enabled, account, tool_pattern, match_json, decision,"
                             " source, created_at) VALUES (:id, 1, NULL, :tool_pattern, :match_json, :decision,"
                             " 'user', strftime('%Y-%m-%dT%H:%M:%SZ', 'now'))", rule)
        database.close()

    def processes(self):
        """The processes that still run in this desk's environment; none, if all ended as they should."""
        mark = f"MERVO_HOME={self.home}".encode()
        found = []
        for entry in pathlib.Path("/proc").glob("[0-9]*/environ"):
            try:
                if mark in entry.read_bytes().split(b"\0"):
                    found.append(int(entry.parent.name))
            except OSError:
                continue
        return found
