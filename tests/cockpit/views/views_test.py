"""The popover through a screen reader's interface, a keyboard and a mouse, over the real stores.

`views_test.py <host of the views> <folder of the programs>`
"""

import os
import pathlib
import sqlite3
import subprocess
import sys
import time
import unittest

import desktop
from desk import Desk
from desktop import DesktopTest, click, find, focused, hold, keys, look, middle, press, type_text, wait

HOST, PROGRAMS = "", ""  # from the command line
SETTLED = 0.9  # seconds: the time of a double click, and some more
AWAY = ("5", "5")


class Popover(DesktopTest):
    """A home over a desk with one mail account, and the views over it."""

    def setUp(self):
        self.desk = Desk()
        self.addCleanup(self.desk.close)
        self.desk.maildir()
        os.environ.update(self.desk.environment)
        subprocess.run([PROGRAMS + "/mervo", "run", "how_it_works"], check=True, capture_output=True)  # makes the home

    def show(self):
        self.process = self.start(HOST, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.view = self.desktop.application(self.process, pathlib.Path(HOST).name)
        find(self.view, "push button", "Settings")
        return self.view

    def card(self, start):
        return find(self.view, "list item", lambda name: name.startswith(start))

    def result(self, start):
        return find(self.view, "label", lambda name: name.startswith(start)).name

    def write(self, number):
        self.desk.queue("AAAA00%02d" % number, "mail.draft", {"to": "%d@x.example" % number, "subject": "s", "body": "b"},
                        effect="create", createdAt="2026-01-01T10:%02d:00Z" % number)

    def delete(self, number, **more):
        self.desk.queue("AAAA00%02d" % number, createdAt="2026-01-01T00:00:00Z",
                        args={"account": "Work", "mailbox": "INBOX", "from": "news@shop.example", **more})

    def ask(self, name):
        with sqlite3.connect(self.desk.home / "mervo.sqlite") as database:
            database.execute("INSERT INTO feedback (id, kind, text, automation, channel, created_at, source) "
                             "VALUES (?, 'question', ?, 'triage', 'cockpit', '2026-01-01T00:00:00Z', 'triage')",
                             (name, "May I, " + name + "?"))

    def decided(self):
        return [row[0] for row in self.desk.rows("SELECT outcome FROM audit WHERE actor = 'cockpit' ORDER BY id")]


class Questions(Popover):
    def test_questions_are_answered_once_and_by_the_keyboard(self):
        self.ask("first")
        self.ask("second")
        self.show()
        find(self.view, "page tab", "Approvals, 2")
        press(look(self.view, "push button", "Oui")[0])
        wait("one left", lambda: len(look(self.view, "list item", "Question of triage")) == 1)
        wait("the keyboard", lambda: keys("Tab") or focused(self.view) == ("text", "Answer..."))
        type_text("   ")
        keys("Return")
        type_text("on Monday")
        keys("Return")
        find(self.view, "label", "All clear")
        self.assertEqual(self.desk.rows("SELECT answer FROM feedback ORDER BY id"), [("Oui",), ("on Monday",)])


class Mouse(Popover):
    """What comes under a resting mouse was not aimed at."""

    def setUp(self):
        super().setUp()
        for number in (2, 3):
            self.write(number)

    def refreshed(self):
        press(find(self.view, "push button", "Refresh"))

    def test_a_second_click_decides_nothing_until_the_mouse_has_moved(self):
        self.ask("first")
        self.ask("second")
        self.show()
        wait("both", lambda: len(look(self.view, "push button", "Oui")) == 2)
        place = middle(look(self.view, "push button", "Oui")[0])
        time.sleep(SETTLED)
        click(place, times=2, apart=450)
        wait("one left", lambda: len(look(self.view, "push button", "Oui")) == 1)
        time.sleep(SETTLED)
        self.assertEqual(self.desk.rows("SELECT id FROM feedback WHERE answer IS NOT NULL"), [("first",)])
        click(AWAY)
        click(place)
        wait("none left", lambda: not look(self.view, "push button", "Oui"))

        for number in range(4, 10):
            self.write(number)
        self.refreshed()
        done = self.decided()
        for apart in (180, 330, 380, 450, 600, 900):
            click(AWAY)
            place = min((middle(button) for button in look(self.view, "push button", "Approve")), key=lambda at: int(at[1]))
            time.sleep(SETTLED)
            click(place, times=2, apart=apart)
            done.append("executed")
            wait("an approval", lambda: len(self.decided()) >= len(done))
            time.sleep(0.3)
            self.assertEqual(self.decided(), done, "clicks %d ms apart" % apart)

        press(find(self.card("mail.draft"), "push button", "Reject"))
        place = middle(find(self.card("mail.draft"), "push button", "Confirm"))
        time.sleep(SETTLED)
        click(place, times=3, apart=380)
        wait("a rejection", lambda: self.decided() == done + ["rejected"])
        time.sleep(SETTLED)
        self.assertEqual(len(self.desk.waiting()), 1)

    def test_a_card_that_slides_or_comes_under_the_mouse_is_not_approved(self):
        self.show()
        place = middle(find(self.card("mail.draft"), "push button", "Approve"))
        time.sleep(SETTLED)
        for come in (lambda: self.write(1), lambda: self.ask("first")):
            come()
            self.refreshed()
            click(place)
            time.sleep(SETTLED)
            self.assertNotIn("executed", str(self.desk.rows("SELECT outcome FROM audit WHERE actor = 'cockpit'")))
        first = middle(find(self.card("mail.draft"), "push button", "Approve"))
        click(first)
        self.result("✅ mail.draft")

    def test_a_form_that_is_scrolled_back_leaves_the_keyboard_where_it_is(self):
        for number in range(4, 30):
            self.write(number)
        self.show()
        press(find(self.card("mail.draft"), "push button", "Reject"))
        type_text("abc")
        place = middle(find(self.view, "list", "Approvals"))
        wheel = lambda button: subprocess.run(  # noqa: E731
            ["xdotool", "mousemove", *place, "click", "--repeat", "60", "--delay", "15", button], check=True)
        wheel("5")
        press(look(self.view, "push button", "Reject")[-1])
        wait("a form", lambda: focused(self.view) == ("text", "Reason (optional)"))
        for button in "454":
            wheel(button)
        type_text("ghi")
        time.sleep(0.3)  # as long as the keys take
        field = find(self.view, "text", "Reason (optional)")
        self.assertEqual(field.queryText().getText(0, -1), "abc")


class Keyboard(Popover):
    def test_a_key_that_is_held_decides_one_card(self):
        for number in range(2, 10):
            self.write(number)
        self.show()
        approve = ("push button", "Approve")
        for key in ("Return", "space"):
            wait("the button", lambda: keys("Tab") or focused(self.view) == approve)
            keys("Tab", "Tab", "Tab", "Tab", "shift+Tab", "shift+Tab", "shift+Tab", "shift+Tab")
            before = len(self.desk.waiting())
            self.assertEqual(focused(self.view), approve)
            hold(key)
            wait("an approval", lambda: len(self.desk.waiting()) < before)
            time.sleep(0.3)
            self.assertEqual(len(self.desk.waiting()), before - 1, key)
        wait("the other button", lambda: keys("shift+Tab") or focused(self.view) == ("push button", "Reject"))
        hold("Return")
        self.assertEqual(focused(self.view), ("text", "Reason (optional)"))
        self.assertNotIn("rejected", self.decided())

    def test_the_order_is_that_of_reading_and_escape_closes_the_form_first(self):
        self.delete(1)
        for number in range(2, 30):
            self.desk.queue("AAAA%04d" % number, "cal.add", {"account": "Home"} if number == 2 else {"title": str(number)},
                            createdAt="29%02d-01-01T00:00:00Z" % number)
        self.show()
        find(self.view, "page tab", "Approvals, 29")
        visited = []
        for _ in range(11):
            keys("Tab")
            visited.append(focused(self.view))
        titles = [name.split(",")[0] for _, name in visited]
        self.assertEqual(titles, ["Refresh", "Approvals", "mail.delete", "3 arguments", "Reject", "Approve",
                                  "cal.add", "1 argument", "Reject", "Approve", "cal.add"])
        # On through all 29 cards, of which the list makes only those near what it shows, and back again.
        keys(*["Tab"] * 4 * 27)
        wait("the footer", lambda: focused(self.view) == ("push button", "Settings"))
        keys("shift+Tab")
        wait("the last card", lambda: focused(self.view) == ("push button", "Approve"))
        keys(*["shift+Tab"] * 4 * 29)
        wait("the tabs", lambda: focused(self.view)[0] == "page tab")

        keys("Right")
        find(self.view, "label", "No automations")
        keys("Left")
        keys(*["Tab"] * 3, "space")
        wait("the arguments", lambda: look(self.view, "text", "from"))
        keys("Tab", "Tab", "Tab", "Tab", "Return")  # past the values
        wait("the form", lambda: focused(self.view) == ("text", "Reason (optional)"))
        keys("Escape")
        wait("the card again", lambda: focused(self.view) == ("push button", "Reject"))
        keys("Escape")
        self.assertEqual(self.process.stdout.readline().decode().strip(), "close")
        self.assertEqual(len(self.desk.waiting()), 29)


class Hostile(Popover):
    def test_texts_are_shown_as_they_are_and_whole(self):
        body = "x" * 100_000 + "<b>end</b>"
        self.desk.queue("AAAA0001", "mail.send", createdAt="now", preview="<h1>\u2066calm</h1>",
                        args={"to": "<img src=x>\u202egro.elpmaxe", "subject": "a\u200bb\x07", "body": body})
        self.show()
        card = self.card("mail.send")
        find(card, "label", "<h1><U+2066>calm</h1>")
        shown = find(card, "label", lambda name: "src=x" in name).name
        self.assertIn("<img src=x><U+202E>gro.elpmaxe", shown)
        self.assertIn("a<U+200B>b<U+0007>", shown)
        press(find(card, "push button", lambda name: name.startswith("3 arguments")))
        press(find(card, "push button", "98,010 more characters"))
        whole = wait("the whole body", lambda: [
            text for text in (node.queryText().getText(0, -1) for node in look(card, "text", "body", anywhere=True))
            if len(text) == len(body)])[0]
        self.assertEqual(whole, body)
        press(find(card, "push button", "View email", anywhere=True))
        find(card, "text", "Message", anywhere=True)
        for node in desktop.walk(self.view):
            for sign in "\u202e\u200b\u2066\x07":
                self.assertNotIn(sign, node.name)
        press(find(self.view, "push button", "Quit Mervo"))
        self.assertEqual(self.process.wait(10), 0, self.process.stderr.read())


class Damage(Popover):
    def test_what_cannot_be_read_is_never_all_clear(self):
        self.desk.queue("AAAA0001").write_text("{")
        self.show()
        find(self.view, "label", "1 waiting file cannot be read; run mervo doctor")
        self.assertFalse(look(self.view, "label", "All clear"))
        self.delete(2, olderthan="30")
        card = self.card("mail.delete")
        find(self.view, "label", "1 waiting file cannot be read; run mervo doctor")
        remark = "mail.delete ignores olderthan"
        self.assertIn(remark, card.description)
        press(find(card, "push button", "4 arguments"))
        find(card, "label", lambda name: name.startswith(remark))


if __name__ == "__main__":
    PROGRAMS, HOST = sys.argv.pop(), sys.argv.pop()
    unittest.main()
