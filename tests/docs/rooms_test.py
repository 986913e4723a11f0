#!/usr/bin/env python3
"""The check of the rooms finds what goes against their order."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(os.environ["ZARN_SOURCE_DIR"], "script", "check-rooms")


def check(files):
    with tempfile.TemporaryDirectory() as folder:
        for name, text in files.items():
            path = pathlib.Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)
        return subprocess.run([sys.executable, str(CHECK), folder],
                              capture_output=True, text=True)


class CheckRooms(unittest.TestCase):
    def assert_refused(self, name, include, reason):
        result = check({name: f"#pragma once\n#include {include}\n"})
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr, f"{name}:2: {reason}\n")

    def test_accepts_what_each_room_may_include(self):
        result = check({
            "log/Log.cpp": '#include "log/Log.hpp"\n#include <map>\n',
            "db/DB.cpp": '#include <nlohmann/json.hpp>\n#include "log/Log.hpp"\n',
            "du/A.cpp": '#include "TVector3.h"\n#include "du/geometry/P.hpp"\n'
                        '#include <CLHEP/Units/SystemOfUnits.h>\n',
            "tests/du/ATest.cpp": '#include "tests/reference/R.hpp"\n',
        })
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_refuses_a_room_that_looks_down(self):
        self.assert_refused("db/DB.hpp", '"du/NeckBoss.hpp"',
                            "db/ must not include du/NeckBoss.hpp")
        self.assert_refused("du/geometry/P.hpp", '"du/NeckBoss.hpp"',
                            "du/geometry/ must not include du/NeckBoss.hpp")
        self.assert_refused("du/geometry/P.hpp", '"db/DB.hpp"',
                            "du/geometry/ must not include db/DB.hpp")

    def test_refuses_a_library_in_a_room_that_does_without(self):
        self.assert_refused("log/Log.hpp", '"TVector3.h"',
                            "log/ must not include TVector3.h")
        self.assert_refused("du/A.cpp", "<CLI/CLI.hpp>",
                            "du/ must not include CLI/CLI.hpp")

    def test_refuses_the_plain_reference_outside_tests(self):
        self.assert_refused("du/A.cpp", '"tests/reference/R.hpp"',
                            "the plain reference is for tests and benchmarks only")

    def test_finds_the_project_in_order(self):
        result = subprocess.run([sys.executable, str(CHECK)], capture_output=True, text=True)
        self.assertEqual((result.returncode, result.stderr), (0, ""))


if __name__ == "__main__":
    unittest.main(verbosity=2)
