"""Ends the command line, the server and an approval at any moment, and looks for a row for everything that went out.

MERVO_KILLS says how many are ended (60), MERVO_SEED repeats a run.
"""

import collections
import concurrent.futures
import json
import os
import pathlib
import random
import signal
import stat
import subprocess
import sys
import time
import unittest

from desk import Desk
from peer import call, initialize

Desk.contents = pathlib.Path(sys.argv.pop(1))
KILLS = int(os.environ.get("MERVO_KILLS", 60))
SEED = int(os.environ.get("MERVO_SEED", random.randrange(1 << 32)))
SIGNALS = [signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGKILL]
PATIENCE = 60  # seconds

SENDER = """#!/bin/sh
text=$(cat)
sleep 0.1
printf '%s\\n' "$text" >> "$MERVO_SENT"
sleep "${MERVO_SLOW:-0.2}"
"""


class World(Desk):
    """A desk whose messages go out slowly, and one home for what runs at once and one for what waits first."""

    def __init__(self):
        super().__init__(accounts=())
        for name in ("tmp", "runs", "waits"):
            (self.folder / name).mkdir()
        self.environment |= {"TMPDIR": str(self.folder / "tmp"), "MERVO_SENT": str(self.folder / "sent")}
        sender = self.folder / "sender"
        sender.write_text(SENDER)
        sender.chmod(stat.S_IRWXU)
        self.configure(f'[messages]\nsend = ["{sender}"]\n')
        (self.folder / "runs/config.json").write_text('{"autonomyMode":"yolo"}')

    def start(self, home, program, *words, **more):
        return subprocess.Popen([self.contents / program, *words], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, env=self.environment | {"MERVO_HOME": str(self.folder / home)},
                                **more)

    def command(self, home, *words):
        return self.start(home, "Helpers/mervo", "run", *words)

    def server(self, text):
        peer = self.start("runs", "Helpers/mervo-mcp")
        for message in initialize(), call(1, "imessage.send", {"to": "ada@example.org", "text": text}):
            peer.stdin.write(json.dumps(message).encode() + b"\n")
        peer.stdin.flush()
        return peer

    def approval(self, text):
        queued, _ = self.command("waits", "imessage.send", "to=ada@example.org", f"text={text}").communicate()
        return self.start("waits", "Tests/approver", queued.split()[1].decode())

    def messages_in(self, home):
        rows = self.audit(self.folder / home)
        return [(json.loads(details)["text"], outcome, reason) for _, action, outcome, reason, details in rows
                if action == "imessage.send" and outcome in ("executed", "error")]

    def sent(self):
        file = self.folder / "sent"
        return file.read_text().splitlines() if file.exists() else []

    def left(self):
        """What still runs for this world."""
        found = []
        for entry in pathlib.Path("/proc").iterdir():
            try:
                words = (entry / "cmdline").read_bytes().split(b"\0")
            except (OSError, ValueError):
                continue
            if str(self.folder / "sender").encode() in words:
                found.append(words)
        return found


def end(kind, process, chance):
    """One kill, or two of a person in a hurry; the signal that came first."""
    time.sleep(chance.uniform(0, 0.6))
    first = chance.choice(SIGNALS)
    process.send_signal(first)
    if first != signal.SIGKILL and chance.random() < 0.3:
        time.sleep(chance.uniform(0.06, 0.2))
        process.send_signal(chance.choice(SIGNALS))
    try:
        process.communicate(timeout=PATIENCE)
    except (BrokenPipeError, ValueError):
        process.wait(PATIENCE)
    return first, process.returncode


class Kills(unittest.TestCase):
    def setUp(self):
        self.world = World()
        self.addCleanup(self.world.close)

    def kill(self, number):
        chance = random.Random(SEED + number)
        text = f"message {number}"
        kind = ("run", "server", "approval")[number % 3]
        if kind == "run":
            process = self.world.command("runs", "imessage.send", "to=ada@example.org", f"text={text}")
        else:
            process = self.world.server(text) if kind == "server" else self.world.approval(text)
        return kind, *end(kind, process, chance)

    def test_every_message_that_went_out_has_its_row(self):
        with concurrent.futures.ThreadPoolExecutor(8) as several:
            ends = list(several.map(self.kill, range(KILLS)))
        deadline = time.monotonic() + 10
        while self.world.left() and time.monotonic() < deadline:
            time.sleep(0.05)
        self.assertEqual(self.world.left(), [], "a program outlives what started it")
        for home in ("runs", "waits"):  # two that look at the same time write each row once
            for process in [self.world.command(home, "how_it_works") for _ in range(2)]:
                process.communicate(timeout=PATIENCE)
            self.assertEqual(list((self.world.folder / home / ".runtime/acts").iterdir()), [])
        self.assertEqual(os.listdir(self.world.folder / "tmp"), [], "nothing of a call stays in a file")

        rows = self.world.messages_in("runs") + self.world.messages_in("waits")
        sent, counted = self.world.sent(), collections.Counter(text for text, _, _ in rows)
        summary = f"seed {SEED}: {len(ends)} ended, {len(sent)} sent, {len(rows)} rows, " \
            f"{collections.Counter((kind, end) for kind, _, end in ends)}"
        print(summary, collections.Counter((outcome, reason) for _, outcome, reason in rows))
        self.assertEqual(len(set(sent)), len(sent), summary)
        self.assertEqual([text for text in sent if counted[text] == 0], [], summary)
        self.assertEqual([text for text, count in counted.items() if count > 1], [], summary)
        self.assertGreater(len(sent), KILLS // 10, summary)

    def until_sent(self):
        deadline = time.monotonic() + PATIENCE
        while not self.world.sent():
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.01)

    def test_a_tool_that_does_not_end_is_ended_and_the_row_says_so(self):
        self.world.environment["MERVO_SLOW"] = "60"
        cases = [("run", [signal.SIGINT, signal.SIGINT], -signal.SIGINT, "ended by the person at the terminal"),
                 ("run", [signal.SIGTERM, signal.SIGTERM], -signal.SIGTERM, "ended by a second signal to end"),
                 ("server", [signal.SIGTERM], 128 + signal.SIGTERM, "ended with the server, whose client left,")]
        for number, (kind, signals, status, words) in enumerate(cases):
            (self.world.folder / "sent").unlink(missing_ok=True)
            process = self.world.server(str(number)) if kind == "server" else self.world.command(
                "runs", "imessage.send", "to=ada@example.org", f"text={number}")
            self.until_sent()
            began = time.monotonic()
            for which in signals:
                process.send_signal(which)
                time.sleep(0.1)
            process.communicate(timeout=PATIENCE)
            self.assertLess(time.monotonic() - began, 10)
            self.assertEqual(process.returncode, status)
            self.assertEqual(self.world.messages_in("runs")[-1],
                             (str(number), "error", words + " while it ran; it may have acted"))
            self.assertEqual(self.world.left(), [])

    def test_ignored_signals_stay_ignored(self):
        process = self.world.start("runs", "Helpers/mervo", "run", "imessage.send", "to=ada@example.org", "text=one",
                                   preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        self.until_sent()
        process.send_signal(signal.SIGHUP)
        process.communicate(timeout=PATIENCE)
        self.assertEqual(process.returncode, 0)


if __name__ == "__main__":
    unittest.main()
