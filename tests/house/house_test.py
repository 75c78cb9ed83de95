"""Structural tests: `house_test.py <source folder> <the program mervo>`.

Each check runs twice: over small made-up trees with one fault in each, to show that it sees the fault, and over the
real tree.
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

import folders
import texts

ROOT, MERVO = pathlib.Path(), ""  # from the command line

SOUND = {
    "platform/CMakeLists.txt": "mervo_module(SOURCES linux/clock.cpp)",
    "platform/clock.h": "",
    "platform/linux/clock.cpp": '#include "platform/clock.h"\n#include "platform/linux/inner.h"\n',
    "platform/linux/inner.h": "",
    "core/foundation/CMakeLists.txt": "mervo_module(\n    SOURCES Home.cpp # one file\n    MAY_USE platform\n"
                                      "    LIBRARIES fmt::fmt)",
    "core/foundation/Home.h": "",
    "core/foundation/Home.cpp": '#include "core/foundation/Home.h"\n#include "platform/clock.h"\n',
    "core/policy/CMakeLists.txt": "mervo_module(SOURCES Gate.cpp EXPOSES core/foundation fmt::fmt)",
    "core/policy/Gate.h": '#include "core/foundation/Home.h"\n',
    "core/policy/inner/Gate.cpp": '#include "core/foundation/Home.h"\n',
    "core/approval/CMakeLists.txt": "mervo_module(SOURCES Approval.cpp MAY_USE core/policy)",
    "core/approval/Approval.h": "",
    "frontends/cli/CMakeLists.txt": "mervo_module(SOURCES Cli.cpp MAY_USE core/policy)\n"
                                "mervo_program(mervo AT Helpers SOURCES main.cpp MAY_USE frontends/cli)",
    "frontends/cli/main.cpp": '#include "core/policy/Gate.h"\n',
    "tests/core/policy/CMakeLists.txt": "mervo_test(policy SOURCES GateTest.cpp MAY_USE core/policy)",
    "tests/core/policy/GateTest.cpp": '#include "core/policy/Gate.h"\n',
    "README.md": "See [the plan](docs/plan.md), `core/{policy,foundation}`, and `core/policy/<name>.h`.\n",
    "docs/architecture.md": "    frontends/cli    asks\n    core/approval    approves\n    core/policy  judges\n"
                            "    core/foundation  holds\n    platform         gives\n",
    "docs/plan.md": "Nothing but `platform/linux/*.cpp`; back to [the start](../README.md).\n",
}

# What is changed, which check must speak, and a piece of what it says. None takes the file away.
FAULTS = [
    ("a library that is not named", {"core/foundation/Home.h": '#include "core/policy/Gate.h"\n'},
     folders.check_includes, "core/foundation may not use core/policy"),
    ("a header that is gone", {"core/policy/Gate.h": None}, folders.check_includes, "does not exist"),
    ("a test that looks where it did not say", {"tests/core/policy/GateTest.cpp": '#include "platform/clock.h"\n'},
     folders.check_includes, "tests/core/policy may not use platform"),
    ("an include in a folder below", {"core/policy/inner/Gate.cpp": '#include "platform/clock.h"\n'},
     folders.check_includes, "core/policy may not use platform"),
    ("a header that shows what is hidden",
     {"core/policy/CMakeLists.txt": "mervo_module(SOURCES Gate.cpp MAY_USE core/foundation)"},
     folders.check_headers, "core/policy includes core/foundation in a header"),
    ("a library shown for nothing", {"core/policy/Gate.h": ""}, folders.check_headers, "no header of it includes that"),
    ("a list that points up",
     {"core/foundation/CMakeLists.txt": "mervo_module(SOURCES Home.cpp MAY_USE platform core/policy)"},
     folders.check_floors, "core/policy, which is not below it"),
    ("a circle", {"core/foundation/CMakeLists.txt": "mervo_module(SOURCES Home.cpp MAY_USE core/policy)"},
     folders.check_floors, "in a circle"),
    ("a library without a floor", {"core/attic/CMakeLists.txt": "mervo_module(SOURCES Attic.cpp)"},
     folders.check_floors, "core/attic has no floor"),
    ("a list that names nothing", {"core/policy/CMakeLists.txt": "mervo_module(SOURCES Gate.cpp MAY_USE core/fundation)"},
     folders.check_floors, "no library of the tree"),
    ("an agent's program that approves",
     {"frontends/cli/CMakeLists.txt": "mervo_program(mervo AT Helpers SOURCES main.cpp MAY_USE core/approval)"},
     folders.check_floors, "frontends/cli can reach core/approval"),
    ("a core that knows the script host",
     {"platform/desk/CMakeLists.txt": "mervo_module(SOURCES Desk.cpp)",
      "core/policy/CMakeLists.txt": "mervo_module(SOURCES Gate.cpp MAY_USE core/foundation platform/desk)"},
     folders.check_floors, "the core knows only the facilities"),
    ("a library that is not drawn", {"core/attic/CMakeLists.txt": "mervo_module(SOURCES Attic.cpp)"},
     folders.check_drawing, "has no line for core/attic"),
    ("a drawing of what is gone", {"core/approval/CMakeLists.txt": None}, folders.check_drawing, "is no library"),
    ("a core that knows its system", {"core/foundation/Home.cpp": '#include "platform/linux/inner.h"\n'},
     folders.check_systems, "ask for the facility"),
    ("Qt in the core", {"core/policy/Gate.h": "#include <QString>\n"}, folders.check_systems, "Qt belongs to"),
    ("a path that is gone", {"docs/plan.md": "See `core/attic/Gate.h`.\n"}, texts.check_paths, "core/attic/Gate.h"),
    ("one of two paths that is gone", {"docs/plan.md": "See `core/{policy,attic}`.\n"}, texts.check_paths, "core/attic"),
    ("a pattern that finds nothing", {"docs/plan.md": "See `platform/linux/*.mm`.\n"}, texts.check_paths, "*.mm"),
    ("a folder of a path to fill in", {"docs/plan.md": "`core/attic/<name>.h`\n"}, texts.check_paths, "core/attic/"),
    ("a link that leads nowhere", {"README.md": "[the plan](docs/plans.md)\n"}, texts.check_paths, "docs/plans.md"),
    ("a reference to an outside paper", {"core/policy/Gate.h": "// see Par" "t 2.1\n"}, texts.check_words, "an outside paper"),
    ("unfinished work", {"tests/core/policy/GateTest.cpp": "// TO" "DO\n"}, texts.check_words, "unfinished work"),
    ("a file that holds everything", {"core/policy/Gate.h": "\n" * 601}, texts.check_sizes, "601 lines"),
]
CHECKS = [folders.check_includes, folders.check_headers, folders.check_floors, folders.check_drawing,
          folders.check_systems, texts.check_paths, texts.check_words, texts.check_sizes]


class MadeUpTree(tempfile.TemporaryDirectory):
    def __init__(self, change):
        super().__init__()
        for name, text in (SOUND | change).items():
            if text is not None:
                path = pathlib.Path(self.name) / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text, encoding="utf-8")


class OnMadeUpTrees(unittest.TestCase):
    def test_a_sound_tree_draws_no_complaint(self):
        with MadeUpTree({}) as tree:
            for check in CHECKS:
                self.assertEqual(check(tree), [], check.__name__)

    def test_each_fault_is_seen(self):
        for name, change, check, said in FAULTS:
            with self.subTest(name), MadeUpTree(change) as tree:
                self.assertIn(said, "\n".join(check(tree)))


class OnTheTree(unittest.TestCase):
    def agrees(self, check):
        complaints = check(ROOT)
        self.assertEqual(complaints, [], "\n" + "\n".join(complaints))

    def test_includes_obey_the_lists(self):
        self.agrees(folders.check_includes)

    def test_headers_show_what_the_lists_say(self):
        self.agrees(folders.check_headers)

    def test_lists_point_down(self):
        self.agrees(folders.check_floors)

    def test_every_library_is_drawn(self):
        self.agrees(folders.check_drawing)

    def test_the_core_knows_no_system(self):
        self.agrees(folders.check_systems)

    def test_named_paths_exist(self):
        self.agrees(texts.check_paths)

    def test_words_belong_here(self):
        self.agrees(texts.check_words)

    def test_files_stay_small(self):
        self.agrees(texts.check_sizes)

    def test_the_tools_page_is_what_the_program_says(self):
        page = (ROOT / "docs/tools.md").read_text(encoding="utf-8")
        maker = [sys.executable, "-B", str(ROOT / "scripts/make-tools-doc"), MERVO]
        made = subprocess.run(maker, capture_output=True, text=True, check=True, timeout=60).stdout
        self.assertGreater(made.count("\n### `"), 60, "the program lists its tools")
        self.assertEqual(page, made, "docs/tools.md is stale: scripts/make-tools-doc <mervo> > docs/tools.md")


if __name__ == "__main__":
    ROOT, MERVO = pathlib.Path(sys.argv[1]).resolve(), sys.argv[2]
    unittest.main(argv=sys.argv[:1])
