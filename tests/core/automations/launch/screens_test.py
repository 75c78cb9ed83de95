"""The screens of an X display: none, one, several beside and above each other, with and without a primary one."""

import os
import subprocess
import sys
import unittest

import desktop


class Screens(desktop.DesktopTest):
    def screens(self, display=None):
        probe = subprocess.run([sys.argv[1] + "/Tests/screen-probe"], capture_output=True, text=True, timeout=30,
                               env=dict(os.environ, DISPLAY=display or os.environ["DISPLAY"]))
        self.assertEqual(probe.returncode, 0)
        return probe.stdout.splitlines()

    def monitor(self, *words):
        subprocess.run(["xrandr", *words], check=True, timeout=30, stdout=subprocess.DEVNULL)

    def test_monitors(self):
        self.assertEqual(len(self.screens()), 1)
        self.assertRegex(self.screens()[0], r"\{0, 0, 1280, 900\} 1280x900 main$")
        self.monitor("--setmonitor", "LEFT", "640/200x500/230+0+400", "screen")
        self.monitor("--setmonitor", "RIGHT", "640/200x900/230+640+0", "none")
        self.assertEqual(self.screens(), ["LEFT {0, 0, 640, 500} 640x500 main", "RIGHT {640, -400, 1280, 500} 640x900"])
        self.monitor("--delmonitor", "LEFT", "--delmonitor", "RIGHT")
        self.monitor("--setmonitor", "LEFT", "640/200x500/230+0+400", "screen")
        self.monitor("--setmonitor", "*RIGHT", "640/200x900/230+640+0", "none")
        self.assertEqual(self.screens(), ["RIGHT {0, 0, 640, 900} 640x900 main", "LEFT {-640, 400, 0, 900} 640x500"])

    def test_no_display(self):
        self.assertEqual([self.screens(name) for name in (":87654", "nonsense", self.silent_display())], [[], [], []])
        env = {key: value for key, value in os.environ.items() if key != "DISPLAY"}
        probe = subprocess.run([sys.argv[1] + "/Tests/screen-probe"], capture_output=True, text=True, env=env)
        self.assertEqual((probe.returncode, probe.stdout), (0, ""))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
