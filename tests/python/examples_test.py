#!/usr/bin/env python3
"""The Python examples run, print what the command counts, and draw their pictures."""

import csv
import importlib.util
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(os.environ["ZARN_SOURCE_DIR"])
EXAMPLES = SOURCE / "examples" / "python"
DATA = SOURCE / "data"
LIBRARIES = ("matplotlib", "pandas", "scipy")
MISSING = [name for name in LIBRARIES if importlib.util.find_spec(name) is None]


def counts(*arguments):
    """The numbers of light paths by name, as zarn-shadow scan prints them."""
    said = subprocess.run(
        [os.environ["ZARN_SHADOW"], "scan", *arguments, "--pmts", DATA / "pmts.csv",
         "--geometry", DATA / "reference-detector", "-o", "/dev/null"],
        capture_output=True, text=True, check=True).stderr
    return {name: int(number.replace(",", ""))
            for name, number in re.findall(r"^ *(\w+) +([\d,]+)(?: |$)", said, re.MULTILINE)}


SOURCE_SCAN = ("--events", DATA / "source-scan.csv")


@unittest.skipIf(MISSING, f"{', '.join(MISSING)} not installed: script/setup --test")
class Examples(unittest.TestCase):
    def run_example(self, name):
        """What an example prints, and its pictures by name."""
        import matplotlib.image

        with tempfile.TemporaryDirectory() as folder:
            done = subprocess.run(
                [sys.executable, "-W", "error::DeprecationWarning", "-W",
                 "ignore::UserWarning:ROOT", EXAMPLES / f"{name}.py", folder],
                cwd=SOURCE, capture_output=True, text=True)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            return done.stdout, {file.name: matplotlib.image.imread(file)
                                 for file in pathlib.Path(folder).glob("*.png")}

    def assert_shows(self, pictures, name, *colours):
        """One picture, in which these colours cover some pixels each."""
        self.assertEqual(list(pictures), [name])
        pixels = (255 * pictures[name][..., :3]).round().astype(int)
        for colour in colours:
            wanted = [int(colour[i:i + 2], 16) for i in (1, 3, 5)]
            self.assertGreater((pixels == wanted).all(axis=-1).sum(), 200, colour)

    def assert_prints_counts(self, printed, wanted):
        for name, number in wanted.items():
            if name not in ("pairs", "seconds"):
                self.assertRegex(printed, rf"(?m)^  {name} +{number:,}(  |$)")

    def test_first_steps(self):
        printed, pictures = self.run_example("first_steps")
        wanted = counts("--at=0,0,3000")
        self.assertEqual(wanted["shadowed"], 3154)
        self.assert_prints_counts(printed, wanted)
        self.assertIn("24,000 paths, 31.4% shadowed\n", printed)
        (pmt,) = re.findall(r"^PMT (\d+):$", printed, re.MULTILINE)
        explained = subprocess.run(
            [os.environ["ZARN_SHADOW"], "explain", "--events", "-", "--event", "0",
             "--pmts", DATA / "pmts.csv", "--pmt", pmt, "--geometry",
             DATA / "reference-detector"], input="event,x,y,z\n0,0,0,3000\n",
            capture_output=True, text=True, check=True).stdout
        self.assertIn("verdict: shadowed by NCDAnchor", explained)
        for line in explained.splitlines():
            self.assertIn(line, printed.splitlines())
        for tolerance in (0, 50, 150, 300):
            at = counts("--at=0,0,3000", "--tolerance", str(tolerance))
            self.assertIn(f"{tolerance:3} mm: {at['shadowed'] / at['paths']:.1%} shadowed\n",
                          printed)
        (limit,) = re.findall(r"80 % of the paths are clear up to ([\d.]+) mm", printed)
        shares = [at["shadowed"] / at["paths"] for at in (
            counts("--at=0,0,3000", "--tolerance", str(float(limit) + step)) for step in (-1, 1))]
        self.assertLess(shares[0], 0.2)
        self.assertGreater(shares[1], 0.2)
        self.assert_shows(pictures, "first-steps.png", "#08406f", "#c1831f", "#525b00",
                          "#9069e6", "#258c80", "#4a101c", "#c9ced6")

    def test_source_scan(self):
        printed, pictures = self.run_example("source_scan")
        self.assert_prints_counts(printed, counts(*SOURCE_SCAN))
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "pmts.csv"
            counts(*SOURCE_SCAN, "--per-pmt", file)
            with file.open() as lines:
                rows = {row["pmt"]: row for row in csv.DictReader(lines)}
        table = printed[printed.index("\npmt "):]
        shown = re.findall(r"^(\d+) +(\d+) +(\d+) +[\d.]+$", table, re.MULTILINE)
        self.assertEqual(len(shown), 5)
        for pmt, paths, shadowed in shown:
            self.assertEqual((paths, shadowed), (rows[pmt]["paths"], rows[pmt]["shadowed"]))
        none = sum(row["shadowed"] == "0" for row in rows.values())
        self.assertIn(f"\n{none:,} from none\n", printed)
        self.assert_shows(pictures, "source-scan.png", "#dfe5ec", "#aab9c9", "#7489a3",
                          "#425a7a", "#142c4d")

    def test_compare_detectors(self):
        printed, pictures = self.run_example("compare_detectors")
        self.assertIn("same tables: False\n", printed)
        wanted = counts(*SOURCE_SCAN)
        designed = re.search(r"^designed: ([\d,]+) of ([\d,]+) .* ([\d,]+) by hold-down ropes$",
                             printed, re.MULTILINE)
        self.assertEqual([int(number.replace(",", "")) for number in designed.groups()],
                         [wanted[name] for name in ("shadowed", "paths", "AVHDRope")])
        more, less = map(int, re.search(r"^(\d+) PMTs see .* more, (\d+) less$", printed,
                                        re.MULTILINE).groups())
        self.assertGreater(min(more, less), 500)
        self.assert_shows(pictures, "compare-detectors.png", "#1b2330", "#0b5cc0")

    def test_fit_share(self):
        printed, pictures = self.run_example("fit_share")
        fitted = {name: (float(value), float(error)) for name, value, error in re.findall(
            r"^(\w+) += +(\S+) \+- (\S+) %", printed, re.MULTILINE)}
        self.assertEqual(list(fitted), ["centre", "slope", "curvature", "cubic"])
        wanted = counts("--at=0,0,0")
        self.assertAlmostEqual(fitted["centre"][0], 100 * wanted["shadowed"] / wanted["paths"],
                               delta=1)
        for name in ("slope", "curvature", "cubic"):
            value, error = fitted[name]
            self.assertGreater(value, 5 * error, name)
        # 15 degrees of freedom: outside in 1 of 1,000 draws on either side.
        (chi_square,) = re.findall(r"^chi-square ([\d.]+) for 15 degrees", printed, re.MULTILINE)
        self.assertGreater(float(chi_square), 3.5)
        self.assertLess(float(chi_square), 37.7)
        self.assert_shows(pictures, "fit-share.png", "#0b5cc0", "#1b2330", "#c9ced6")

    @unittest.skipIf("ZARN_WITHOUT_FRAMES" in os.environ, "in the release build only")
    def test_distributed_frame(self):
        for name in ("ROOT", "distributed"):
            if importlib.util.find_spec(name) is None:
                self.skipTest(f"{name} not installed: script/setup --test")
        printed, _ = self.run_example("distributed_frame")
        lines = (DATA / "source-scan.csv").read_text().splitlines(keepends=True)
        with tempfile.TemporaryDirectory() as folder:
            events = pathlib.Path(folder) / "events.csv"
            events.write_text("".join(lines[:9]))
            wanted = counts("--events", events)
        found = {name: int(number.replace(",", ""))
                 for name, number in re.findall(r"(\w+) +([\d,]+)$", printed, re.MULTILINE)}
        self.assertEqual(found.pop("clear"), wanted["paths"] - wanted["shadowed"])
        self.assertEqual(len(found), 6)
        self.assertEqual(found, {name: wanted[name] for name in found})

    def test_the_drawing_in_the_documents_is_current(self):
        import matplotlib.image

        name = "python-source-scan.png"
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run([sys.executable, SOURCE / "docs" / "draw-python.py", folder],
                           check=True)
            drawn = matplotlib.image.imread(pathlib.Path(folder) / name)
        shown = matplotlib.image.imread(SOURCE / "docs" / name)
        self.assertEqual(shown.shape, drawn.shape)
        # Some pixels may: fonts and edges depend on the version of matplotlib.
        differs = abs(shown - drawn).max(axis=-1) > 0.2
        self.assertLess(differs.mean(), 0.02, "run docs/draw-python.py")

    def test_the_types_are_right(self):
        if importlib.util.find_spec("mypy") is None:
            self.skipTest("mypy not installed: script/setup --test")
        with tempfile.TemporaryDirectory() as folder:
            settings = pathlib.Path(folder) / "mypy.ini"
            settings.write_text("[mypy]\nstrict = True\nuntyped_calls_exclude = distributed\n"
                                "[mypy-pandas.*,scipy.*,ROOT.*,distributed.*]\nignore_missing_imports = True\n")
            done = subprocess.run(
                [sys.executable, "-m", "mypy", "--config-file", settings, "--cache-dir", folder,
                 EXAMPLES], capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def test_every_example_has_a_test(self):
        for name in {file.stem for file in EXAMPLES.glob("*.py")} - {"style"}:
            self.assertTrue(hasattr(self, f"test_{name}"), name)


if __name__ == "__main__":
    unittest.main(verbosity=2)
