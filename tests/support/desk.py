"""A desk in a temporary folder, and the script host run over it."""

import json
import os
import pathlib
import subprocess
import tempfile

APOSTROPHE = "\u2019"


class Desk:
    """Accounts by name, each with an address NAME@desk.example and a Maildir below the desk's folder."""

    def __init__(self, programs, accounts=("Work",), settings=""):
        self.programs = pathlib.Path(programs)
        self._folder = tempfile.TemporaryDirectory(prefix="mervo-desk-")
        self.root = pathlib.Path(self._folder.name)
        self.config = self.root / "config/mervo-desk/desk.toml"
        self.cache = self.root / "cache/mervo-desk"
        if accounts:
            self.configure("".join(
                '[[mail.account]]\nname = "%s"\nemail = ["%s@desk.example"]\npath = "%s"\n%s\n'
                % (name, name.lower(), self.root / name, settings) for name in accounts))

    def configure(self, text):
        self.config.parent.mkdir(parents=True, exist_ok=True)
        self.config.write_text(text, encoding="utf-8")

    def close(self):
        self._folder.cleanup()

    def _run(self, words, text=None):
        environment = dict(
            os.environ, HOME=str(self.root / "home"), XDG_CONFIG_HOME=str(self.root / "config"),
            XDG_CACHE_HOME=str(self.root / "cache"), XDG_DATA_HOME=str(self.root / "data"))
        return subprocess.run(words, input=text, capture_output=True, env=environment, timeout=60)

    def script(self, text, *arguments):
        """The output of a script that must succeed."""
        run = self._run([self.programs / "osascript", "-", *arguments], text.encode())
        assert run.returncode == 0, run.stderr.decode()
        return run.stdout.decode().removesuffix("\n")

    def mail(self, statements, *arguments):
        return self.script('on run argv\ntell application "Mail"\n%s\nend tell\nend run\n' % statements, *arguments)

    def failure(self, statements, *arguments):
        """The error line of a script that must fail, from the words "execution error" on."""
        text = 'on run argv\ntell application "Mail"\n%s\nend tell\nend run\n' % statements
        run = self._run([self.programs / "osascript", "-", *arguments], text.encode())
        assert run.returncode == 1 and not run.stdout, (run.returncode, run.stdout)
        return run.stderr.decode().strip().split("execution error: ")[-1]

    def health(self):
        run = self._run([self.programs / "desk-health"])
        assert run.returncode == 0, run.stderr
        return {finding["id"]: finding for finding in json.loads(run.stdout)}

    def maildir(self, account="Work", folder=""):
        """The Maildir of a mailbox, made when it is missing."""
        path = self.root / account / folder
        for part in ("tmp", "new", "cur"):
            (path / part).mkdir(parents=True, exist_ok=True)
        return path

    def deliver(self, text, name="1.host", folder="", received=1_700_000_000, flags=None):
        """Puts a message into new, or with flags into cur, as another program would."""
        path = self.maildir(folder=folder)
        temporary = path / "tmp" / name
        temporary.write_bytes(text.encode() if isinstance(text, str) else text)
        os.utime(temporary, (received, received))
        temporary.rename(path / "new" / name if flags is None else path / "cur" / ("%s:2,%s" % (name, flags)))
