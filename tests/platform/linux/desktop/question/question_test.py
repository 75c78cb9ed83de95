"""The window that asks for consent, as mouse, keyboard and screen reader meet it: `question_test.py CONTENTS-FOLDER`."""

import json
import os
import pathlib
import subprocess
import sys
import time
import unittest

from desk import Desk
from desktop import DesktopTest, find, focused, keys, look, press, wait

Desk.contents = pathlib.Path(sys.argv.pop(1)).resolve()
SETTLED = 1.0  # seconds after which the window takes an answer
SENTENCE = "Mervo asks to use Mail: if you allow it, agents can act there."


def windows():
    return subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^Mervo asks"], capture_output=True,
                          text=True).stdout.split()


class WindowTest(DesktopTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        wait("the window manager", lambda: "# 0x" in subprocess.run(
            ["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"], capture_output=True, text=True).stdout)


class Question(WindowTest):
    def ask(self, settle=True):
        program = Desk.contents / "Helpers/platform/consent-question"
        self.process = self.start(program, SENTENCE, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                  env=os.environ | {"QT_QPA_PLATFORM": "offscreen"})
        self.process.stdin.write(b"allow\n")  # what stands there answers nothing
        self.process.stdin.flush()
        window = self.desktop.application(self.process, "Mervo")
        wait("the window", windows)
        if settle:
            time.sleep(SETTLED)
        return window

    def answer(self):
        out, err = self.process.communicate(timeout=20)
        return self.process.returncode, out.decode(), err.decode()

    def test_a_screen_reader_hears_the_sentence_and_finds_both_buttons(self):
        for name, answer in (("Allow", "allow\n"), ("Don't Allow", "refuse\n")):
            window = self.ask()
            find(window, "label", SENTENCE)
            self.assertEqual([one.name for one in look(window, "push button")] or
                             [one.name for one in look(window, "button")], ["Don't Allow", "Allow"])
            press(find(window, "push button", name))
            self.assertEqual(self.answer()[:2], (0, answer))

    def test_the_keyboard_reaches_both_buttons(self):
        for tabs, answer in ((1, "refuse\n"), (2, "allow\n")):
            window = self.ask()
            wait("the keyboard on the sentence", lambda: focused(window) == ("label", SENTENCE))
            keys(*["Tab"] * tabs)
            wait("the keyboard on a button", lambda: focused(window)[0] == "push button")
            keys("space")
            self.assertEqual(self.answer()[:2], (0, answer))

    def test_nothing_is_answered_by_accident(self):
        window = self.ask(settle=False)
        keys("Return", "space", "Escape", "Return")
        press(find(window, "push button", "Allow"))
        time.sleep(SETTLED)
        keys("Return", "space", "KP_Enter", "a", "y")
        time.sleep(0.3)
        self.assertIsNone(self.process.poll())
        keys("Escape")
        self.assertEqual(self.answer()[:2], (0, "refuse\n"))

    def test_closing_is_a_no_and_an_end_is_no_answer(self):
        self.ask(settle=False)
        keys("alt+F4")
        self.assertEqual(self.answer()[:2], (0, "refuse\n"))
        self.ask()
        self.process.terminate()
        self.assertEqual(self.answer()[1], "")
        program = Desk.contents / "Helpers/platform/consent-question"
        done = subprocess.run([program, SENTENCE], env=os.environ | {"DISPLAY": ":9999"}, capture_output=True, timeout=20)
        self.assertNotEqual(done.returncode, 0)
        self.assertEqual(done.stdout, b"")


class Uses(WindowTest):
    def window(self):
        import pyatspi

        def found():
            desk = pyatspi.Registry.getDesktop(0)
            here = [desk.getChildAtIndex(number) for number in range(desk.childCount)]
            return next((one for one in here if one is not None and one.name == "Mervo" and one.childCount), None)
        window = wait("the question", found)
        time.sleep(SETTLED)
        return window

    def test_the_first_use_of_an_application_waits_for_the_answer(self):
        for button, status in (("Don't Allow", 1), ("Allow", 0)):
            desk = Desk()
            self.addCleanup(desk.close)
            desk.configure(desk.account("Work") + "[consent]\nask = true\n")
            script = 'tell application "Mail" to get name of every account'
            use = self.start(desk.contents / "Helpers/platform/osascript", "-e", script, env=os.environ | desk.environment,
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            window = self.window()
            find(window, "label", lambda text: text.startswith("Mervo asks to use Mail: if you allow it, the agents"))
            self.assertIsNone(use.poll())
            press(find(window, "push button", button))
            out, err = use.communicate(timeout=20)
            self.assertEqual(use.returncode, status, err)
            self.assertEqual(out if status == 0 else b"-1743" in err, b"Work\n" if status == 0 else True)
            self.assertEqual(json.loads((desk.folder / "data/mervo-desk/consent.json").read_text()),
                             {"com.apple.mail": "allowed" if status == 0 else "refused"})


if __name__ == "__main__":
    unittest.main()
