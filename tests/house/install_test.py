"""`make install` and `make uninstall` below a folder that already holds something."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT, BUILD = sys.argv.pop(1), sys.argv.pop(1)


def tree(folder):
    return {os.path.join(place, name) for place, _, names in os.walk(folder) for name in names}


class Install(unittest.TestCase):
    def make(self, target, prefix):
        return subprocess.run(["make", "-C", ROOT, "-o", "build", target, "BUILD=" + BUILD, "PREFIX=" + prefix],
                              text=True, capture_output=True, check=False,
                              env={name: value for name, value in os.environ.items() if not name.startswith("MAKE")})

    def test_what_was_installed_goes_and_nothing_else(self):
        with tempfile.TemporaryDirectory(prefix="mervo-install-") as folder:
            prefix = os.path.realpath(folder)
            for name in ("bin/other", "share/man/man1/other.1"):
                path = pathlib.Path(prefix, name)
                path.parent.mkdir(parents=True)
                path.write_text("not ours")
            before = tree(prefix)
            installed = self.make("install", prefix)
            self.assertEqual(installed.returncode, 0, installed.stderr)
            manifest = os.path.join(prefix, "lib/mervo/install_manifest.txt")
            self.assertEqual(set(pathlib.Path(manifest).read_text().splitlines()) | {manifest} | before, tree(prefix))
            for name in ("mervo", "mervo-mcp", "mervo-cockpit"):
                self.assertTrue(os.access(os.path.join(prefix, "bin", name), os.X_OK), name)

            strange = pathlib.Path(prefix, "lib/mervo/strange")
            strange.write_text("not ours either")
            removed = self.make("uninstall", prefix)
            self.assertEqual(removed.returncode, 0, removed.stderr)
            self.assertEqual(tree(prefix), before | {str(strange)})
            again = self.make("uninstall", prefix)
            self.assertNotEqual(again.returncode, 0)
            self.assertIn("give the PREFIX of the installation", again.stderr)


if __name__ == "__main__":
    unittest.main()
