#!/usr/bin/env python3
"""Counts and light paths of `zarn-shadow scan` as RNTuples."""

import csv
import io
import json
import math
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import ANCHOR, COORDINATES
from scan_support import (
    BOTTOM, CENTRE, OPTICS, PATH_HEADER, ScanTest, TOP, positions, random_events, random_pmts)
from root_support import NTuple


class RootTest(ScanTest):
    FILES = (("--per-pmt", "per-pmt.root"), ("--per-event", "per-event.root"),
             ("--paths", "paths.root"))

    def ntuple(self, name, kind="counts"):
        return NTuple(kind, self.folder / name)

    def csv_rows(self, name):
        return list(csv.reader(io.StringIO(self.read(name).decode(), newline=""), strict=True))


class Counts(RootTest):
    def test_they_are_those_of_the_csv(self):
        events = {f"e,{i}": p for i, p in enumerate(random_events(9, 190))}
        pmts = {str(i): p for i, p in enumerate([CENTRE, *random_pmts(9, 191)])}
        self.scan(events, pmts, "--per-pmt", "per-pmt.root", "--per-event", "per-event.csv",
                  geometry=self.reference_tables())
        self.scan(events, pmts, "--per-pmt", "per-pmt.csv", "--per-event", "per-event.root",
                  geometry=self.reference_tables())
        for name, name_of in (("per-pmt", str), ("per-event", lambda text: text)):
            header, *rows = self.csv_rows(name + ".csv")
            found = self.ntuple(name + ".root")
            self.assertEqual(found.fields, header)
            for row, wanted in zip(found.rows, rows, strict=True):
                self.assertEqual([name_of(row[0]), *map(str, row[1:3]), row[4]],
                                 [*wanted[:3], wanted[4]])
                if wanted[3]:
                    self.assertEqual(row[3], float(wanted[3]))
                else:
                    self.assertTrue(math.isnan(row[3]))
        self.assertEqual(self.ntuple("per-pmt.root").column("pmt"), list(range(10)))

    def test_they_say_how_they_were_made(self):
        self.scan([CENTRE], [TOP], "--per-pmt", "per-pmt.root", "-o", "out.csv", "--run", 3,
                  "--smear", 20, "--seed", 5)
        origin = self.ntuple("per-pmt.root").origin
        self.assertEqual(origin, json.loads(self.read("out.csv.json")))
        self.assertEqual(origin["smearing"], {"sigma": 20, "samples": 100, "seed": 5})
        self.assertFalse((self.folder / "per-pmt.root.json").exists())

    def test_without_events_there_are_no_counts_of_events(self):
        self.scan([], [TOP], *[word for pair in self.FILES for word in pair])
        self.assertEqual(self.ntuple("per-event.root").rows, [])
        self.assertEqual(self.ntuple("paths.root", "paths").rows, [])
        row, = self.ntuple("per-pmt.root").rows
        self.assertEqual(row[:3], ["p0", 0, 0])


class Paths(RootTest):
    def test_they_are_those_of_the_csv_on_any_number_of_threads(self):
        events = dict(enumerate(random_events(12, 192)))
        pmts = {f"p{i}": p for i, p in enumerate(random_pmts(100, 193))}
        common = ("--reflections", "--per-pmt", "per-pmt.csv")
        self.scan(events, pmts, "--paths", "paths.csv", *common)
        header, *rows = self.csv_rows("paths.csv")
        self.assertEqual(",".join(header), PATH_HEADER)
        for threads in (1, 7):
            self.scan(events, pmts, "--paths", "paths.root", *common, "--threads", threads)
            found = self.ntuple("paths.root", "paths")
            self.assertEqual(found.fields, header)
            self.assertEqual([[str(row[0]), *row[1:3]] for row in found.rows],
                             [row[:3] for row in rows])
            for row, wanted in zip(found.rows, rows, strict=True):
                for value, text in zip(row[3:], wanted[3:], strict=True):
                    self.assertEqual(value, float(text)) if text else \
                        self.assertTrue(math.isnan(value))
        self.assertIn("Water->Reflection->Water", found.column("type"))
        self.assertEqual(found.fields[-24:], COORDINATES)
        self.assertIsInstance(found.rows[0][0], int)

    def test_verdicts_and_paths_can_both_be_rntuples(self):
        self.scan([CENTRE], [TOP, BOTTOM], "-o", "out.root", "--paths", "paths.root")
        for name, kind in (("out.root", "verdicts"), ("paths.root", "paths")):
            self.assertEqual(self.ntuple(name, kind).column("pmt"), ["p0", "p1"])


class Failures(RootTest):
    def test_a_later_event_whose_name_is_no_integer_is_refused_with_its_row(self):
        names = [str(i) for i in range(30_000)]
        names[29_000] = "later"
        events = self.write("events.csv", positions("event", dict.fromkeys(names, CENTRE)))
        for option, name in self.FILES[1:]:
            old = self.write(name, "as it was")
            result = self.scan(events, [TOP], option, name, status=2)
            self.assertRegex(result.err, r'events\.csv: line 29002 \(row 29000\), column event: '
                                         r'"later" is not an integer')
            self.assertEqual(old.read_bytes(), b"as it was")
        self.scan(events, [TOP], "--per-pmt", "per-pmt.root", "--per-event", "per-event.csv")

    def test_a_full_disk_keeps_all_old_files(self):
        events = self.events(random_events(30, 194))
        pmts, geometry = self.pmts(random_pmts(30, 195)), self.tables(*OPTICS, *ANCHOR)
        for _, name in self.FILES:
            self.write(name, "as it was")
        before = self.snapshot()
        for option, name in self.FILES:
            for limit in (1, 500):
                result = self.scan(events, pmts, option, name, geometry=geometry, status=1,
                                   preexec_fn=self.limited(limit))
                self.assertRegex(result.err, rf"\nzarn-shadow: {name}: .*\n\Z")
                self.assertNotIn("ROOT::", result.err)
                self.assertEqual(self.snapshot(), before)

    def test_only_regular_files_can_be_written(self):
        (self.folder / "null.root").symlink_to("/dev/null")
        for option, _ in self.FILES:
            result = self.scan([CENTRE], [TOP], option, "null.root", status=1)
            self.assertIn("null.root: cannot be written: ROOT output requires a regular file",
                          result.err)


if __name__ == "__main__":
    unittest.main(verbosity=2)
