#!/usr/bin/env python3
"""The package and PyROOT in one process share the tables and the log.

Each test runs in a process of its own, because the order of the imports matters.
"""

import importlib.util
import os
import subprocess
import sys
import unittest

LIBRARY = os.environ["ZARN_ROOT_LIBRARY"]
TABLES = os.path.join(os.environ["ZARN_DATA_DIR"], "reference-detector")
IMPORTS = {
    "zarn first": "import zarn\nimport ROOT\n",
    "ROOT first": "import ROOT\nimport zarn\n",
    "dictionary first": "import ROOT\nROOT.gSystem.Load(LIBRARY)\nimport zarn\n",
}
LOAD = "assert ROOT.gSystem.Load(LIBRARY) >= 0\nZARN = ROOT.ZARN\n"


def run(imports, program):
    """What a program prints to standard output and standard error."""
    text = f"LIBRARY, TABLES = {LIBRARY!r}, {TABLES!r}\n{imports}{LOAD}{program}"
    done = subprocess.run([sys.executable, "-W", "ignore", "-c", text], capture_output=True,
                          text=True)
    if done.returncode != 0:
        raise AssertionError(f"ended with {done.returncode}: {done.stderr}")
    return done.stdout, done.stderr


@unittest.skipIf(importlib.util.find_spec("ROOT") is None, "no ROOT for Python")
class BesideROOT(unittest.TestCase):
    def test_there_is_one_database(self):
        for order, imports in IMPORTS.items():
            with self.subTest(order):
                said, _ = run(imports, """
import ctypes, re
(library,) = set(re.findall(r"\\S+/libzarn_db\\.so\\S*", open("/proc/self/maps").read()))
get = ctypes.CDLL(library)._ZN4ZARN2DB3GetEv  # ZARN::DB::Get()
get.restype = ctypes.c_void_p
print(get() == ROOT.addressof(ZARN.DB.Get()))
""")
                self.assertEqual(said, "True\n")

    def test_messages_through_root_arrive_in_the_log_of_python(self):
        for order, imports in IMPORTS.items():
            with self.subTest(order):
                said, error = run(imports, """
import logging, sys
logging.basicConfig(stream=sys.stdout, format="%(name)s %(levelname)s %(message)s",
                    level=logging.INFO)
ZARN.warn << "written through ROOT\\n"
ZARN.LoadJsonTables(ZARN.DB.Get(), TABLES)
ZARN.DU.ShadowingCalculator().BeginOfRun()
""")
                self.assertIn("zarn WARNING written through ROOT\n", said)
                self.assertIn("zarn INFO ShadowingCalculator: Loaded neck boss", said)
                self.assertEqual(error, "")


if __name__ == "__main__":
    unittest.main()
