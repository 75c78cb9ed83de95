"""Bulk work on mail beside a plain loop of the same renames."""

import os
import pathlib
import re
import shutil
import subprocess
import sys

from figures import Figure

ROOT = pathlib.Path(__file__).resolve().parent.parent
MESSAGES, ACCOUNT = 50_000, "Bench"
SENDER = "harbour.example"  # one host in ten: matches all over the mailbox
SENT_BY = re.compile(rb"^From:[^\n]*" + SENDER.encode(), re.I | re.M)


class Mailbox:
    """One inbox whose copies are made of hard links: a bulk operation only renames."""

    def __init__(self, bench):
        self.environment, self.folder = bench.desk("bulk")
        (self.folder / "mervo").mkdir(exist_ok=True)
        (self.folder / "mervo/config.json").write_text('{"autonomyMode":"yolo"}', encoding="utf-8")
        self.source, self.copy, self.still = self.folder / "source", self.folder / "mail", self.folder / "still"
        self.program = bench.helpers / "mervo"
        if not (self.source / "made").exists():
            shutil.rmtree(self.source, ignore_errors=True)
            print(f"  making {MESSAGES} messages", flush=True)
            subprocess.run([sys.executable, "-B", ROOT / "demo/make-maildir", "--out", self.source, "--messages",
                            str(MESSAGES), "--folders", "1"], check=True, stdout=subprocess.DEVNULL)
            for name in (".Trash", ".Box"):
                for part in ("cur", "new", "tmp"):
                    (self.source / name / part).mkdir(parents=True)
            (self.source / "made").touch()
        self.matches = []
        for part in ("cur", "new"):
            for entry in os.scandir(self.source / part):
                with open(entry.path, "rb") as file:
                    if SENT_BY.search(file.read(4096).partition(b"\n\n")[0]):
                        self.matches.append((part, entry.name))

    def fresh(self, folder):
        """A command that makes the copy anew, as if nobody had touched it for an hour, and has it indexed."""
        parts = " ".join(f"{folder}{box}/{part}" for box in ("", "/.Trash", "/.Box") for part in ("cur", "new"))
        look = f"{self.program} run mail.search subject=none"
        return (f"rm -rf {folder} && cp -al {self.source} {folder} && touch -d '1 hour ago' {parts} && "
                f"{look} >/dev/null")

    def renames(self):
        """The list of the same renames in another copy."""
        lines = [f"{self.still}/{part}/{name}\n{self.still}/.Trash/cur/{name.partition(':')[0]}:2,S\n"
                 for part, name in self.matches]
        (self.folder / "renames").write_text("".join(lines), encoding="utf-8")
        return self.folder / "renames"


def bulk(bench):
    box = Mailbox(bench)
    arguments = [f"account={ACCOUNT}", "mailbox=INBOX", f"from={SENDER}"]
    run = ["after", box.fresh(box.copy), box.program, "run"]
    measures = {"delete": [*run, "mail.delete", *arguments], "move": [*run, "mail.move", "dest=Box", *arguments],
                "flag": [*run, "mail.flag", *arguments], "rename": ["rename", box.fresh(box.still), box.renames()],
                "search": [*run, "mail.search", *arguments, "limit=0"]}
    got = bench.pairs(box.environment, measures, 11)
    count, floor = f"{len(box.matches):,} of {MESSAGES:,}", got["rename"]["wall"]
    loop = "a loop of the same renames"
    return [
        Figure(f"`mervo run mail.delete` of {count} messages", got["delete"]["wall"], floor, loop, 3),
        Figure(f"`mervo run mail.move` of {count}", got["move"]["wall"], floor, loop, 3),
        Figure(f"`mervo run mail.flag` of {count}", got["flag"]["wall"], floor, loop, 3),
        Figure("`mervo run mail.search` that finds the same", got["search"]["wall"], floor, loop),
    ]
