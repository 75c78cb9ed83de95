"""The owner of a desk, in a home below a temporary folder."""

import email
import email.policy
import json
import os
import pathlib
import sqlite3
import subprocess


class Person:
    """Two accounts: Claire sends through msmtp, Home has no command."""

    def __init__(self, contents, folder, port, mode="yolo", messages=""):
        self.contents = contents
        self.folder, self.home = pathlib.Path(folder), pathlib.Path(folder) / "mervo"
        self.environment = {"PATH": os.environ["PATH"], "HOME": str(self.folder), "MERVO_HOME": str(self.home),
                            "LANG": "C.UTF-8", "TZ": "UTC", "XDG_CONFIG_HOME": str(self.folder / "config"),
                            "XDG_CACHE_HOME": str(self.folder / "cache"), "XDG_DATA_HOME": str(self.folder / "data")}
        (self.folder / "msmtprc").write_text(f"defaults\nauth off\ntls off\naccount sink\nhost 127.0.0.1\nport {port}\n"
                                             "from claire@desk.test\ntimeout 60\naccount default : sink\n")
        (self.folder / "msmtprc").chmod(0o600)
        self.config = self.folder / "config/mervo-desk/desk.toml"
        self.config.parent.mkdir(parents=True)
        self.accounts(["msmtp", "-C", f"{self.folder}/msmtprc", "-t"], messages)
        for account in ("claire", "home"):
            for part in ("cur", "new", "tmp"):
                (self.folder / account / part).mkdir(parents=True)
        self.home.mkdir(mode=0o700)
        (self.home / ".demonstration").write_text(str(self.home.resolve()))
        self.settings = {"autonomyMode": mode, "notifyEmail": " owner@friends.test\n", "notifyIMessageHandle": " +33 6 1 "}
        self.configure()

    def accounts(self, sendmail, messages=""):
        self.config.write_text(
            f'[[mail.account]]\nname = "Claire"\nemail = ["claire@desk.test", "c.alias@desk.test"]\n'
            f'path = "{self.folder}/claire"\nsendmail = {json.dumps(sendmail)}\n'
            f'[[mail.account]]\nname = "Home"\nemail = ["home@desk.test"]\npath = "{self.folder}/home"\n{messages}')

    def configure(self, **changes):
        self.settings |= changes
        (self.home / "config.json").write_text(json.dumps(self.settings))

    def run(self, tool, **arguments):
        words = [f"{key.rstrip('_')}={value}" for key, value in arguments.items()]
        return subprocess.run([self.contents / "Helpers/mervo", "run", tool, *words], env=self.environment,
                              capture_output=True, text=True, timeout=120)

    def deliver(self, message, name="1700000000.M1.test", account="claire"):
        file = self.folder / account / "cur" / f"{name}:2,S"
        file.write_bytes(message)
        os.utime(file, (1_770_000_000, 1_770_000_000))
        return file

    def mailbox(self, account, folder=""):
        place = self.folder / account / folder
        return [email.message_from_bytes(file.read_bytes(), policy=email.policy.default)
                for part in ("new", "cur") for file in sorted((place / part).glob("*"))]

    def audit(self):
        with sqlite3.connect(f"file:{self.home}/mervo.sqlite?mode=ro", uri=True) as database:
            return database.execute("SELECT actor, action, outcome, reason FROM audit ORDER BY id").fetchall()
