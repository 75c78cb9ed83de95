"""An agent and a person: what the agent's client asks of the server stands in the running cockpit, and the person decides.

`agent_test.py <mervo-cockpit> <mervo-mcp>`
"""

import json
import os
import sqlite3
import subprocess
import sys
import time
import unittest
import warnings

import desktop
from desk import Desk
from desktop import find, focused, press, type_text, wait
from doubles import Notifications, Watcher, pump, wait_pumping

COCKPIT, SERVER, DESKTOP = "", "", None
MESSAGE = "From: %s\r\nTo: work@desk.example\r\nSubject: %s\r\nDate: Thu, 01 Jan 2026 10:00:00 +0000\r\n\r\nHello\r\n"
TICK = 3  # seconds, and some time for a loaded machine


class Agent:
    """A client of the stdio server."""

    def __init__(self):
        self.process = DESKTOP.start([SERVER], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.number = 0
        self.ask("initialize", protocolVersion="2025-06-18", capabilities={}, clientInfo={"name": "agent", "version": "1"})

    def ask(self, method, **parameters):
        self.number += 1
        request = {"jsonrpc": "2.0", "id": self.number, "method": method, "params": parameters}
        self.process.stdin.write(json.dumps(request).encode() + b"\n")
        self.process.stdin.flush()
        while True:
            answer = json.loads(self.process.stdout.readline())
            if answer.get("id") == self.number:
                return answer["result"]

    def call(self, tool, **arguments):
        result = self.ask("tools/call", name=tool, arguments=arguments)
        return result["content"][0]["text"]


class AnAgentAndAPerson(unittest.TestCase):
    def setUp(self):
        self.desk = Desk(settings='trash = "Trash"')
        self.addCleanup(self.desk.close)
        self.desk.maildir(folder=".Trash")
        for number, sender in enumerate(("news@shop.example",) * 3 + ("anna@home.example",)):
            self.desk.deliver(MESSAGE % (sender, "Number %d" % number), name="%d.host" % number, flags="S")
        self.home = self.desk.home
        os.environ.update(MERVO_HOME=str(self.home), XDG_CONFIG_HOME=str(self.desk.folder / "config"))

    def senders(self, folder=""):
        return sorted(path.read_text().split("\n")[0][6:].strip()
                      for path in (self.desk.maildir(folder=folder) / "cur").iterdir())

    def rows(self, statement):
        with sqlite3.connect(self.home / "mervo.sqlite", timeout=10) as database:
            return database.execute(statement).fetchall()

    def card(self, start):
        return find(self.view, "list item", lambda name: name.startswith(start))

    def test_what_an_agent_asks_for_waits_for_the_person(self):
        services = Watcher(), Notifications("actions")
        for service in services:
            self.addCleanup(service.close)
        tray, notices = services
        process = DESKTOP.start([COCKPIT])
        self.addCleanup(DESKTOP.end, process)
        wait_pumping("the icon", lambda: tray.items)
        wait_pumping("its picture", lambda: tray.look()["IconPixmap"])
        tray.activate()
        self.view = DESKTOP.application(process, "mervo-cockpit")
        find(self.view, "label", "All clear")

        agent = Agent()
        self.addCleanup(DESKTOP.end, agent.process)
        held = agent.call("mail.delete", account="Work", mailbox="INBOX", **{"from": "news@shop.example"})
        begun = time.monotonic()
        self.assertIn("3 message(s)", held)
        deletion = self.card("mail.delete")
        self.assertLess(time.monotonic() - begun, TICK + 1, "a card within a tick")
        find(deletion, "label", "from news@shop.example · INBOX")
        wait_pumping("the notice", lambda: notices.shown)
        self.assertEqual([notice["title"] for notice in notices.shown.values()], ["Approve mail.delete?"])
        self.assertEqual(len(self.senders()), 4, "nothing has happened yet")

        agent.call("mail.send", account="Work", to="anna@home.example", subject="Hi", body="Hello")
        letter = self.card("mail.send")
        press(find(letter, "push button", "Reject"))
        wait("the keyboard in the field", lambda: pump() or focused(self.view) == ("text", "Reason (optional)"))
        type_text("not to her")
        # A tick and a new action in the meantime take neither the text nor the keyboard.
        agent.call("mail.delete", account="Work", mailbox="INBOX", **{"from": "nobody@home.example"})
        find(self.view, "page tab", "Approvals, 3")
        type_text(", thanks")
        press(find(self.card("mail.send"), "push button", "Confirm"))
        find(self.view, "label", "🚫 rejected mail.send")

        press(find(self.card("mail.delete"), "push button", "Approve"))  # the older one
        find(self.view, "label", lambda name: name.startswith("✅ mail.delete - "))
        find(self.view, "page tab", "Approvals, 1")
        self.assertEqual((self.senders(), self.senders(".Trash")), (["anna@home.example"], ["news@shop.example"] * 3))
        self.assertEqual(len(list((self.home / "pending").iterdir())), 1)
        rows = wait("all rows", lambda: (lambda rows: rows if len(rows) == 5 else None)(
            self.rows("SELECT actor, action, outcome, reason FROM audit ORDER BY id")))
        self.assertEqual(rows, [("mcp:agent", "mail.delete", "pending_approval", "needs_approval"),
                                ("mcp:agent", "mail.send", "pending_approval", "needs_approval"),
                                ("mcp:agent", "mail.delete", "pending_approval", "needs_approval"),
                                ("cockpit", "mail.send", "rejected", "not to her, thanks"),
                                ("cockpit", "mail.delete", "executed", "approved")])
        self.assertEqual(self.rows("SELECT kind, text, source, automation FROM feedback"),
                         [("verdict", "refus de mail.send (Work) : not to her, thanks", "cockpit", None)])


if __name__ == "__main__":
    SERVER, COCKPIT = sys.argv.pop(), sys.argv.pop()
    warnings.simplefilter("ignore", DeprecationWarning)  # of pyatspi's own
    DESKTOP = desktop.Desktop()
    try:
        unittest.main(warnings="ignore")
    finally:
        DESKTOP.close()
