#!/usr/bin/env python3
"""What `zarn-shadow map` judges and counts."""

import csv
import io
import math
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import ANCHOR, PIPES, REFERENCE, anchor_reach
from map_support import EVENT, MapTest, SMALL, angles, at, words_of
from scan_support import (
    BOTTOM, CENTRE, OPTICS, PMT_RADIUS, TOP, random_events, random_pmts)


class Verdicts(MapTest):
    def assert_same_verdicts(self, rows, wanted, after=""):
        """Rows of --data have the verdicts of a scan of one event."""
        self.assertEqual([(row["pmt"], row["shadowed" + after], row["by" + after])
                          for row in rows],
                         [(row.pmt, row.shadowed, row.by) for row in wanted])

    def test_the_verdicts_on_pmts_are_those_of_scan(self):
        geometry = self.reference_tables()
        pmts = random_pmts(300, 700)
        rows, result = self.data(at(EVENT), "--pmts", self.pmts(pmts), geometry=geometry)
        wanted = self.rows([EVENT], pmts, geometry=geometry)
        self.assert_same_verdicts(rows, wanted)
        self.assertGreaterEqual(len({row["by"] for row in rows}), 6)
        for row, position in zip(rows, pmts, strict=True):
            self.assertEqual(tuple(float(row[axis]) for axis in "xyz"), position)
            for name, wanted in zip(("azimuth", "polar_angle"), angles(position)):
                self.assertAlmostEqual(float(row[name]), wanted, delta=1e-12)

    def test_the_counts_are_those_of_scan(self):
        geometry = self.reference_tables()
        arguments = random_events(3, 701), random_pmts(200, 702)
        wanted = self.scan(*arguments, geometry=geometry).counts()
        found = self.map("--events", "events.csv", "--pmts", "pmts.csv",
                         geometry=geometry).counts()
        for name in wanted.keys() - {"seconds", "paths/second"}:
            self.assertEqual(found[name], wanted[name], name)

    def test_several_events_give_counts_for_each_pmt(self):
        geometry = self.reference_tables()
        self.scan(random_events(30, 703), random_pmts(60, 704), "--per-pmt", "counts.csv",
                  geometry=geometry)
        wanted = list(csv.DictReader(io.StringIO(self.read("counts.csv").decode())))
        rows, _ = self.data("--events", "events.csv", "--pmts", "pmts.csv", geometry=geometry)
        names = "pmt", "paths", "shadowed", "fraction"
        self.assertEqual([[row[name] for name in names] for row in rows],
                         [[row[name] for name in names] for row in wanted])
        self.assertNotIn("by", rows[0])

    def test_one_event_of_a_file_is_chosen_by_its_name(self):
        geometry = self.reference_tables()
        events = self.events({"a b": CENTRE, "": EVENT, "7": TOP})
        pmts = self.pmts(random_pmts(50, 705))
        for name, position in (("a b", CENTRE), ("", EVENT)):
            chosen, _ = self.data("--events", events, "--event", name, "--pmts", pmts,
                                  geometry=geometry)
            self.assertEqual(chosen, self.data(at(position), "--pmts", pmts,
                                               geometry=geometry)[0])
        only = self.events({"only": EVENT}, "only.csv")
        self.assertEqual(self.data("--events", only, "--pmts", pmts, geometry=geometry)[0],
                         self.data(at(EVENT), "--pmts", pmts, geometry=geometry)[0])

    def test_every_direction_has_the_verdict_on_its_end(self):
        geometry = self.reference_tables()
        rows, result = self.data(at(EVENT), "--radius", PMT_RADIUS, *SMALL, geometry=geometry)
        self.assertGreater(len(rows), 1000)
        self.assertEqual(result.counts()["pairs"][0], f"{len(rows):,}")
        some = rows[::len(rows) // 300]
        ends = [tuple(float(row[axis]) for axis in "xyz") for row in some]
        for end, row in zip(ends, some):
            self.assertAlmostEqual(math.hypot(*end), PMT_RADIUS, delta=1e-9)
            self.assertAlmostEqual(float(row["azimuth"]), math.atan2(end[1], end[0]),
                                   delta=1e-12)
        wanted = self.rows([EVENT], ends, geometry=geometry)
        self.assertEqual([(row["shadowed"], row["by"]) for row in some],
                         [(row.shadowed, row.by) for row in wanted])
        self.assertIn("no path", {row["by"] for row in some})
        # Azimuth 0 is in the middle and grows to the left; the top is up.
        first, last = rows[0], rows[-1]
        self.assertLess(float(first["polar_angle"]), 0.3)
        self.assertGreater(float(last["polar_angle"]), math.pi - 0.3)
        middle = [row for row in rows if row["row"] == rows[len(rows) // 2]["row"]]
        azimuths = [float(row["azimuth"]) for row in middle]
        self.assertEqual(azimuths, sorted(azimuths, reverse=True))

    def test_a_view_from_the_event_has_directions_from_the_event(self):
        geometry = self.reference_tables()
        pmts = random_pmts(20, 706)
        rows, _ = self.data(at(EVENT), "--pmts", self.pmts(pmts), "--view", "event",
                            geometry=geometry)
        self.assert_same_verdicts(rows, self.rows([EVENT], pmts, geometry=geometry))
        for row, position in zip(rows, pmts, strict=True):
            for name, wanted in zip(("azimuth", "polar_angle"), angles(position, EVENT)):
                self.assertAlmostEqual(float(row[name]), wanted, delta=1e-12)
        rows, _ = self.data(at(EVENT), "--radius", PMT_RADIUS, "--view", "event", *SMALL,
                            geometry=geometry)
        for row in rows[::100]:
            end = tuple(float(row[axis]) for axis in "xyz")
            self.assertAlmostEqual(math.hypot(*end), PMT_RADIUS, delta=1e-9)
        azimuths = {row["column"]: float(row["azimuth"]) for row in rows}
        self.assertGreater(len(azimuths), 50)

    def test_a_comparison_has_the_verdicts_with_both_tables(self):
        geometry = self.reference_tables()
        # Its anchors are as wide as the gaps between them.
        wide = self.write("wide.json", geometry.read_bytes()[:-1]
                          + b"," + self.tables(anchor_reach(700.0)).read_bytes()[1:])
        pmts = random_pmts(300, 707)
        before = self.rows([EVENT], pmts, geometry=geometry)
        after = self.rows([EVENT], pmts, geometry=wide)
        rows, result = self.data(at(EVENT), "--pmts", "pmts.csv", "--compare", wide,
                                 geometry=geometry)
        self.assert_same_verdicts(rows, before, "_before")
        self.assert_same_verdicts(rows, after)
        changed = sum(a != b for a, b in zip(before, after))
        self.assertGreater(changed, 0)
        self.assertEqual(result.counts()["changed"][0], str(changed))
        self.assertEqual(result.counts()["NCDAnchor"][0],
                         str(sum(row.by == "NCDAnchor" for row in after)))

    def test_a_comparison_can_be_with_another_run(self):
        geometry = self.tables(*OPTICS, *ANCHOR, anchor_reach(900.0, runs=[5, 9]))
        pmts = random_pmts(300, 708)
        scans = {run: self.rows([CENTRE], pmts, "--run", run, geometry=geometry)
                 for run in (0, 5)}
        self.assertNotEqual(scans[0], scans[5])
        for first, second in ((0, 5), (5, 0)):
            rows, _ = self.data(at(CENTRE), "--pmts", "pmts.csv", "--run", first,
                                "--compare-run", second, geometry=geometry)
            self.assert_same_verdicts(rows, scans[first], "_before")
            self.assert_same_verdicts(rows, scans[second])
        other = self.tables(*OPTICS, *ANCHOR, name="other.json")
        rows, _ = self.data(at(CENTRE), "--pmts", "pmts.csv", "--compare", geometry,
                            "--compare-run", 7, geometry=other)
        self.assert_same_verdicts(rows, scans[0], "_before")
        self.assert_same_verdicts(rows, scans[5])

    def test_run_tolerance_and_wavelength_are_used(self):
        geometry = self.tables(*OPTICS, *ANCHOR, anchor_reach(900.0, runs=[5, 5]))
        pmts = [BOTTOM, *random_pmts(200, 709)]
        for options in (("--run", 5), ("--tolerance", 900)):
            rows, _ = self.data(at(CENTRE), "--pmts", self.pmts(pmts), *options,
                                geometry=geometry)
            self.assert_same_verdicts(rows, self.rows([CENTRE], pmts, *options,
                                                      geometry=geometry))
            self.assertIn("NCDAnchor", {row["by"] for row in rows})
        found = []
        for wavelength in (250, 600):
            options = "--wavelength", wavelength
            found.append(self.data(at(EVENT), "--pmts", "pmts.csv", *options,
                                   geometry=REFERENCE)[0])
            self.assert_same_verdicts(found[-1], self.rows([EVENT], pmts, *options,
                                                           geometry=REFERENCE))
        self.assertNotEqual(*found)

    def test_threads_do_not_matter(self):
        geometry = self.reference_tables()
        pmts = self.pmts(random_pmts(5000, 710))
        for options in ((at(EVENT), "--pmts", pmts), (at(EVENT), "--radius", PMT_RADIUS, *SMALL)):
            found = set()
            for threads in (1, 2, 7):
                picture = self.map(*options, "--data", "data.csv", "--tolerances", "0,150",
                                   "--threads", threads, geometry=geometry).out
                found.add((picture, self.read("data.csv")))
            self.assertEqual(len(found), 1)

    def test_far_and_near_pmts_have_their_directions(self):
        pmts = [(1e308, 1e308, 1e308), (-1e200, 0.0, 1e200), (1e-320, 0.0, 0.0),
                (0.0, -1e-200, -1e-200)]
        rows, _ = self.data(at(CENTRE), "--pmts", self.pmts(pmts))
        for row, position in zip(rows, pmts, strict=True):
            for name, wanted in zip(("azimuth", "polar_angle"), angles(position)):
                self.assertAlmostEqual(float(row[name]), wanted, delta=1e-12)

    def test_a_sphere_can_have_any_radius(self):
        for options in ((at(CENTRE), "--radius", 1e200),
                        (at((0.0, 0.0, 1e180)), "--radius", 1e200, "--view", "event")):
            rows, _ = self.data(*options, "--no-panel", *SMALL)
            for row in rows[::100]:
                end = tuple(float(row[axis]) for axis in "xyz")
                self.assertAlmostEqual(math.hypot(*end) / 1e200, 1.0, delta=1e-12)


class EmptyInputs(MapTest):
    def test_without_pmts_a_map_is_empty(self):
        rows, result = self.data(at(CENTRE), "--pmts", self.pmts([]))
        self.assertEqual(rows, [])
        self.assertIn(b"<svg", result.out)
        self.assertEqual(result.counts()["pairs"][0], "0")
        self.data("--events", self.events([CENTRE, TOP]), "--pmts", self.pmts([]))
        self.assertTrue(self.read("data.csv").endswith(b",paths,shadowed,fraction\n"))
        self.data(at(CENTRE), "--pmts", self.pmts([]), "--compare-run", 1)
        self.assertTrue(self.read("data.csv").endswith(
            b",shadowed_before,by_before,shadowed,by\n"))

    def test_one_pmt_is_enough(self):
        rows, result = self.data(at(CENTRE), "--pmts", self.pmts({"p": BOTTOM}))
        self.assertEqual([(row["pmt"], row["by"]) for row in rows], [("p", "NCDAnchor")])
        self.assertIn(b"<svg", result.out)

    def test_pmts_without_a_path_or_a_direction_are_told(self):
        pmts = {"in the vessel": (0, 0, 100), "at the centre": CENTRE, "nan": ("nan", 0, 0)}
        for options in ((at(TOP),), (at(TOP), "--view", "event"),
                        ("--events", self.events([TOP, BOTTOM]))):
            rows, result = self.data(*options, "--pmts", self.pmts(pmts))
            self.assertEqual(len(rows), 3)
            self.assertEqual(result.counts()["paths"][0], "0")
            self.assertIn(b"<svg", result.out)
        rows, _ = self.data(at(CENTRE), "--pmts", self.pmts(pmts))
        self.assertEqual([row["by"] for row in rows], ["no path"] * 3)
        self.assertEqual([row["azimuth"] == "" for row in rows], [False, True, True])

    def test_components_that_are_off_are_told(self):
        result = self.map(at(CENTRE), "--pmts", self.pmts([TOP]),
                          geometry=self.tables(*OPTICS, *PIPES))
        self.assertEqual(result.counts()["AVHDRope"][0], "not loaded")
        self.assertTrue(any("not loaded" in words for words in words_of(result.out)))

    def test_no_events_are_refused(self):
        self.assertIn("events.csv: there are no events",
                      self.refused("--events", self.events([]), "--pmts", self.pmts([TOP])))


class BadInput(MapTest):
    def test_errors_name_file_row_and_field(self):
        pmts = self.pmts([TOP])
        self.assertRegex(
            self.refused(at(CENTRE), "--pmts", self.write("bad.csv", "pmt,x,y,z\n0,1,2,x\n")),
            r"bad\.csv.*2.*z")
        self.assertRegex(self.refused(at(CENTRE), "--pmts", "none.csv"), "none.csv")
        self.assertRegex(self.refused(at(CENTRE), "--pmts", pmts,
                                      geometry=self.tables(*ANCHOR)), "tables.json: .*OPTICS")
        self.assertRegex(self.refused(at(CENTRE), "--pmts", pmts, "--compare", "none.json"),
                         "none.json")
        other = self.tables(*ANCHOR, name="other.json")
        self.assertRegex(self.refused(at(CENTRE), "--pmts", pmts, "--compare", other),
                         "other.json: .*OPTICS")

    def test_an_event_that_cannot_be_chosen_is_named(self):
        events = self.events({"z=3000": CENTRE, "b": TOP})
        pmts = self.pmts([TOP])
        self.assertIn('there is no event "z=300"; did you mean z=3000?',
                      self.refused("--events", events, "--event", "z=300", "--pmts", pmts))
        twice = self.write("twice.csv", events.read_text() + "b,1,2,3\n")
        self.assertRegex(self.refused("--events", twice, "--event", "b", "--pmts", pmts),
                         r'twice\.csv.*"b" is the name of an earlier row, too')

    def test_what_needs_one_event_says_so(self):
        events = self.events([CENTRE, TOP])
        pmts = self.pmts([TOP])
        for options, wanted in (
                (("--pmts", pmts, "--view", "event"), "--view event needs one event"),
                (("--pmts", pmts, "--compare-run", 1), "--compare-run needs one event"),
                (("--pmts", pmts, "--compare", self.tables(*OPTICS, name="other.json")),
                 "--compare needs one event"),
                (("--radius", PMT_RADIUS), "--radius needs one event")):
            said = self.refused("--events", events, *options)
            self.assertIn(wanted, said)
            self.assertIn("--event", said)

    def test_a_view_from_outside_the_sphere_is_refused(self):
        for event in ((0.0, 0.0, 8400.0), (0.0, 8300.0, 0.0)):
            self.assertIn("the event is not inside the sphere", self.refused(
                at(event), "--radius", 8300, "--view", "event"))
        self.map(at((0.0, 0.0, 8400.0)), "--radius", 8300, *SMALL)


if __name__ == "__main__":
    unittest.main(verbosity=2)
