"""The picture of a session holds outside text: `picture_test.py <folder of the demo>`."""

import sys
import unittest
import xml.etree.ElementTree as tree

sys.path.insert(0, sys.argv.pop())
from stage import picture  # noqa: E402

SVG = "{http://www.w3.org/2000/svg}"
HOSTILE = ["</text><script>alert(1)</script>", "a & b < c \" ' ]]>", "\x00\x07\x1b[31mred\x1b[0m", "\ud800\uffff", "\t|",
           "佐藤" * 60, "e\N{COMBINING ACUTE ACCENT}" * 200]


class Picture(unittest.TestCase):
    def test_outside_text_stays_text(self):
        root = tree.fromstring(picture.draw([[("", text)] for text in HOSTILE], title=HOSTILE[0]).encode())
        self.assertEqual({element.tag for element in root.iter()},
                         {SVG + name for name in ("svg", "title", "rect", "circle", "text", "tspan")})
        shown = [element.text for element in root.iter(SVG + "tspan")]
        self.assertEqual(shown[0], HOSTILE[0])
        self.assertEqual(shown[1], HOSTILE[1])

    def test_no_row_is_wider_than_the_picture(self):
        for text in HOSTILE:
            root = tree.fromstring(picture.draw([[("command", text), ("", text)]], columns=40).encode())
            shown = "".join(element.text or "" for element in root.iter(SVG + "tspan"))
            self.assertLessEqual(picture.cells(shown), 40, text)


if __name__ == "__main__":
    unittest.main()
