#!/usr/bin/env python3
"""Uncertain positions in `zarn-shadow scan`."""

import math
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from scan_support import (
    BOTTOM, CENTRE, ScanTest, TOP, VERDICT_HEADER, random_events, random_pmts,
    records)

SMEARED = ["smeared_fraction", "smeared_paths"]


class Smear(ScanTest):
    def table(self, events, pmts, sigma, *options, **more):
        result = self.scan(events, pmts, "--smear", sigma, "-o", "-", *options, **more)
        header, *rows = records(result.out)
        self.assertEqual(header[:7], [*VERDICT_HEADER.split(","), *SMEARED])
        return rows

    def test_the_default_columns_stay_unsmeared(self):
        events, pmts = random_events(9, 400), random_pmts(30, 401)
        geometry = self.reference_tables()
        plain = records(self.scan(events, pmts, "--reflections", geometry=geometry).out)[1:]
        rows = self.table(events, pmts, 200, "--samples", 20, "--reflections",
                          geometry=geometry)
        self.assertEqual([row[:5] for row in rows], plain)

    def test_the_share_is_that_of_positions_with_a_path(self):
        geometry = self.reference_tables()
        rows = self.table(random_events(9, 402), random_pmts(30, 403), 300, "--samples", 40,
                          geometry=geometry)
        shares = set()
        for row in rows:
            paths = int(row[6])
            self.assertLessEqual(paths, 40)
            if paths == 0:
                self.assertEqual(row[5], "")
                continue
            share = float(row[5]) * paths
            self.assertAlmostEqual(share, round(share), delta=1e-9)
            shares.add(float(row[5]))
        self.assertLessEqual({0.0, 1.0}, shares)
        self.assertGreater(len(shares), 10)

    def test_half_of_the_positions_at_the_edge_of_a_shadow_are_shadowed(self):
        def event(x):
            return (x, 0.0, -math.sqrt(5799.0 ** 2 - x * x))
        events = {str(x): event(x) for x in range(100, 300)}
        rows = self.table(events, [BOTTOM], 0, "--samples", 1)
        edge = max(int(row[0]) for row in rows if row[4]) + 0.5  # of the anchor's shadow
        self.assertEqual([row[4] for row in rows],
                         ["NCDAnchor"] * int(edge - 99) + [""] * int(300 - edge))
        rows = self.table([event(edge)], [BOTTOM], 2, "--samples", 2000)
        self.assertAlmostEqual(float(rows[0][5]), 0.5, delta=0.15)
        inside, outside = (self.table([(x, 0.0, -5790.0)], [(x * 1.4, 0.0, -8290.0)], 0.5)[0][5]
                           for x in (50.0, 1000.0))
        self.assertEqual((inside, outside), ("1", "0"))

    def test_without_an_uncertainty_it_is_the_verdict(self):
        rows = self.table([CENTRE, TOP, ("nan", "0", "0")], [TOP, BOTTOM], 0, "--samples", 7)
        self.assertEqual([row[5:] for row in rows],
                         [["0", "7"], ["1", "7"], ["", "0"], ["1", "7"], ["", "0"], ["", "0"]])

    def test_threads_and_repetitions_do_not_matter_and_the_seed_does(self):
        events, pmts = random_events(40, 404), random_pmts(20, 405)
        geometry = self.reference_tables()

        def run(*options):
            out = self.scan(events, pmts, "--smear", 100, "--samples", 9, "-o", "-", "--per-pmt",
                            "pmts-out.csv", "--per-event", "events-out.csv", "--reflections",
                            *options, geometry=geometry).out
            return out, self.read("pmts-out.csv"), self.read("events-out.csv")
        wanted = run("--threads", 1)
        for threads in (1, 2, 7):
            self.assertEqual(run("--threads", threads, "--seed", 1), wanted)
        self.assertNotEqual(run("--seed", 2), wanted)

    def test_counts_get_the_mean_of_the_rows(self):
        events, pmts = random_events(12, 406), random_pmts(15, 407)
        rows = self.table(events, pmts, 250, "--samples", 10, "--reflections", "--per-pmt",
                          "pmts-out.csv", "--per-event", "events-out.csv",
                          geometry=self.reference_tables())
        for name, column in (("events-out.csv", 0), ("pmts-out.csv", 1)):
            header, *counts = records(self.read(name))
            self.assertEqual(header[4:], ["by", "smeared_fraction"])
            for cells in counts:
                shares = [float(row[5]) for row in rows
                          if row[column] == cells[0] and row[5]]
                self.assertAlmostEqual(float(cells[5]), sum(shares) / len(shares), delta=1e-12)

    def test_columns_come_after_it(self):
        result = self.scan([CENTRE], [TOP], "--smear", 1, "--columns", "code")
        self.assertEqual(records(result.out)[0][5:], [*SMEARED, "code"])
        self.assertEqual(records(result.out)[1][5:], ["0", "100", "0"])
        self.scan([CENTRE], [TOP], "--smear", 1, "--columns", "code", "-o", "out.root")
        self.assertEqual(self.read("out.root")[:4], b"root")

    def test_bad_values_are_refused(self):
        for options, wanted in ((["--smear", "-1"], '--smear: "-1" is less than 0'),
                                (["--smear", "x"], '--smear: "x" '),
                                (["--smear", "nan"], '--smear: "nan" is not finite'),
                                (["--smear", "1", "--samples", "0"],
                                 '--samples: "0" is out of range'),
                                (["--smear", "1", "--samples", "65536"],
                                 '--samples: "65536" is out of range'),
                                (["--smear", "1", "--seed", "x"], '--seed: "x" is not a whole'),
                                (["--samples", "5"], "--samples needs --smear"),
                                (["--seed", "5"], "--seed needs --smear")):
            self.refuse(self.events([CENTRE]), self.pmts([TOP]), wanted, options=options)


if __name__ == "__main__":
    unittest.main(verbosity=2)
