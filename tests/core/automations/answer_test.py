"""A question of a scheduled agent and its answer, from the tool call that makes the automation to the prompt that holds
the answer. Every process is the real one but the agent's client. Takes up to a minute, as the runner starts on time."""

import os
import pathlib
import re
import signal
import sys
import time
import unittest

import desk
from automations import AutomationTest
from desktop import wait
from peer import Peer, call, initialize

OWNER = "me@home.test"
WORK = r"""cp "$to/input" "$to/prompt.$(ls "$to" | grep -c prompt)"
[ "$(ls "$to" | grep -c prompt)" -gt 1 ] || mervo run ask text='Shall I?' > "$to/asked"
mervo auto-done
sleep 600
"""
BLOCK = ('=== DECISIONS / ANSWERS FROM YOUR OPERATOR ===\nHonor these instructions. To ask the operator a question: '
         '`mervo run ask text="..."`.\n• [answer] #%s "Shall I?" → Yes, on Friday.\n' + "=" * 45 + "\n\n")


class Answer(AutomationTest):
    options = {"accounts": {"Home": [OWNER]}, "mode": "copilote"}

    def setUp(self):
        super().setUp()
        self.desk.configure(self.desk.account("Home") + '[jobs]\nrunner = "own"\n')
        self.desk.maildir()
        self.desk.set(notifyEmail=OWNER)
        self.jobs = self.desk.folder / "Library/LaunchAgents/.launchd"
        self.addCleanup(self.end_runner)
        self.work(WORK)
        self.server = Peer(self.desk.contents / "Helpers/mervo-mcp", environment=self.desk.environment)
        self.addCleanup(self.server.kill)
        self.server.ask(initialize())

    def runner(self):
        """The runner's number, while it lives."""
        lock = self.jobs / "lock"
        number = lock.read_text().strip() if lock.exists() else ""
        try:
            return number and os.readlink(f"/proc/{number}/exe").endswith("/launchd") and int(number)
        except OSError:
            return None

    def end_runner(self):
        for job in (self.jobs / "loaded").glob("*"):
            job.unlink()
        if number := self.runner():
            os.kill(number, signal.SIGKILL)

    def call(self, tool, /, **arguments):
        return self.server.ask(call(1, tool, arguments))["result"]["content"][0]["text"]

    def prompts(self):
        return [file.read_text() for file in sorted(self.record.glob("prompt.*"))]

    def ran(self, name, has_begun):
        """Waits for the end of a run, which must be well, and of its process."""
        record = self.jobs / "runs" / f"org.mervolabs.rondel.{name}"
        wait("the end of " + name, lambda: has_begun() and record.read_text().startswith("exited 0"))
        self.assertEqual(self.state(name)["lastExit"], 0)

    def launchctl(self, verb, name):
        done = self.desk.run("Helpers/platform/launchctl", verb, f"org.mervolabs.rondel.{name}")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def test_an_answer_reaches_the_next_prompt_and_no_later_one(self):
        time.sleep(max(0, 10 - (60 - time.time() % 60)))  # not so late that making it misses the next minute
        due = time.localtime(time.time() // 60 * 60 + 60)
        self.assertEqual(self.call("auto.add", name="triage", prompt="Sort the mail.", background="true",
                                   at=time.strftime("%H:%M", due)),
                         f"✅ automation 'triage' created - daily {due.tm_hour}:{due.tm_min:02}")
        self.call("auto.add", name="ask-harvest", tool="ask.harvest", every="10")
        self.assertIn(f"next time of its calendar: {time.strftime('%Y-%m-%d %H:%M', due)}\n",
                      self.launchctl("print", "triage"))
        time.sleep(max(0, time.mktime(due) - time.time()))
        self.ran("triage", self.prompts)
        time.sleep(3)  # in which no second run begins
        (first,) = self.prompts()
        self.assertTrue(first.startswith("Sort the mail.\n\nWhen the task"), first)
        begun = (self.record / "prompt.0").stat().st_mtime - time.mktime(due)
        self.assertTrue(0 <= begun < 20, begun)
        asked = re.match("question #(.{8}) asked via Mail .* for 'triage' - ", (self.record / "asked").read_text())[1]
        (question,) = self.desk.messages()
        self.assertEqual((question["To"], question["Subject"]), (OWNER, f"[mervo#{asked}] Shall I?"))
        self.desk.deliver(f"From: Me <{OWNER}>\nTo: {OWNER}\nSubject: Re: {question['Subject']}\nIn-Reply-To: "
                          f"{question['Message-ID']}\n\nYes, on Friday.\n\n> Shall I?\n", "reply", ".Lists")
        self.launchctl("kickstart", "ask-harvest")
        self.ran("ask-harvest", lambda: "lastExit" in self.state("ask-harvest"))
        for count in (2, 3):
            self.launchctl("kickstart", "triage")
            self.ran("triage", lambda: len(self.prompts()) == count)
        self.assertEqual(self.prompts(), [first, BLOCK % asked + first, first])
        rows = [("mcp:test-client", "auto.add"), ("mcp:test-client", "auto.add"), ("auto:triage", "ask"),
                ("auto:ask-harvest", "ask.harvest")]
        self.assertEqual([row[:3] for row in self.desk.audit()], [(*row, "executed") for row in rows])
        for name in ("triage", "ask-harvest"):
            self.call("auto.rm", name=name)
            self.desk.approve(*self.desk.waiting())
        wait("the end of the runner with its last job", lambda: not self.runner())


if __name__ == "__main__":
    desk.Desk.contents = pathlib.Path(sys.argv[1])
    unittest.main(argv=sys.argv[:1] + sys.argv[2:])
