#!/usr/bin/env python3
"""`zarn-shadow scan --tolerances`."""

import json
import math
import re
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import ANCHOR, COMPONENTS, PLATE, PROGRAM
from root_support import NTuple
from scan_support import (
    BOTTOM, CENTRE, OPTICS, ScanTest, TOP, random_events, random_pmts, records)

TABLE_HEADER = ["tolerance", "component", "paths", "shadowed", "fraction", "fraction_error"]


def without_tolerance(content, tolerance):
    """The rows of counts at one tolerance, as a scan at this tolerance writes them."""
    header, *rows = records(content)
    assert header[1] == "tolerance", header
    return [header[:1] + header[2:],
            *(row[:1] + row[2:] for row in rows if float(row[1]) == tolerance)]


class Tolerances(ScanTest):
    def tolerances(self, text):
        """Those that an option means."""
        rows = records(self.scan([CENTRE], [BOTTOM], "--tolerances", text).out)
        self.assertEqual(rows[0], TABLE_HEADER)
        self.assertEqual([row[1] for row in rows[1:8]], ["any", *COMPONENTS])
        return [float(row[0]) for row in rows[1::7]]

    def test_the_counts_are_those_of_a_scan_at_each_tolerance(self):
        tolerances = (-20, 0, 150, 600)
        geometry = self.reference_tables()
        arguments = random_events(9, 500), random_pmts(40, 501), "--reflections"
        outputs = "--per-pmt", "pmts-out.csv", "--per-event", "events-out.csv"
        at_all = self.scan(*arguments, *outputs, "--tolerances", ",".join(map(str, tolerances)),
                           "-o", "-", geometry=geometry)
        header, *table = records(at_all.out)
        self.assertEqual(header, TABLE_HEADER)
        per_pmt, per_event = self.read("pmts-out.csv"), self.read("events-out.csv")
        for i, tolerance in enumerate(tolerances):
            single = self.scan(*arguments, *outputs, f"--tolerance={tolerance}",
                               geometry=geometry)
            for content, name in ((per_pmt, "pmts-out.csv"), (per_event, "events-out.csv")):
                self.assertEqual(without_tolerance(content, tolerance),
                                 records(self.read(name)))
            counts = single.counts()
            paths = int(counts["paths"][0].replace(",", ""))
            for cells, name in zip(table[7 * i:7 * i + 7], ("shadowed", *COMPONENTS),
                                   strict=True):
                shadowed = int(counts[name][0].replace(",", ""))
                share = shadowed / paths
                self.assertEqual(cells, [str(tolerance), "any" if name == "shadowed" else name,
                                         str(paths), str(shadowed), *cells[4:]])
                self.assertEqual(float(cells[4]), share)
                self.assertEqual(float(cells[5]), math.sqrt(share * (1 - share) / paths))
        self.assertEqual(len(table), 7 * len(tolerances))
        self.assertEqual(single.counts()["paths"], at_all.counts()["paths"])
        self.assertNotIn("shadowed", at_all.counts())

    def test_threads_do_not_matter(self):
        arguments = (random_events(40, 510), random_pmts(200, 511), "--tolerances", "0:300:50",
                     "-o", "-", "--per-pmt", "pmts-out.csv", "--per-event", "events-out.csv")
        geometry = self.tables(*OPTICS, *ANCHOR, *PLATE)
        found = set()
        for threads in (1, 5):
            out = self.scan(*arguments, "--threads", threads, geometry=geometry).out
            found.add((out, self.read("pmts-out.csv"), self.read("events-out.csv")))
        self.assertEqual(len(found), 1)

    def test_a_range_includes_both_ends(self):
        for text, wanted in (("10:50:10", [10, 20, 30, 40, 50]), ("10:49:20", [10, 30]),
                             ("5:5:1", [5]), ("-1 : 1 : 0.5", [-1, -0.5, 0, 0.5, 1])):
            self.assertEqual(self.tolerances(text), wanted)
        self.assertEqual(len(self.tolerances("0:0.3:0.1")), 4)

    def test_a_list_keeps_its_order(self):
        self.assertEqual(self.tolerances("150"), [150])
        self.assertEqual(self.tolerances(" 150, -1e1,0 "), [150, -10, 0])

    def test_root_files_have_the_same(self):
        arguments = random_events(6, 520), random_pmts(9, 521), "--tolerances", "0,150"
        self.scan(*arguments, "-o", "out.csv", "--per-pmt", "pmts-out.csv", "--per-event",
                  "events-out.csv")
        self.scan(*arguments, "-o", "out.root", "--per-pmt", "pmts-out.root", "--per-event",
                  "events-out.root")
        for name, ntuple in (("out", "tolerances"), ("pmts-out", "counts"),
                             ("events-out", "counts")):
            header, *rows = records(self.read(name + ".csv"))
            found = NTuple(ntuple, self.folder / (name + ".root"))
            self.assertEqual(found.fields, header)
            self.assertEqual([[str(float(v)) if isinstance(v, (int, float)) else v for v in row]
                              for row in found.rows],
                             [[self.number(text) for text in row] for row in rows])
            self.assertEqual(found.origin, json.loads(self.read("out.csv.json")))
            self.assertEqual(found.origin["tolerances"], [0, 150])
            self.assertNotIn("tolerance", found.origin)

    @staticmethod
    def number(text):
        try:
            return str(float(text))
        except ValueError:
            return text

    def test_without_paths_fractions_are_empty(self):
        rows = records(self.scan([("nan", "0", "0")], [TOP], "--tolerances", "1").out)[1:]
        self.assertEqual({tuple(row[2:]) for row in rows}, {("0", "0", "", "")})

    def test_only_counts_are_written_if_only_these_are_asked_for(self):
        result = self.scan([CENTRE], [BOTTOM], "--tolerances", "1", "--per-pmt", "pmts-out.csv")
        self.assertEqual(result.out, b"")
        self.assertEqual(records(self.read("pmts-out.csv"))[0],
                         ["pmt", "tolerance", "paths", "shadowed", "fraction", "by"])

    def test_paths_can_be_written_too(self):
        arguments = random_events(6, 530), random_pmts(9, 531), "--paths", "paths.csv"
        self.scan(*arguments, "--tolerances", "0,150", "-o", "out.csv")
        paths = self.read("paths.csv")
        self.scan(*arguments)
        self.assertEqual(self.read("paths.csv"), paths)

    def test_bad_tolerances_are_refused(self):
        for options, wanted in (
                (("--tolerances", "1:2"), '"1:2" is not START:STOP:STEP'),
                (("--tolerances", "1:2:3:4"), "is not START:STOP:STEP"),
                (("--tolerances", "1:2:0"), "has a STEP that is not greater than 0"),
                (("--tolerances", "2:1:1"), "has a STOP that is less than START"),
                (("--tolerances", "0:1:1e-9"), "has more than 1000 tolerances"),
                (("--tolerances", "1,x"), '--tolerances: "x" is not a number'),
                (("--tolerances", "1,,2"), '--tolerances: ""'),
                (("--tolerances", "inf"), '"inf" is not finite'),
                (("--tolerances", "1,2,1"), '"1,2,1" has a tolerance twice'),
                (("--tolerances", "1", "--tolerance", "1"),
                 "--tolerances and --tolerance exclude each other"),
                (("--tolerances", "1", "--smear", "1"),
                 "--tolerances and --smear exclude each other"),
                (("--tolerances", "1", "--columns", "time"),
                 "--columns needs verdicts: --tolerances writes counts")):
            self.refuse(self.events([CENTRE]), self.pmts([TOP]), re.escape(wanted),
                        options=options)

    def test_an_interrupt_leaves_old_files_unchanged(self):
        old = self.write("old.csv", "as it was")
        events = self.events(random_events(4000, 540))
        process = self.start([*self.scan_command(events, self.pmts(random_pmts(200, 541)),
                                                 self.reference_tables(), "--tolerances", "0,1",
                                                 "-o", old)])
        self.wait_for(self.temporaries, "a temporary file")
        process.send_signal(2)
        self.assert_ends(process, 130)
        self.assertEqual(old.read_bytes(), b"as it was")

    def test_the_help_shows_the_option(self):
        shown = self.run_command([PROGRAM, "scan", "--help"]).out.decode()
        self.assertIn("--tolerances LIST", shown)
        for name in TABLE_HEADER:
            self.assertRegex(shown, rf"\n  {name}  ")


if __name__ == "__main__":
    unittest.main(verbosity=2)
