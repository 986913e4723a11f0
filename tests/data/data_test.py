#!/usr/bin/env python3
"""The data files are what their scripts write, and match their pages."""

import csv
import importlib.util
import json
import math
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

DATA = pathlib.Path(os.environ["ZARN_DATA_DIR"])
TABLES = DATA / "reference-detector"


def written_by(script, *arguments):
    subprocess.run([sys.executable, str(script), *arguments], check=True)


def fields_of(file, table, index):
    (fields,) = [e["fields"] for e in json.loads((TABLES / file).read_text())
                 if (e["table"], e["index"]) == (table, index)]
    return fields


def rows_of(name):
    with open(DATA / name, encoding="utf-8", newline="") as file:
        return list(csv.DictReader(file))


def position_of(row):
    return tuple(float(row[axis]) for axis in "xyz")


class DataFiles(unittest.TestCase):
    def test_example_paths_are_what_their_script_writes(self):
        with tempfile.TemporaryDirectory() as folder:
            again = pathlib.Path(folder, "paths.csv")
            written_by(DATA / "make-example-paths.py", "--output", str(again))
            self.assertEqual(again.read_bytes(), (DATA / "example-paths.csv").read_bytes())

    def test_tables_are_what_their_script_writes(self):
        with tempfile.TemporaryDirectory() as folder:
            written_by(TABLES / "make-tables.py", "--output", folder)
            names = sorted(p.name for p in TABLES.glob("*.json"))
            self.assertEqual(sorted(os.listdir(folder)), names)
            for name in names:
                self.assert_alike(json.loads(pathlib.Path(folder, name).read_text()),
                                  json.loads((TABLES / name).read_text()), name)
            # This file needs no sines, so it is equal byte for byte.
            self.assertEqual(pathlib.Path(folder, "optics.json").read_bytes(),
                             (TABLES / "optics.json").read_bytes())

    def test_scan_inputs_are_what_their_script_writes(self):
        with tempfile.TemporaryDirectory() as folder:
            written_by(DATA / "make-scan-inputs.py", "--output", folder)
            self.assertEqual(sorted(os.listdir(folder)), ["pmts.csv", "source-scan.csv"])
            for name in os.listdir(folder):
                self.assertEqual(pathlib.Path(folder, name).read_bytes(),
                                 (DATA / name).read_bytes(), name)

    def assert_alike(self, new, old, place):
        """Equal except for the last written digit of numbers: sines differ in
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


def script_module():
    sys.dont_write_bytecode = True  # writes no files next to the data
    spec = importlib.util.spec_from_file_location("make_tables", TABLES / "make-tables.py")
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


def between(x, y, at):
    """Linear interpolation between the points (x, y)."""
    n = next(n for n in range(1, len(x)) if at <= x[n])
    share = (at - x[n - 1]) / (x[n] - x[n - 1])
    return (1.0 - share) * y[n - 1] + share * y[n]


def slope_at(x, y, n):
    """Slope of the parabola through a point and its neighbours, or at an end the
    next two points, like the program."""
    middle = min(max(n, 1), len(x) - 2)
    before, after = ((y[k + 1] - y[k]) / (x[k + 1] - x[k]) for k in (middle - 1, middle))
    bend = 2.0 * (after - before) / (x[middle + 1] - x[middle - 1])
    return before + bend * (x[n] - 0.5 * (x[middle - 1] + x[middle]))


class Optics(unittest.TestCase):
    INDICES = ("inner_av", "acrylic", "water")

    def table(self, index):
        fields = fields_of("optics.json", "OPTICS", index)
        return fields["wavelength"], fields["refractive_index"]

    def index_at(self, index, wavelength):
        return between(*self.table(index), wavelength)

    def test_every_medium_covers_300_to_700_nm_and_disperses_normally(self):
        entries = json.loads((TABLES / "optics.json").read_text())
        self.assertEqual([(e["table"], e["index"]) for e in entries],
                         [("OPTICS", index) for index in self.INDICES])
        for index in self.INDICES:
            wavelengths, values = self.table(index)
            self.assertEqual(len(wavelengths), len(values))
            self.assertEqual((wavelengths[0], wavelengths[-1]), (300.0, 700.0))
            self.assertEqual(wavelengths, sorted(set(wavelengths)))
            self.assertEqual(values, sorted(set(values), reverse=True))
            self.assertGreater(values[-1], 1.3)
            self.assertLess(values[0], 1.6)

    def test_the_indices_agree_with_other_measurements(self):
        in_air = 1.00028  # the values are relative to air, except for water
        for index, wavelength, value, within in (
                # Handbooks, 20 degrees.
                ("inner_av", 589.3, 1.4969 * in_air, 0.0005),
                # Kozma et al. 2005, corrected from 22 to 20 degrees.
                ("inner_av", 400.0, (1.52254 + 0.0011) * in_air, 0.004),
                # Moutzouris et al. 2013, corrected from 27 to 20 degrees.
                ("inner_av", 450.0, (1.50975 + 0.0036) * in_air, 0.0015),
                # Sultanova et al. 2009, the measurements used for the fit.
                ("acrylic", 436.8, 1.502 * in_air, 0.0005),
                ("acrylic", 587.6, 1.491 * in_air, 0.0005),
                ("acrylic", 632.8, 1.489 * in_air, 0.0005),
                # Zhang et al. 2020.
                ("acrylic", 400.0, 1.50818 * in_air, 0.001),
                ("acrylic", 500.0, 1.49795 * in_air, 0.002),
                # Beadie et al. 2015, 20 degrees.
                ("acrylic", 436.0, 1.50308 * in_air, 0.001),
                ("acrylic", 589.3, 1.49245 * in_air, 0.002),
                # Handbooks, 10 degrees, relative to vacuum.
                ("water", 404.7, 1.3439, 0.0001),
                ("water", 501.6, 1.3375, 0.0001),
                ("water", 589.3, 1.3341, 0.0001)):
            self.assertAlmostEqual(self.index_at(index, wavelength), value, delta=within,
                                   msg=f"{index} at {wavelength}")

    def test_the_indices_at_the_default_wavelength_are_those_on_the_page(self):
        self.assertEqual([self.index_at(index, 400.0) for index in self.INDICES],
                         [1.527398, 1.50768, 1.344302])

    def test_the_dispersion_has_the_abbe_numbers_of_such_materials(self):
        for index, least, most in (("inner_av", 30, 32), ("acrylic", 50, 60),
                                   ("water", 55.3, 56.3)):
            blue, yellow, red = (self.index_at(index, w) for w in (486.1, 587.6, 656.3))
            abbe = (yellow - 1.0) / (blue - red)
            self.assertGreater(abbe, least, index)
            self.assertLess(abbe, most, index)

    def test_the_formula_of_water_gives_the_published_check_values(self):
        script = script_module()
        for micrometres, temperature, density, value in (
                (0.2265, 298.15, 997.047435, 1.39277824),
                (0.5893, 773.15, 30.4758534, 1.00949307)):
            script.WATER_TEMPERATURE = temperature
            script.WATER_DENSITY = density
            self.assertAlmostEqual(script.water_index(micrometres), value, delta=0.5e-8)

    def test_interpolated_indices_are_close_to_the_formulas(self):
        script = script_module()
        for index, formula in zip(self.INDICES, (script.toluene_index, script.acrylic_index,
                                                 script.water_index)):
            x, y = self.table(index)
            group = [y[n] - x[n] * slope_at(x, y, n) for n in range(len(x))]
            for tenth in range(3000, 7001):
                wavelength = 0.1 * tenth
                micrometres = wavelength / 1000.0
                value = formula(micrometres)
                slope = (formula(micrometres + 1e-4) - formula(micrometres - 1e-4)) / 2e-4
                self.assertLess(abs(between(x, y, wavelength) - value), 3.4e-5, index)
                self.assertLess(abs(between(x, group, wavelength)
                                    - (value - micrometres * slope)), 4.3e-4, index)


class ScanInputs(unittest.TestCase):
    def test_the_pmts_are_those_of_the_reference_detector(self):
        fields = fields_of("pmts.json", "PMT", "positions")
        rows = rows_of("pmts.csv")
        self.assertEqual([row["pmt"] for row in rows], [str(n) for n in range(8000)])
        self.assertEqual([position_of(row) for row in rows],
                         list(zip(fields["x"], fields["y"], fields["z"])))

    def test_the_source_has_fifty_positions_that_are_their_names(self):
        rows = rows_of("source-scan.csv")
        self.assertEqual(len(rows), 50)
        self.assertEqual(len({row["event"] for row in rows}), 50)
        for row in rows:
            named = dict(part.split("=") for part in row["event"].split())
            self.assertEqual(position_of(row),
                             (float(named.get("x", 0)), 0.0, float(named["z"])), row["event"])

    def test_the_source_is_clear_of_solids(self):
        inner = fields_of("vessel.json", "SOLID", "acrylic_vessel_inner")["r_sphere"]
        outer = fields_of("vessel.json", "SOLID", "acrylic_vessel_outer")["r_sphere"]
        pmts = math.hypot(*position_of(rows_of("pmts.csv")[0]))
        stops = [position_of(row) for row in rows_of("source-scan.csv")]
        on_axis = [stop for stop in stops if stop[0] == 0.0]
        tube = [stop for stop in stops if math.hypot(*stop) > inner]
        self.assertEqual((len(on_axis), len(tube)), (23, 3))
        for stop in stops:
            distance = math.hypot(*stop)
            if stop in tube:
                self.assertGreater(distance, outer + 300.0, stop)
                self.assertLess(distance, pmts - 300.0, stop)
            else:
                self.assertLessEqual(distance, inner - (300.0 if stop in on_axis else 500.0), stop)

    def test_both_ropes_can_carry_the_source_off_the_axis(self):
        inner = fields_of("vessel.json", "SOLID", "acrylic_vessel_inner")["r_sphere"]
        for x, _, z in map(position_of, rows_of("source-scan.csv")):
            if 0.0 < abs(x) < inner:
                # Below the line from the neck to the rope's end at the equator.
                self.assertLess(abs(x) + z, inner, (x, z))


if __name__ == "__main__":
    unittest.main(verbosity=2)
