#!/usr/bin/env python3
"""The file that `zarn-shadow display` writes, its help, and its messages on wrong use."""

import os
import signal
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import DATA, PROGRAM
from display_support import DisplayTest
from scan_support import CENTRE, TOP, random_events, random_pmts

OPTIONS = ("--at", "--events", "--pmts", "--input-columns", "--geometry", "--run", "--tolerance",
           "--threads", "--wavelength", "--reflections", "--title", "-o", "--output")


class Files(DisplayTest):
    def setUp(self):
        super().setUp()
        self.some = "--at=0,0,3000", "--pmts", self.pmts(random_pmts(100, 820))

    def test_without_a_name_the_page_is_display_html(self):
        result = self.display(*self.some)
        self.assertEqual(result.out, b"")
        page = self.read("DISPLAY.html")
        self.assertTrue(page.startswith(b"<!doctype html>"), page[:50])
        for options in (("-o", "-"), ("-o", "/dev/stdout")):
            self.assertEqual(self.display(*self.some, *options).out, page)

    def test_the_counts_are_those_of_scan(self):
        geometry = self.reference_tables()
        self.events(random_events(6, 821))
        arguments = "--events", "events.csv", "--pmts", "pmts.csv", "--reflections"
        wanted = self.run_command([PROGRAM, "scan", "--geometry", geometry, *arguments]).counts()
        found = self.display(*arguments, geometry=geometry).counts()
        for name in wanted.keys() - {"seconds", "paths/second"}:
            self.assertEqual(found[name], wanted[name], name)

    def test_a_full_disk_leaves_no_partial_file(self):
        old = self.write("old.html", "as it was")
        for size in (1, 1000):
            for name in (old, "new.html"):
                result = self.display(*self.some, "-o", name, status=1,
                                      preexec_fn=self.limited(size))
                self.assertRegex(result.err, "html: .*[Ff]ile too large")
            self.assertEqual(old.read_bytes(), b"as it was")
            self.assertFalse((self.folder / "new.html").exists())
            self.assert_no_temporaries()
        result = self.display(*self.some, "-o", "/dev/full", status=1)
        self.assertRegex(result.err, "/dev/full: .*(?i:no space)")

    def test_an_interrupt_ends_the_work_and_leaves_old_files_unchanged(self):
        old = self.write("old.html", "as it was")
        # For many seconds of work.
        self.write("events.csv", "event,x,y,z\n" + 100_000 * "e,0,0,3000\n")
        geometry = self.reference_tables()
        for number in (signal.SIGINT, signal.SIGTERM):
            process = self.start([PROGRAM, "display", "--geometry", geometry, "--events",
                                  "events.csv", "--pmts", "pmts.csv", "-o", old])
            self.wait_for(self.temporaries, "a temporary file")
            process.send_signal(number)
            self.assertIn("interrupted", self.assert_ends(process, 128 + number, timeout=30))
            self.assertEqual(old.read_bytes(), b"as it was")
            self.assert_no_temporaries()

    def test_a_closed_pipe_ends_silently(self):
        reader, writer = os.pipe()
        os.close(reader)
        self.addCleanup(os.close, writer)
        result = self.display(*self.some, "-o", "-", status=128 + signal.SIGPIPE, stdout=writer)
        self.assertNotIn("zarn-shadow:", result.err)

    def test_one_file_for_two_purposes_is_refused(self):
        events = self.events([CENTRE])
        for options, wanted in (
                ((*self.some, "-o", "pmts.csv"), "both read and written"),
                (("--events", events, "--pmts", "pmts.csv", "-o", events),
                 "both read and written"),
                ((*self.some, "-o", "tables.json"), "both read and written"),
                (("--events", "-", "--pmts", "-"), "standard input is used twice"),
                (("--events", events, "--pmts", events), "used for two inputs")):
            self.assertIn(wanted, self.refused(*options))


class Usage(DisplayTest):
    def setUp(self):
        super().setUp()
        self.some = "--at=0,0,0", "--pmts", self.pmts([TOP])

    def refuse(self, *options):
        """The message on wrong use, which names the help."""
        said = self.refused(*options)
        text, _, hint = said.rstrip("\n").rpartition("\n")
        self.assertEqual(hint, "See zarn-shadow display --help.")
        return text.removeprefix("zarn-shadow: ")

    def test_the_help_shows_every_option_and_fits_a_terminal(self):
        text = self.run_command([PROGRAM, "display", "--help"]).out.decode()
        for option in OPTIONS:
            self.assertRegex(text, rf"(?m)(^ *|,){option}\b")
        for line in text.split("\n"):
            self.assertLessEqual(len(line), 100, line)
        for words in (r"\bmm\b", r"\bnm\b", r"\b130\b", "40,000,000", "20 MB"):
            self.assertRegex(text, words)
        self.assertRegex(self.run_command([PROGRAM, "--help"]).out.decode(), r"\n *display\b")

    def test_the_example_of_the_help_works(self):
        text = self.run_command([PROGRAM, "display", "--help"]).out.decode()
        words = text.partition("Example:")[2].replace("\\\n", " ").split()
        words = [DATA / word[len("data/"):] if word.startswith("data/") else word
                 for word in words]
        self.run_command([PROGRAM, *words[1:]])
        size = (self.folder / words[words.index("-o") + 1]).stat().st_size
        self.assertLess(size, 6_000_000)

    def test_what_is_missing_or_excludes_each_other_is_told(self):
        for options, wanted in (
                (("--pmts", "pmts.csv"), "display needs either --events or --at"),
                ((*self.some, "--events", "x.csv"), "display needs either --events or --at"),
                (("--at=0,0,0",), "display needs --pmts"),
                ((*self.some, "--wavelength", "0"), '--wavelength: "0" is not greater than 0'),
                ((*self.some, "--tolerance", "inf"), '--tolerance: "inf" is not finite'),
                ((*self.some, "--reflections=maybe"),
                 '--reflections takes no value, but was given "maybe"'),
                ((*self.some, "--titel", "x"),
                 'display has no option "--titel"; did you mean --title?')):
            self.assertEqual(self.refuse(*options), wanted)

    def test_files_without_rows_are_refused(self):
        none = self.write("none.csv", "event,pmt,x,y,z\n")
        self.assertEqual(self.refused("--events", none, "--pmts", "pmts.csv").splitlines()[-1],
                         f"zarn-shadow: {none}: there are no events")
        self.assertEqual(self.refused("--at=0,0,0", "--pmts", none).splitlines()[-1],
                         f"zarn-shadow: {none}: there are no PMTs")

    def test_columns_can_have_other_names(self):
        wanted = self.page(*self.some)
        self.write("ids.csv", "id,a,y,z\np0,0.0,0.0,8300.0\n")
        self.assertEqual(self.page("--at=0,0,0", "--pmts", "ids.csv", "--input-columns",
                                   "pmt=id,pmt_x=a").html, wanted.html)


if __name__ == "__main__":
    unittest.main(verbosity=2)
