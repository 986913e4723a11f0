#!/usr/bin/env python3
"""The help of `zarn-shadow check` and `scan`, and their messages on wrong use."""

import os
import signal
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import ANCHOR, DATA, PROGRAM, anchor_reach
from check_support import NEAR_ANCHOR, path
from scan_support import CENTRE, OPTICS, TOP, rows_of
from both_support import BothTest, CheckDriver, ScanDriver


class Usage(BothTest):
    def refuse(self, *arguments):
        """The message on wrong use, which writes no output."""
        result = self.run_command([PROGRAM, *arguments], status=2)
        self.assertEqual(result.out, b"")
        self.assertTrue(result.err.startswith("zarn-shadow: "), result.err)
        # Words of the parser library, which are about its internals.
        self.assertNotRegex(result.err, r"(?i)required|expected|received|convert|RuntimeError")
        text, _, hint = result.err.rstrip("\n").rpartition("\n")
        self.assertRegex(hint, r"^See zarn-shadow (check |scan )?--help\.$")
        return text[len("zarn-shadow: "):]

    def refuse_options(self, *options):
        return self.refuse(*self.arguments(self.input(), *options)[1:])

    def test_the_help_fits_a_terminal(self):
        for arguments in (["--help"], [self.COMMAND, "--help"]):
            text = self.run_command([PROGRAM, *arguments]).out.decode()
            for help_line in text.split("\n"):
                self.assertLessEqual(len(help_line), 100, help_line)

    def test_the_help_shows_units_and_an_example(self):
        for arguments in (["--help"], ["-h"], [self.COMMAND, "--help"], [self.COMMAND, "-h"],
                          ["--help-all"]):
            with self.subTest(arguments=arguments):
                result = self.run_command([PROGRAM, *arguments])
                self.assertEqual(result.err, "")
                self.assertIn("Example", result.out.decode())
                self.assertIn(f"zarn-shadow {self.COMMAND} ", result.out.decode())
        text = self.run_command([PROGRAM, self.COMMAND, "--help"]).out.decode()
        for option in self.OPTIONS:
            self.assertRegex(text, rf"(?m)(^ *|,){option}\b")
        for word in (r"\bmm\b", r"\b130\b", *self.WORDS):
            self.assertRegex(text, word)

    def test_the_example_of_the_help_works(self):
        text = self.run_command([PROGRAM, self.COMMAND, "--help"]).out.decode()
        words = text.partition("Example:")[2].replace("\\\n", " ").split()
        self.assertEqual(words[0], "zarn-shadow")
        out = words[words.index("-o") + 1]
        for i, word in enumerate(words):
            if word.startswith("data/"):
                words[i] = DATA / word[len("data/"):]
                if words[i].suffix == ".csv":  # the first rows are enough
                    text = "".join(words[i].read_text().splitlines(keepends=True)[:20])
                    words[i] = self.write(words[i].name, text)
        self.run_command([PROGRAM, *words[1:]])
        self.assertTrue((self.folder / out).exists())

    def test_help_that_cannot_be_written_gives_status_1(self):
        for arguments in (["--help"], [self.COMMAND, "--help"], ["--version"]):
            with self.subTest(arguments=arguments), open("/dev/full", "wb") as full:
                self.run_command([PROGRAM, *arguments], status=1, stdout=full)

    def test_help_to_a_closed_pipe_ends_silently(self):
        reader, writer = os.pipe()
        os.close(reader)
        self.addCleanup(os.close, writer)
        result = self.run_command([PROGRAM, self.COMMAND, "--help"],
                                  status=128 + signal.SIGPIPE, stdout=writer)
        self.assertEqual(result.err, "")

    def test_bad_usage_gives_status_2_and_names_the_help(self):
        good = [str(a) for a in self.arguments(self.input())[1:]]
        self.run_command([PROGRAM, *good])
        at = good.index("--geometry")
        for arguments in ([], [self.COMMAND], good[:at] + good[at + 2:], [*good, "more.csv"],
                          [*good, "-o"], [*good, "--run"], [*good, "--threads"],
                          [*good, "--tolerance"], [*good, f"{self.FLAG}=maybe"],
                          [*good, "--geometry", good[at + 1]], [*good, "-o", "a", "-o", "b"]):
            with self.subTest(arguments=arguments):
                self.assertNotEqual(self.refuse(*arguments), "")

    def test_an_unknown_subcommand_is_named_with_the_nearest(self):
        swapped = self.COMMAND[:-2] + self.COMMAND[:-3:-1]
        for name in (self.COMMAND[:-1], self.COMMAND + "s", swapped):
            self.assertEqual(self.refuse(name, "x.csv"),
                             f'unknown subcommand "{name}"; did you mean {self.COMMAND}?')
        self.assertEqual(self.refuse("frobnicate"),
                         'unknown subcommand "frobnicate"; use check, display, explain, map, '
                         'scan or tables')
        self.assertEqual(self.refuse(), "a subcommand is missing: check, display, explain, "
                                        "map, scan or tables")

    def test_an_unknown_option_is_named_with_the_nearest(self):
        for option, nearest in (("--geometri", "--geometry"), ("--tolerence=3", "--tolerance"),
                                ("--outptu", "--output"), ("--thread", "--threads"),
                                (self.FLAG + "s", self.FLAG)):
            self.assertEqual(self.refuse_options(option),
                             f'{self.COMMAND} has no option "{option.partition("=")[0]}"; '
                             f"did you mean {nearest}?")
        self.assertEqual(self.refuse_options("--frobnicate"),
                         f'{self.COMMAND} has no option "--frobnicate"')
        self.assertEqual(self.refuse("--versoin"),
                         'zarn-shadow has no option "--versoin"; did you mean --version?')
        self.assertEqual(self.refuse_options("--\x1b[2J"),
                         f'{self.COMMAND} has no option "--\\x1b[2J"')

    def test_a_misspelt_option_is_reported_rather_than_the_missing_one(self):
        good = [str(a) for a in self.arguments(self.input())[1:]]
        good[good.index("--geometry")] = "--geometri"
        self.assertEqual(self.refuse(*good), f'{self.COMMAND} has no option "--geometri"; '
                                             "did you mean --geometry?")

    def test_missing_arguments_are_named(self):
        good = [str(a) for a in self.arguments(self.input())[1:]]
        at = good.index("--geometry")
        self.assertEqual(self.refuse(*good[:at], *good[at + 2:]),
                         f"{self.COMMAND} needs --geometry")
        self.assertRegex(self.refuse(self.COMMAND), rf"^{self.COMMAND} needs .* and .*$")

    def test_too_many_or_too_few_values_are_reported(self):
        self.assertEqual(self.refuse_options("--run", 1, "--run", 2),
                         "--run is given more than once")
        self.assertEqual(self.refuse_options("--run"), "--run needs a value")
        self.assertEqual(self.refuse_options("-o"), "-o needs a value")
        self.assertEqual(self.refuse_options(self.FLAG + "=maybe"),
                         f'{self.FLAG} takes no value, but was given "maybe"')
        self.assertEqual(self.refuse_options("more.csv"),
                         f'too many arguments for {self.COMMAND}: "more.csv"')

    def test_options_out_of_their_range_are_bad_usage(self):
        not_finite = ("", " ", "abc", "nan", "inf", "-inf", "1e400", "0x10", "1_0", "1_000", "1,5",
                      "1 ", " 1", "15mm", "+-1", "1e")
        not_whole = ("", " ", "abc", "1.5", "1e1", "1e3", "1 ", " 1", "2 ", "99999999999", "0x10",
                     "0x2", "1,0", "1,000", "1_000", "nan")
        ranges = {"--tolerance": not_finite, "--run": (*not_whole, "2147483648"),
                  "--threads": (*not_whole, "0", "-1", "1025", "4294967297"),
                  "--wavelength": (*not_finite, "4nm", "0", "-0", "-400", "1e-400")}
        rows, geometry = self.input(), self.tables(*OPTICS, *ANCHOR)
        for option in ("--tolerance", "--run", "--threads", *self.MORE_NUMBERS):
            for text in ranges[option]:
                with self.subTest(option=option, text=text):
                    result = self.run_on(rows, option, text, "-o", "out.csv", status=2,
                                         geometry=geometry)
                    self.assertIn(option + ":", result.err)
                    self.assertFalse((self.folder / "out.csv").exists())

    def test_version_prints_a_version(self):
        result = self.run_command([PROGRAM, "--version"])
        self.assertRegex(result.out.decode(), r"^zarn-shadow \d+\.\d+\.\d+\n$")

    def test_runs_without_any_environment(self):
        self.assertEqual(self.run_on(self.input(), env={}).out, self.wanted())


class CheckUsage(Usage, CheckDriver):
    FLAG = "--debug"
    OPTIONS = ("--geometry", "-o", "--run", "--tolerance", "--threads", "--debug")
    WORDS = ()
    MORE_NUMBERS = ()

    def test_options_can_be_anywhere(self):
        paths, geometry = str(self.paths(NEAR_ANCHOR)), str(self.tables(*ANCHOR))
        for arguments in (["--geometry", geometry, paths], [f"--geometry={geometry}", paths],
                          ["--run", "5", "--geometry", geometry, "--tolerance=0", paths],
                          ["--geometry", geometry, "--", paths]):
            with self.subTest(arguments=arguments):
                result = self.run_command([PROGRAM, "check", *arguments])
                self.assertEqual(result.verdicts(), ["NCDAnchor"])

    def test_a_file_can_have_any_name(self):
        geometry = self.tables(*ANCHOR)
        for name in ("check", "-paths.csv", "--help", "a b.csv", "\u00e9.csv"):
            with self.subTest(name=name):
                self.paths(NEAR_ANCHOR, name=name)
                result = self.run_command([PROGRAM, "check", "--geometry", geometry, "--", name])
                self.assertEqual(result.verdicts(), ["NCDAnchor"])

    def test_a_run_number_with_a_leading_0_is_not_octal(self):
        geometry = self.tables(*ANCHOR, anchor_reach(500.0, runs=[10, 10]))
        paths = self.paths(path("AV->Water", av1=(300.0, 0.0, -5800.0)))
        for run, wanted in (("10", "NCDAnchor"), ("8", ""), ("-10", ""), ("2147483647", "")):
            self.assertEqual(self.check(paths, "--run", run, geometry=geometry).verdicts(),
                             [wanted])
        result = self.check(paths, "--run", "010", geometry=geometry, status=(0, 2))
        if result.status == 0:
            self.assertEqual(result.verdicts(), ["NCDAnchor"])

    def test_bad_geometry_is_reported_before_input_is_read(self):
        process = self.start(self.command("-", "nowhere.json"))
        err = self.assert_ends(process, 2, timeout=20)
        self.assertIn("nowhere.json", err)


class ScanUsage(Usage, ScanDriver):
    FLAG = "--reflections"
    OPTIONS = ("--geometry", "--events", "--at", "--pmts", "-o", "--output", "--paths",
               "--per-pmt", "--per-event", "--run", "--tolerance", "--wavelength", "--threads",
               "--reflections")
    WORDS = (r"\bnm\b", "no path", "OPTICS", r"\.root")
    MORE_NUMBERS = ("--wavelength",)

    def test_scan_is_in_the_help_of_the_command(self):
        self.assertRegex(self.run_command([PROGRAM, "--help"]).out.decode(), r"\n *scan\b")

    def test_bad_usage_of_scan_options_names_the_help(self):
        good = ["--geometry", self.tables(*OPTICS), "--events", self.events([CENTRE]), "--pmts",
                self.pmts([TOP])]
        for arguments in ([*good, "--paths"], [*good, "--wavelength"], [*good, "--at"],
                          [*good, "--pmts", good[5]], good[:4], good[:2] + good[4:]):
            with self.subTest(arguments=arguments):
                self.assertNotEqual(self.refuse("scan", *arguments), "")

    def test_an_empty_name_is_refused(self):
        for option in ("-o", "--paths", "--per-pmt", "--per-event"):
            result = self.scan([CENTRE], [TOP], option, "", status=(1, 2))
            self.assertEqual(result.out, b"")

    def test_files_can_have_unusual_names(self):
        for name in ("-events.csv", "--help", "a b.csv", "\u00e9.csv", "%s.csv"):
            with self.subTest(name=name):
                self.events([CENTRE], name)
                result = self.run_command([PROGRAM, "scan", "--geometry", self.tables(*OPTICS),
                                           f"--events={name}", "--pmts", self.pmts([TOP])])
                self.assertEqual(len(rows_of(result.out)), 1)


if __name__ == "__main__":
    unittest.main(verbosity=2)
