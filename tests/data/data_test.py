#!/usr/bin/env python3
"""The data files are what their scripts write."""

import json
import math
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

DATA = pathlib.Path(os.environ["ZARN_DATA_DIR"])


def written_by(script, *arguments):
    subprocess.run([sys.executable, str(script), *arguments], check=True)


class DataFiles(unittest.TestCase):
    def test_example_paths_are_what_their_script_writes(self):
        with tempfile.TemporaryDirectory() as folder:
            again = pathlib.Path(folder, "paths.csv")
            written_by(DATA / "make-example-paths.py", "--output", str(again))
            self.assertEqual(again.read_bytes(), (DATA / "example-paths.csv").read_bytes())

    def test_tables_are_what_their_script_writes(self):
        tables = DATA / "reference-detector"
        with tempfile.TemporaryDirectory() as folder:
            written_by(tables / "make-tables.py", "--output", folder)
            names = sorted(p.name for p in tables.glob("*.json"))
            self.assertEqual(sorted(os.listdir(folder)), names)
            for name in names:
                self.assert_alike(json.loads(pathlib.Path(folder, name).read_text()),
                                  json.loads((tables / name).read_text()), name)

    def assert_alike(self, new, old, place):
        """Equal, but for the last written digit of a number: sines differ in
        their last bit between machines."""
        self.assertEqual(type(new), type(old), place)
        if isinstance(new, float):
            self.assertTrue(math.isclose(new, old, rel_tol=0, abs_tol=1.5e-3), f"{place}: {new} {old}")
        elif isinstance(new, list):
            self.assertEqual(len(new), len(old), place)
            for n, (a, b) in enumerate(zip(new, old)):
                self.assert_alike(a, b, f"{place}[{n}]")
        elif isinstance(new, dict):
            self.assertEqual(list(new), list(old), place)
            for key in new:
                self.assert_alike(new[key], old[key], f"{place}.{key}")
        else:
            self.assertEqual(new, old, place)


if __name__ == "__main__":
    unittest.main(verbosity=2)
