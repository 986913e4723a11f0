#!/usr/bin/env python3
"""The media that `zarn-shadow scan` reads."""

import json
import re
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import ANCHOR, VESSEL, entry
from light_support import FROM_INSIDE, MEDIA_OF, cross, length, minus, unit
from scan_support import (
    BOTTOM, CENTRE, INDICES, OPTICS, ScanTest, TOP, optics, positions, random_events,
    random_pmts)


class Media(ScanTest):
    FLAT = {"wavelength": [300, 400, 500, 600], "refractive_index": [1.75, 1.5, 1.25, 1.125]}
    BENT = ([(3000.0, 0.0, 0.0)], [TOP])

    def bent(self, inner, *options):
        """The written path of a pair; any change of the inner index changes it."""
        result = self.scan(*self.BENT, "--paths", "paths.csv", *options,
                           geometry=self.tables(*optics(inner, 1.49, 1.33)))
        return self.read("paths.csv"), self.new_lines(result)

    def new_lines(self, result):
        """Messages other than those of the set-up and the table."""
        if not hasattr(self, "usual"):
            plain = self.scan(*self.BENT, geometry=self.tables(*OPTICS))
            self.usual = set(plain.err.splitlines())
        return [text for text in result.err.splitlines()
                if text not in self.usual and not re.match(r" *[\w/ ]+ +[\d,.]+( |$)", text)]

    def test_a_table_is_interpolated_linearly(self):
        for wavelength, index in ((300, 1.75), (400, 1.5), (450, 1.375), (462.5, 1.34375),
                                  ("5e2", 1.25), (550, 1.1875), ("+600.0", 1.125)):
            with self.subTest(wavelength=wavelength):
                table, warnings = self.bent(self.FLAT, "--wavelength", wavelength)
                self.assertEqual(table, self.bent(index)[0])
                self.assertEqual(warnings, [])

    def test_the_default_wavelength_is_400(self):
        self.assertEqual(self.bent(self.FLAT)[0], self.bent(1.5)[0])
        self.assertNotEqual(self.bent(self.FLAT)[0], self.bent(1.25)[0])

    def test_outside_a_table_its_end_is_used_with_one_warning_per_medium(self):
        inner, water = self.FLAT, {"wavelength": [350, 450], "refractive_index": [1.375, 1.25]}
        for wavelength, ends, warned in ((299, (1.75, 1.375), ["inner_av", "water"]),
                                         (1e-3, (1.75, 1.375), ["inner_av", "water"]),
                                         (451, (1.3725, 1.25), ["water"]),
                                         (601, (1.125, 1.25), ["inner_av", "water"]),
                                         (1e9, (1.125, 1.25), ["inner_av", "water"]),
                                         (400, (1.5, 1.3125), [])):
            for threads in (1, 7):
                with self.subTest(wavelength=wavelength, threads=threads):
                    result = self.scan(random_events(9, 1), random_pmts(9, 2), "--wavelength",
                                       wavelength, "--threads", threads, "--paths", "paths.csv",
                                       geometry=self.tables(*optics(inner, 1.49, water)))
                    messages = self.new_lines(result)
                    self.assertEqual(len(messages), len(warned), messages)
                    for text, index in zip(messages, warned):
                        self.assertIn(index, text)
                        self.assertIn("wavelength", text)
                    found = self.read("paths.csv")
                    self.scan(random_events(9, 1), random_pmts(9, 2), "--paths", "paths.csv",
                              geometry=self.tables(*optics(ends[0], 1.49, ends[1])))
                    if wavelength != 451:  # its inner index is rounded
                        self.assertEqual(found, self.read("paths.csv"))

    def test_a_number_is_used_for_all_wavelengths(self):
        for wavelength in ("1e-300", "200", "1e300"):
            table, warnings = self.bent(1.5, "--wavelength", wavelength)
            self.assertEqual(table, self.bent(1.5)[0])
            self.assertEqual(warnings, [])

    def test_snells_law_holds_at_the_wavelength(self):
        geometry = self.tables(*optics(self.FLAT, {"wavelength": [380, 480],
                                                   "refractive_index": [1.5, 1.45]}, 1.33))
        at_430 = (1.5 - 0.3 * 0.25, 1.5 - 0.5 * 0.05, 1.33)
        _, paths = self.paths(random_events(6, 80), random_pmts(6, 81), "--wavelength", 430,
                              geometry=geometry)
        bends = 0
        for path in paths:
            points, media = path.points(), MEDIA_OF[path.type]
            ways = [unit(minus(b, a)) for a, b in zip(points, points[1:])]
            for i, point in enumerate(points[1:-1]):
                before = length(cross(ways[i], unit(point)))
                after = length(cross(ways[i + 1], unit(point)))
                self.assertAlmostEqual(at_430[media[i]] * before,
                                       at_430[media[i + 1]] * after, delta=1e-9)
                bends += 1
        self.assertGreater(bends, 40)

    def refuse_tables(self, entries, *wanted):
        geometry = self.write("tables.json", json.dumps(entries))
        return self.refuse(positions("event", [CENTRE]), positions("pmt", [TOP]),
                           r"tables\.json", *wanted, geometry=geometry)

    def test_a_missing_medium_is_named(self):
        for i, index in enumerate(("inner_av", "acrylic", "water")):
            with self.subTest(index=index):
                some = OPTICS[:i] + OPTICS[i + 1:]
                self.refuse_tables([*VESSEL, *some], "OPTICS", rf"\b{index}\b")
                empty = [*some, entry("OPTICS", index, {})]
                self.refuse_tables([*VESSEL, *empty], "OPTICS", rf"\b{index}\b",
                                   "refractive_index")
                later = [*some, {**OPTICS[i], "runs": [1, None]}]
                self.refuse_tables([*VESSEL, *later], "OPTICS", rf"\b{index}\b")
        self.refuse_tables(VESSEL, "OPTICS")

    def test_an_impossible_medium_is_named_with_its_field(self):
        def two(wavelength, index):
            return {"wavelength": wavelength, "refractive_index": index}
        index_field, wave_field = "refractive_index", "wavelength"
        for value, field in ((0.999, index_field), (0, index_field), (-1.5, index_field),
                             ({index_field: "1.5"}, index_field),
                             ({index_field: [1.5, 1.4]}, index_field + "|" + wave_field),
                             ({wave_field: [400, 500]}, index_field),
                             (two([400, 500], [1.5, 0.99]), index_field),
                             (two([400, 500], [1.5]), index_field + "|" + wave_field),
                             (two([400], [1.5, 1.4]), index_field + "|" + wave_field),
                             (two([], []), index_field + "|" + wave_field),
                             (two([400, 400], [1.5, 1.4]), wave_field),
                             (two([500, 400], [1.5, 1.4]), wave_field),
                             (two([300, 400, 350], [1.5, 1.4, 1.3]), wave_field)):
            for i, index in enumerate(("inner_av", "acrylic", "water")):
                with self.subTest(value=value, index=index):
                    media = [*INDICES[:i], value, *INDICES[i + 1:]]
                    self.refuse_tables([*VESSEL, *optics(*media)], "OPTICS", rf"\b{index}\b",
                                       field)

    def test_an_index_of_1_and_a_table_of_one_wavelength_are_accepted(self):
        self.assertEqual(self.types(*self.BENT, geometry=self.tables(
            *optics(1, 1.0, {"wavelength": [400], "refractive_index": [1]}))), [FROM_INSIDE])

    def test_missing_or_impossible_radii_are_named(self):
        def radii(inner, outer):
            return [entry("SOLID", "acrylic_vessel_inner", {"r_sphere": inner}),
                    entry("SOLID", "acrylic_vessel_outer", {"r_sphere": outer, "r_neck": 700.0})]
        for vessel in ([], VESSEL[:1], VESSEL[1:]):
            with self.subTest(vessel=vessel):
                self.refuse_tables([*vessel, *OPTICS], "SOLID", "acrylic_vessel_(inner|outer)")
        no_field = [VESSEL[0], entry("SOLID", "acrylic_vessel_outer", {"r_neck": 700.0})]
        for vessel in (no_field, radii("big", 5860), radii(5800, [5860]), radii(0, 5860),
                       radii(-5800, 5860), radii(5800, 5799), radii(5800, 0), radii(5800, 5800)):
            with self.subTest(vessel=vessel):
                self.refuse_tables([*vessel, *OPTICS], "SOLID", "acrylic_vessel_(inner|outer)",
                                   "r_sphere")

    def test_check_needs_no_media(self):
        _, paths = self.paths([CENTRE], [TOP, BOTTOM])
        self.assertEqual(len(paths), 2)
        result = self.check("paths.csv", geometry=self.tables(*ANCHOR))
        self.assertEqual(result.verdicts(), ["", "NCDAnchor"])


if __name__ == "__main__":
    unittest.main(verbosity=2)
