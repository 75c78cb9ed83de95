"""A desk in a temporary home: its accounts with their Maildirs, what is configured, and the programs run over it."""

import email
import email.policy
import json
import os
import pathlib
import sqlite3
import subprocess
import sys
import tempfile
import unittest

APOSTROPHE = "\u2019"
MAKER = pathlib.Path(__file__).parents[2] / "demo/make-maildir"


class Call(dict):
    """One call's outcome as the program's JSON tells it."""

    @property
    def lines(self):
        return self["output"].split("\n") if self["output"] else []


class Desk:
    """`accounts`: names, each with the address NAME@desk.example, or {name: addresses}. The Maildir of an account bears
    its name and is made when it is first used. `settings` are more lines of each account. With a `mode` there is a home
    for Mervo, marked as one of the demonstration. Nothing of the caller's environment gets in but its PATH and TZ."""

    contents = None  # the bundle's folder, from the command line of the test

    def __init__(self, accounts=("Work",), settings="", mode=None, folder=None, environment=()):
        self._folder = None if folder else tempfile.TemporaryDirectory(prefix="mervo-desk-")
        self.folder = pathlib.Path(folder or self._folder.name)
        self.home = self.folder / "mervo"
        self.config = self.folder / "config/mervo-desk/desk.toml"
        self.cache = self.folder / "cache/mervo-desk"
        self.environment = {key: value for key, value in os.environ.items() if key == "PATH" or key.endswith("SAN_OPTIONS")}
        self.environment |= {
            "HOME": str(self.folder), "MERVO_HOME": str(self.home), "LANG": "C.UTF-8", "TZ": os.environ.get("TZ", "UTC"),
            "XDG_CONFIG_HOME": str(self.folder / "config"), "XDG_CACHE_HOME": str(self.folder / "cache"),
            "XDG_DATA_HOME": str(self.folder / "data")} | dict(environment)
        self.accounts = {name: accounts[name] if isinstance(accounts, dict) else [f"{name.lower()}@desk.example"]
                         for name in accounts}
        self.configure("".join(self.account(name, settings) for name in self.accounts))
        if mode:
            self.home.mkdir(mode=0o700, parents=True)
            (self.home / ".demonstration").write_text(str(self.home.resolve()))
            self.set(autonomyMode=mode)

    def close(self):
        if self._folder:
            self._folder.cleanup()

    # ---- what is configured

    def account(self, name, settings=""):
        """The lines of desk.toml for one of the accounts."""
        return (f'[[mail.account]]\nname = "{name}"\nemail = {json.dumps(self.accounts[name])}\n'
                f'path = "{self.folder / name}"\n{settings}\n')

    def configure(self, text):
        """Replaces desk.toml. No runner of jobs is started, which would outlive the test, unless the text wants one."""
        self.config.parent.mkdir(parents=True, exist_ok=True)
        self.config.write_text(text if "[jobs]" in text else text + '\n[jobs]\nrunner = "none"\n', encoding="utf-8")

    def set(self, **settings):
        """Changes settings of config.json."""
        file = self.home / "config.json"
        known = json.loads(file.read_text()) if file.exists() else {}
        file.write_text(json.dumps(known | settings))

    # ---- what lies in the mailboxes; without a name the first account is meant

    def maildir(self, folder="", account=None):
        """The Maildir of a mailbox, made when it is missing."""
        path = self.folder / (account or next(iter(self.accounts))) / folder
        for part in ("tmp", "new", "cur"):
            (path / part).mkdir(parents=True, exist_ok=True)
        return path

    def deliver(self, text, name="1.host", folder="", received=1_700_000_000, flags=None, account=None):
        """Puts a message into new, or with flags into cur, as another program would."""
        path = self.maildir(folder, account)
        temporary = path / "tmp" / name
        temporary.write_bytes(text.encode() if isinstance(text, str) else text)
        os.utime(temporary, (received, received))
        return temporary.rename(path / "new" / name if flags is None else path / "cur" / f"{name}:2,{flags}")

    def generate(self, *words, account=None):
        """Makes an account of generated mail."""
        path = self.folder / (account or next(iter(self.accounts)))
        subprocess.run([sys.executable, "-B", MAKER, "--out", path, *words], check=True, stdout=subprocess.DEVNULL,
                       timeout=60)

    def files(self, folder="", account=None):
        path = self.folder / (account or next(iter(self.accounts))) / folder
        return sorted(file for part in ("cur", "new") for file in (path / part).glob("*"))

    def messages(self, folder="", account=None):
        return [email.message_from_bytes(file.read_bytes(), policy=email.policy.default)
                for file in self.files(folder, account)]

    # ---- the programs

    def run(self, program, *words, text=b"", **options):
        """A program of the bundle; `text` is its standard input."""
        text = text.encode() if isinstance(text, str) else text
        done = subprocess.run([self.contents / program, *words], input=text, capture_output=True, timeout=120,
                              env=self.environment, **options)
        done.stdout, done.stderr = done.stdout.decode(), done.stderr.decode()
        return done

    def mervo(self, *words, **options):
        return self.run("Helpers/mervo", *words, **options)

    def tool(self, tool, *words, **arguments):
        """`mervo run`; an argument with a name of Python's own has a "_" behind it."""
        return self.mervo("run", tool, *words, *(f"{key.rstrip('_')}={value}" for key, value in arguments.items()))

    def call(self, tool, **arguments):
        return Call(json.loads(self.tool(tool, "--json", **arguments).stdout))

    def queue(self, id, tool="mail.delete", args=None, **fields):
        """An action that waits, as if a call had left it; its file."""
        file = self.home / "pending" / f"{id}.json"
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(json.dumps({"id": id, "tool": tool, "args": args or {}, "summary": tool,
                                    "createdAt": "2026-01-01T10:00:00Z"} | fields))
        return file

    def waiting(self):
        return sorted(file.stem for file in (self.home / "pending").glob("*.json"))

    def approve(self, pending):
        return self.run("Demo/demo-approve", pending)

    def rows(self, statement, home=None):
        with sqlite3.connect(f"file:{home or self.home}/mervo.sqlite?mode=ro", uri=True, timeout=10) as database:
            return database.execute(statement).fetchall()

    def audit(self, home=None):
        """(actor, action, outcome, reason, details), the oldest first."""
        return self.rows("SELECT actor, action, outcome, reason, details FROM audit ORDER BY id", home)

    def health(self):
        """The findings of the desk by their ids."""
        done = self.run("Helpers/platform/desk-health")
        assert done.returncode == 0, done.stderr
        return {finding["id"]: finding for finding in json.loads(done.stdout)}

    def script(self, text, *arguments):
        """The output of a script that must succeed."""
        done = self.run("Helpers/platform/osascript", "-", *arguments, text=text)
        assert done.returncode == 0, done.stderr
        return done.stdout.removesuffix("\n")

    def mail(self, statements, *arguments):
        return self.script(_TELL_MAIL % statements, *arguments)

    def failure(self, statements, *arguments):
        """The error line of a script that must fail, from the words "execution error" on."""
        done = self.run("Helpers/platform/osascript", "-", *arguments, text=_TELL_MAIL % statements)
        assert done.returncode == 1 and not done.stdout, (done.returncode, done.stdout)
        return done.stderr.strip().split("execution error: ")[-1]


_TELL_MAIL = 'on run argv\ntell application "Mail"\n%s\nend tell\nend run\n'


class DeskTest(unittest.TestCase):
    """A fresh desk for each test."""

    options = {}  # of that desk

    def setUp(self):
        self.desk = self.new_desk(**self.options)

    def new_desk(self, **options):
        desk = Desk(**options)
        self.addCleanup(desk.close)
        return desk
