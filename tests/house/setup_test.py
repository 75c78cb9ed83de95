"""scripts/setup with a package manager of the test's own: what it says beforehand is what it then does."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(sys.argv.pop(1))

APT_GET = """#!/bin/sh
case "$*" in *--assume-no*)
    echo "0 upgraded, 412 newly installed, 0 to remove and 3 not upgraded."
    echo "Need to get 310 MB of archives."
    echo "After this operation, 1310 MB of additional disk space will be used."
    exit 1;;
esac
echo "apt-get $*" >>"$CALLS"
[ -z "$BROKEN" ] || { echo "E: the mirror is away"; exit 100; }
"""


class Setup(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="mervo-setup-")
        self.addCleanup(folder.cleanup)
        self.bin = pathlib.Path(folder.name) / "bin"
        self.bin.mkdir()
        self.calls = pathlib.Path(folder.name) / "calls"
        for program in ("bash", "dirname", "sed", "paste", "grep", "mktemp", "tee", "tail", "rm", "env", "sh", "awk",
                        "fold"):
            (self.bin / program).symlink_to(pathlib.Path("/usr/bin") / program)
        self.program("apt-get", APT_GET)
        self.program("dpkg-query", '#!/bin/sh\ncase $4 in cmake | lib* | q*) ;; *) echo installed ;; esac\n')
        self.program("id", "#!/bin/sh\necho 1000\n")

    def program(self, name, text):
        (self.bin / name).write_text(text)
        (self.bin / name).chmod(0o755)

    def run_setup(self, **more):
        ended = subprocess.run([ROOT / "scripts/setup"], text=True, capture_output=True, check=False,
                               env={"PATH": str(self.bin), "CALLS": str(self.calls)} | more)
        calls = self.calls.read_text().splitlines() if self.calls.exists() else []
        return ended, calls

    def test_the_line_for_people_without_sudo_is_the_one_that_would_run(self):
        refused, calls = self.run_setup()
        self.assertEqual((refused.returncode, calls), (1, []))
        self.assertIn("packages with what they need: 412; to fetch: 310 MB; on disk: 1310 MB", refused.stdout)
        line = refused.stderr[refused.stderr.index("run:") + 4:]
        pasted = subprocess.run(["/bin/sh", "-c", line], env={"PATH": str(self.bin), "CALLS": str(self.calls)},
                                check=True)
        self.assertEqual(pasted.returncode, 0)
        by_hand = self.calls.read_text().splitlines()
        self.calls.unlink()

        self.program("sudo", '#!/bin/sh\nexec "$@"\n')
        done, calls = self.run_setup()
        self.assertEqual((done.returncode, calls), (0, by_hand))
        self.assertEqual(len(calls), 2)
        self.assertIn("install cmake", calls[1])
        self.assertLess(max(map(len, done.stdout.splitlines())), 120)
        self.assertLess(done.stdout.index("to fetch: 310 MB"), done.stdout.index("installing them:\n  sudo "))

    def test_a_failure_shows_what_apt_said(self):
        self.program("sudo", '#!/bin/sh\nexec "$@"\n')
        failed, _ = self.run_setup(BROKEN="1")
        self.assertEqual(failed.returncode, 1)
        self.assertIn("the mirror is away", failed.stderr)

    def test_a_machine_that_has_everything_is_left_alone(self):
        self.program("dpkg-query", "#!/bin/sh\necho installed\n")
        done, calls = self.run_setup()
        self.assertEqual((done.returncode, done.stdout, done.stderr, calls), (0, "", "", []))


if __name__ == "__main__":
    unittest.main()
