#!/usr/bin/env python3
"""The help of `zarn-shadow tables` and its messages on wrong use."""

import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import CommandTest, DATA, PROGRAM, REFERENCE

COMMANDS = ("check", "diff", "export", "history", "import", "list", "show")


class Usage(CommandTest):
    def refuse(self, *arguments, hint):
        """The message on wrong use, which writes no output."""
        result = self.run_command([PROGRAM, *arguments], status=2)
        self.assertEqual(result.out, b"")
        text, _, last = result.err.rstrip("\n").rpartition("\n")
        self.assertEqual(last, f"See zarn-shadow {hint}--help.")
        self.assertNotRegex(text, r"(?i)required|expected|received|convert|RuntimeError")
        return text.removeprefix("zarn-shadow: ")

    def test_the_help_fits_a_terminal_and_shows_an_example(self):
        for command in ((), *((command,) for command in COMMANDS)):
            with self.subTest(command=command):
                result = self.run_command([PROGRAM, "tables", *command, "--help"])
                text = result.out.decode()
                for line in text.split("\n"):
                    self.assertLessEqual(len(line), 100, line)
                self.assertIn("Example", text)
                self.assertIn(" ".join(["zarn-shadow tables", *command]), text)
                self.assertEqual(result.err, "")

    def test_the_examples_of_the_help_work(self):
        (self.folder / "data").symlink_to(DATA)
        self.run_command([PROGRAM, "tables", "import", REFERENCE, "sqlite:detector.db",
                          "--reason", "test"])
        for command in COMMANDS:
            with self.subTest(command=command):
                text = self.run_command([PROGRAM, "tables", command, "--help"]).out.decode()
                example = text.partition("Example")[2].partition("\n")[2].replace("\\\n", " ")
                words = [word.strip("'") for word in example.replace("'First tables'",
                                                                     "First").split()]
                self.assertEqual(words[:3], ["zarn-shadow", "tables", command])
                if "--as-of" in words:  # a time before the test
                    words[words.index("--as-of") + 1] = "2100-01-01"
                self.run_command([PROGRAM, *words[1:]])

    def test_an_unknown_subcommand_is_named_with_the_nearest(self):
        self.assertEqual(self.refuse("tables", "improt", hint="tables "),
                         'unknown subcommand "improt" of tables; did you mean import?')
        self.assertRegex(self.refuse("tables", "frobnicate", hint="tables "),
                         "^unknown subcommand \"frobnicate\" of tables; use .*import.* or show$")
        self.assertRegex(self.refuse("tables", hint="tables "),
                         "^a subcommand is missing: .*import")
        self.assertEqual(self.refuse("table", "list", hint=""),
                         'unknown subcommand "table"; did you mean tables?')

    def test_what_is_missing_unknown_or_too_much_is_named(self):
        for arguments, wanted in (
                (["import"], "tables import needs SOURCE and DB"),
                (["diff", "a"], "tables diff needs B"),
                (["history"], "tables history needs DB"),
                (["list", "a", "b"], 'too many arguments for tables list: "b"'),
                (["show", "a", "--runs", "1"],
                 'tables show has no option "--runs"; did you mean --run?'),
                (["show", "a", "--run", "x"], '--run: "x" is not a whole number'),
                (["show", "a", "--run"], "--run needs a value"),
                (["diff", "a", "b", "--json=x"], '--json takes no value, but was given "x"'),
                (["history", "sqlite:a", "A/b", "--fingerprint", "0" * 64],
                 "ENTRY and --fingerprint exclude each other")):
            with self.subTest(arguments=arguments):
                self.assertEqual(self.refuse("tables", *arguments,
                                             hint=f"tables {arguments[0]} "), wanted)


if __name__ == "__main__":
    unittest.main(verbosity=2)
