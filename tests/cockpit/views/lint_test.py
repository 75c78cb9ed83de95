"""qmllint finds nothing, and no text of the views can ever be read as markup.

`lint_test.py <qmllint> <folder of the views> <folder of the built QML modules>`
"""

import pathlib
import re
import subprocess
import sys
import unittest

QMLLINT, VIEWS, MODULES = "", "", ""  # from the command line


class Views(unittest.TestCase):
    def setUp(self):
        self.files = sorted(pathlib.Path(VIEWS).rglob("*.qml"))
        self.assertGreater(len(self.files), 20)

    def test_qmllint_is_silent(self):
        run = subprocess.run([QMLLINT, "-I", MODULES, *self.files], capture_output=True, text=True, timeout=120)
        self.assertEqual((run.returncode, run.stdout + run.stderr), (0, ""))

    def test_every_text_is_plain(self):
        """Text is written in two files alone, which say that it is plain; everything else builds on these."""
        for file in self.files:
            text = file.read_text(encoding="utf-8")
            self.assertNotRegex(text, r"RichText|StyledText|AutoText|MarkdownText", file)
            if re.search(r"\b(Text|TextEdit|TextArea|Label)\s*\{", text):
                self.assertRegex(text, r"textFormat: Text(Edit)?\.PlainText", file)

    def test_colours_stand_in_the_theme_alone(self):
        for file in self.files:
            if file.name != "Theme.qml":
                self.assertNotRegex(file.read_text(encoding="utf-8"), r'"#[0-9a-fA-F]{3,8}"', file)


if __name__ == "__main__":
    MODULES, VIEWS, QMLLINT = sys.argv.pop(), sys.argv.pop(), sys.argv.pop()
    unittest.main()
