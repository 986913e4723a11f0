#!/usr/bin/env python3
"""The help of `zarn-shadow map`, and its messages on wrong use."""

import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import DATA, PROGRAM
from map_support import MapTest, SMALL, at
from scan_support import CENTRE, PMT_RADIUS, TOP

OPTIONS = ("--at", "--events", "--event", "--pmts", "--radius", "--input-columns", "--geometry",
           "--run", "--tolerance", "--threads", "--wavelength", "--compare", "--compare-run",
           "--view", "--tolerances", "--no-panel", "--theme", "--title", "--size", "-o",
           "--output", "--data")


class Usage(MapTest):
    def setUp(self):
        super().setUp()
        self.some = at(CENTRE), "--pmts", self.pmts([TOP])

    def refuse(self, *options):
        """The message on wrong use, which names the help."""
        said = self.refused(*options)
        self.assertTrue(said.startswith("zarn-shadow: "), said)
        self.assertNotRegex(said, r"(?i)required|expected|received|convert|RuntimeError")
        text, _, hint = said.rstrip("\n").rpartition("\n")
        self.assertEqual(hint, "See zarn-shadow map --help.")
        return text[len("zarn-shadow: "):]

    def test_the_help_shows_every_option_and_fits_a_terminal(self):
        text = self.run_command([PROGRAM, "map", "--help"]).out.decode()
        for option in OPTIONS:
            self.assertRegex(text, rf"(?m)(^ *|,){option}\b")
        for line in text.split("\n"):
            self.assertLessEqual(len(line), 100, line)
        for words in (r"\bmm\b", r"\bnm\b", r"\b130\b", "no path", "20,000", "100,000",
                      "17 from 10 to 300 mm"):
            self.assertRegex(text, words)
        self.assertRegex(self.run_command([PROGRAM, "--help"]).out.decode(), r"\n *map\b")

    def test_the_example_of_the_help_works(self):
        text = self.run_command([PROGRAM, "map", "--help"]).out.decode()
        words = text.partition("Example:")[2].replace("\\\n", " ").split()
        words = [DATA / word[len("data/"):] if word.startswith("data/") else word
                 for word in words]
        self.run_command([PROGRAM, *words[1:]])
        self.assertTrue((self.folder / words[words.index("-o") + 1]).exists())

    def test_a_position_can_have_blanks(self):
        wanted = self.map("--at", "0,0,3000", "--pmts", self.pmts([TOP])).out
        self.assertEqual(self.map("--at", "0, 0, 3000", "--pmts", "pmts.csv").out, wanted)

    def test_what_is_missing_or_excludes_each_other_is_told(self):
        for options, wanted in (
                ((), "map needs either --events or --at"),
                ((*self.some, "--events", "x.csv"), "map needs either --events or --at"),
                ((*self.some, "--event", "x"), "--event needs --events"),
                ((at(CENTRE),), "map needs either --pmts, or --radius for every direction"),
                ((*self.some, "--radius", PMT_RADIUS),
                 "map needs either --pmts, or --radius for every direction"),
                ((*self.some, "--tolerances", "0,150", "--no-panel"),
                 "--tolerances and --no-panel exclude each other"),
                ((*self.some, "--tolerances", "150"),
                 "--tolerances: the panel needs two or more"),
                ((*self.some, "--tolerances", "1e308,-1e308"),
                 "--tolerances: the panel cannot show tolerances that are so far apart"),
                # Steps are less than the spacing of doubles.
                ((*self.some, "--tolerances", "150:150.0000000000001:1e-14"),
                 "--tolerances: the panel needs tolerances that differ"),
                ((*self.some, "--compare-run", 1, "--no-panel"),
                 "--compare-run and --no-panel exclude each other: the table of changes takes "
                 "the place of the panel"),
                ((*self.some, "--compare", "x", "--tolerances", "1,2"),
                 "--compare and --tolerances exclude each other: the table of changes takes the "
                 "place of the panel")):
            self.assertEqual(self.refuse(*options), wanted)

    def test_bad_values_are_told(self):
        for options, wanted in (
                (("--view", "center"), '--view: "center" is not known; did you mean centre?'),
                (("--view", "top"), '--view: "top" is not known; use centre or event'),
                (("--theme", "drak"), '--theme: "drak" is not known; did you mean dark?'),
                (("--theme", ""), '--theme: "" is not known; use light or dark'),
                (("--size", "1200"), '--size: "1200" is not of the form WIDTHxHEIGHT'),
                (("--size", "1200x"), '--size: "" is not a whole number'),
                (("--size", "a x b"), '--size: "a " is not a whole number'),
                (("--size", "12.5x100"), '--size: "12.5" is not a whole number'),
                (("--size", "1x700"), '--size: "1x700" is out of range (100 to 8000 pixels in '
                                      "width and height)"),
                (("--size", "700x8001"), '--size: "700x8001" is out of range (100 to 8000 '
                                          "pixels in width and height)"),
                (("--run", "1.5"), '--run: "1.5" is not a whole number'),
                (("--compare-run", "x"), '--compare-run: "x" is not a whole number'),
                (("--tolerance", "nan"), '--tolerance: "nan" is not finite'),
                (("--tolerances", "1:2"), '--tolerances: "1:2" is not START:STOP:STEP'),
                (("--wavelength", "0"), '--wavelength: "0" is not greater than 0'),
                (("--threads", "0"), '--threads: "0" is out of range (1 to 1024)'),
                (("--no-panel=maybe",), '--no-panel takes no value, but was given "maybe"'),
                (("--title",), "--title needs a value"),
                (("--colour", "red"), 'map has no option "--colour"'),
                (("--tollerance", "3"),
                 'map has no option "--tollerance"; did you mean --tolerance?'),
                (("more",), 'too many arguments for map: "more"'),
                (("-o", "map.jpg"), '-o: the name "map.jpg" ends in none of .svg, .pdf and .png'),
                (("-o", ".svg"), '-o: the name ".svg" ends in none of .svg, .pdf and .png'),
                (("-o", ""), '-o: the name "" ends in none of .svg, .pdf and .png'),
                (("--data", "data.root"),
                 '--data: "data.root" would be CSV, not a ROOT file')):
            with self.subTest(options=options):
                self.assertEqual(self.refuse(*self.some, *options), wanted)
        for radius, wanted in (("0", "is not greater than 0"), ("inf", "is not finite"),
                               ("8m", "is not a number")):
            self.assertEqual(self.refuse(at(CENTRE), "--radius", radius),
                             f'--radius: "{radius}" {wanted}')
        self.assertEqual(self.refuse("--at", "0,0", "--radius", 8300),
                         '--at: "0,0" is not three numbers separated by commas')
        self.assertIn("--geometry", self.run_command([PROGRAM, "map", *self.some], status=2).err)

    def test_the_smallest_and_the_largest_size_are_drawn(self):
        for size in ("100x100", "100x3000", "3000x100"):
            self.assertIn(b"<svg", self.map(*self.some, "--size", size).out)
        self.assertIn(b"<svg", self.map(at(CENTRE), "--radius", PMT_RADIUS, *SMALL).out)


if __name__ == "__main__":
    unittest.main(verbosity=2)
