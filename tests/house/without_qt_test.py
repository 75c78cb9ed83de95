"""The core and the front ends build without Qt: `without_qt_test.py <source folder> <build folder>`.

A second tree is configured for a machine that has no Qt. Each of its compilations is, word for word, one that the
build tree has already done, so that nothing needs to be compiled again to know that it builds.
"""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT, BUILD = (pathlib.Path(word).resolve() for word in (sys.argv.pop(1), sys.argv.pop(1)))
KEPT = ("CMAKE_BUILD_TYPE", "CMAKE_CXX_COMPILER", "CMAKE_CXX_FLAGS", "CMAKE_COMPILE_WARNING_AS_ERROR", "MERVO_SANITIZE")


def settings():
    """What the build tree was configured with, as far as it changes how a file is compiled."""
    cache = dict(line.split("=", 1) for line in (BUILD / "CMakeCache.txt").read_text().splitlines()
                 if "=" in line and not line.startswith(("#", "//")))
    cache = {name.partition(":")[0]: value for name, value in cache.items()}
    flags = "CMAKE_CXX_FLAGS_" + cache["CMAKE_BUILD_TYPE"].upper()
    return [f"-D{name}={cache[name]}" for name in (*KEPT, flags) if name in cache]


def commands(build):
    """Every compilation, without the folder that it is done in."""
    return {entry["command"].replace(str(build), "BUILD")
            for entry in json.loads((build / "compile_commands.json").read_text())}


class WithoutQt(unittest.TestCase):
    def test_the_agents_programs_are_compiled_as_they_are_with_it(self):
        with tempfile.TemporaryDirectory(prefix="mervo-without-qt-") as folder:
            build = pathlib.Path(folder).resolve()
            configured = subprocess.run(
                ["cmake", "-G", "Ninja", "-S", ROOT, "-B", build, *settings(), "-DMERVO_COCKPIT=OFF",
                 "-DCMAKE_DISABLE_FIND_PACKAGE_Qt6=ON", "-DBUILD_TESTING=OFF"], capture_output=True, text=True)
            self.assertEqual(configured.returncode, 0, configured.stderr)
            without, usual = commands(build), commands(BUILD)
            programs = subprocess.run(["ninja", "-C", build, "-n", "mervo", "mervo-mcp", "osascript"],
                                      capture_output=True, text=True)
        self.assertEqual(programs.returncode, 0, programs.stdout)
        self.assertTrue(any(command.endswith("frontends/mcp/main.cpp") for command in without))
        self.assertEqual([command for command in without if "qt" in command.replace(str(ROOT), "").lower()], [])
        self.assertEqual(without - usual, set())


if __name__ == "__main__":
    unittest.main()
