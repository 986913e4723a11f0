#!/usr/bin/env python3
"""script/check-rooms finds includes against the order of the folders."""

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

    def test_accepts_direct_dependencies(self):
        result = check({
            "log/Log.cpp": '#include "log/Log.hpp"\n#include <map>\n',
            "db/DB.cpp": '#include <nlohmann/json.hpp>\n#include "log/Log.hpp"\n',
            "sql/S.cpp": '#include <soci/soci.h>\n#include <libpq-fe.h>\n#include "db/DB.hpp"\n',
            "du/A.cpp": '#include "TVector3.h"\n#include "du/fast/P.hpp"\n'
                        '#include <CLHEP/Units/SystemOfUnits.h>\n',
            "io/V.cpp": '#include <ROOT/RNTupleModel.hxx>\n#include "du/A.hpp"\n',
            "display/D.cpp": '#include <cairo-pdf.h>\n#include <pango/pangocairo.h>\n'
                             '#include <zlib.h>\n'
                             '#include "scan/S.hpp"\n',
            "tests/du/ATest.cpp": '#include "tests/reference/R.hpp"\n',
        })
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_accepts_indirect_dependencies(self):
        result = check({
            "app/A.cpp": '#include "db/DB.hpp"\n#include "du/geometry/P.hpp"\n',
            "scan/S.cpp": '#include "lightpath/L.hpp"\n#include "log/Log.hpp"\n',
        })
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_refuses_an_include_of_a_later_folder(self):
        for name, include in (("db/DB.hpp", "du/hardware/NeckBoss.hpp"),
                              ("du/geometry/P.hpp", "du/hardware/NeckBoss.hpp"),
                              ("du/geometry/P.hpp", "db/DB.hpp"),
                              ("du/hardware/NeckBoss.cpp", "du/fast/NeckBossCap.hpp"),
                              ("du/hardware/Hardware.hpp", "du/ShadowingCalculator.hpp"),
                              ("du/fast/ShadowMap.cpp", "du/ShadowingCalculator.hpp"),
                              ("db/DB.cpp", "sql/TableStore.hpp"), ("sql/S.cpp", "du/A.hpp"),
                              ("io/V.cpp", "sql/TableStore.hpp"),
                              ("du/A.cpp", "scan/S.hpp"),
                              ("scan/S.cpp", "app/A.hpp"),
                              ("io/V.cpp", "app/A.hpp"), ("io/V.cpp", "rdf/D.hpp"),
                              ("scan/S.cpp", "display/D.hpp"), ("display/D.cpp", "app/A.hpp")):
            folder = name.rpartition("/")[0]
            self.assert_refused(name, f'"{include}"', f"{folder}/ must not include {include}")

    def test_keeps_io_rdf_and_scan_independent(self):
        self.assert_refused("rdf/D.cpp", '"scan/S.hpp"', "rdf/ must not include scan/S.hpp")
        self.assert_refused("io/V.hpp", '"scan/S.hpp"', "io/ must not include scan/S.hpp")
        self.assert_refused("scan/S.hpp", '"io/V.hpp"', "scan/ must not include io/V.hpp")
        self.assert_refused("display/D.cpp", '"io/V.hpp"', "display/ must not include io/V.hpp")

    def test_refuses_a_library_in_a_folder_that_must_not_use_it(self):
        for name, library in (("log/Log.hpp", '"TVector3.h"'), ("db/DB.cpp", "<ROOT/RError.hxx>"),
                              ("du/A.cpp", "<CLI/CLI.hpp>"), ("io/V.cpp", "<CLI/CLI.hpp>"),
                              ("scan/S.cpp", "<nlohmann/json.hpp>"),
                              ("du/hardware/A.cpp", "<CLHEP/Units/SystemOfUnits.h>"),
                              ("app/A.cpp", "<cairo.h>"), ("app/A.cpp", "<cairo-pdf.h>"),
                              ("app/A.cpp", "<pango/pangocairo.h>"),
                              ("app/A.cpp", "<zlib.h>"), ("app/A.cpp", "<soci/soci.h>"),
                              ("db/DB.cpp", "<libpq-fe.h>")):
            folder = name.rpartition("/")[0]
            self.assert_refused(name, library, f"{folder}/ must not include {library[1:-1]}")

    def test_refuses_the_reference_outside_tests(self):
        self.assert_refused("du/A.cpp", '"tests/reference/R.hpp"',
                            "the plain reference is for tests and benchmarks only")

    def test_accepts_this_project(self):
        result = subprocess.run([sys.executable, str(CHECK)], capture_output=True, text=True)
        self.assertEqual((result.returncode, result.stderr), (0, ""))


if __name__ == "__main__":
    unittest.main(verbosity=2)
