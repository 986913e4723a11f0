#!/usr/bin/env python3
"""How `zarn-shadow check` treats names of path types."""

import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import (
    ANCHOR, BESIDE_THE_BOSS, HOLD_DOWN_ROPES, NECK_BOSS, PIPES, PLATE, SUPPORT_ROPES,
    UNDER_THE_BOSS)
from check_support import WRONG_TYPE, CheckTest, NEAR_ANCHOR, TYPES, path, table


class TypeNames(CheckTest):
    def test_a_type_name_is_not_trimmed(self):
        # A path of unknown type is tested at the origin, which is under the boss.
        names = ["water", " Water", "Water ", "WATER", "Water\t", "AV -> Water",
                 "LightPath Uninitialised", "0", "Water->AV", "\xc9tat"]
        found = self.verdicts(NECK_BOSS, [path(name, av1=BESIDE_THE_BOSS) for name in names])
        self.assertEqual(found, ["NeckBoss"] * len(names))
        beside = dict.fromkeys(("av1", "av2", "av3", "av4"), BESIDE_THE_BOSS)
        found = self.verdicts(NECK_BOSS, [path(name, **beside) for name in TYPES])
        self.assertEqual(found, [""] * len(TYPES))

    def test_quotes_around_a_known_name_are_not_part_of_it(self):
        text = table(*('"' + name + '"' + "," * 24 for name in TYPES))
        result = self.check_text(text, geometry=self.tables(*SUPPORT_ROPES))
        self.assertEqual(result.verdicts(), [""] * len(TYPES))
        self.assertNotIn("unknown", result.err)

    def test_unknown_names_reach_the_calculator_unchanged(self):
        names = ["first", "second one", "third, with a comma", 'a "quoted" one', "first",
                 " blanks ", "Water "]
        result = self.check(self.paths(*(path(name) for name in names)),
                            geometry=self.tables(*SUPPORT_ROPES))
        messages = [text.split(WRONG_TYPE)[1] for text in result.err.split("\n")
                    if WRONG_TYPE in text]
        self.assertEqual(messages, names)
        self.assertEqual(result.verdicts(), [""] * len(names))

    def test_a_name_with_a_line_break_reaches_the_calculator_unchanged(self):
        for name in ("two\nlines", "two\r\nlines", "ends\n", "\n"):
            result = self.check(self.paths(path(name)),
                                geometry=self.tables(*SUPPORT_ROPES))
            self.assertIn((WRONG_TYPE + name + "\n").encode(), result.bytes_err)

    def test_an_unknown_name_does_not_affect_known_names(self):
        rows = []
        for name in TYPES:
            rows += [path("odd"), path(name, av1=UNDER_THE_BOSS, av2=UNDER_THE_BOSS,
                                       av3=UNDER_THE_BOSS)]
        found = self.verdicts(NECK_BOSS, rows)
        self.assertEqual(found[1::2], ["" if name in ("Water", TYPES[-1]) else "NeckBoss"
                                       for name in TYPES])

    def test_the_number_of_unknown_names_is_reported_at_the_end(self):
        rows = [path("odd"), path("Water"), path("odd"), path(""), path("Light Path Uninitialised")]
        result = self.check(self.paths(*rows), geometry=self.tables(*NECK_BOSS))
        last = result.err.rstrip("\n").split("\n")[-1]
        self.assertRegex(last, r"unknown type name: 3\b")

    def test_nothing_is_reported_without_unknown_names(self):
        result = self.check(self.paths(*(path(name) for name in TYPES)))
        self.assertNotIn("unknown", result.err)

    def test_an_empty_type_is_a_name_like_any_other(self):
        result = self.check(self.paths(path("")), geometry=self.tables(*SUPPORT_ROPES))
        self.assertIn(WRONG_TYPE + "\n", result.err)
        self.assertRegex(result.err, r"unknown type name: 1\b")

    def test_an_uninitialised_path_gives_a_warning_and_is_not_shadowed(self):
        everything = HOLD_DOWN_ROPES + SUPPORT_ROPES + PLATE + ANCHOR + PIPES + NECK_BOSS
        result = self.check(self.paths(path("Light Path Uninitialised")),
                            geometry=self.tables(*everything))
        self.assertEqual(result.verdicts(), [""])
        messages = [text for text in result.err.split("\n") if "uninitialised" in text]
        self.assertEqual(
            messages,
            ["ShadowingCalculator::CheckAVHDRopeShadowing: LightPathCalculator object is "
             "uninitialised, call LightPathCalculator::CalcByPosition first before checking "
             "for shadowing!"]
            + [f"ShadowingCalculator::CheckFor{test}Shadowing: LightPath is uninitialised, "
               "call CalcByPosition first before checking for shadowing!"
               for test in ("SupportRope", "BellyPlate", "SupportRope", "AVHDRope", "AVHDRope")])

    def test_known_types_are_required_on_request(self):
        good = self.paths(*(path(name) for name in TYPES), name="good.csv")
        self.assertEqual(self.check(good, "--known-types").verdicts(), [""] * len(TYPES))
        for name, message in (("AV->Watr", '"AV->Watr" is not the name of a path type; '
                                           'did you mean AV->Water?'),
                              ("water", '"water" is not the name of a path type; '
                                        'did you mean Water?'),
                              ("", '"" is not the name of a path type\n'),
                              ("x" * 500_000, 'x..." is not the name of a path type\n')):
            for threads in (1, 7):
                with self.subTest(name=name[:20], threads=threads):
                    result = self.refuse(
                        table(path("Water"), NEAR_ANCHOR, path(name), path("odd")),
                        r"line 4 \(row 2\), column type", options=("--known-types", "--threads",
                                                                   threads))
                    self.assertIn(message, result.err)
        # An error of an earlier row is found first.
        self.refuse(table("short", path("odd")), "line 2 ", options=["--known-types"])

    def test_a_very_long_name_is_accepted(self):
        name = "x" * 500_000
        result = self.check(self.paths(path(name), NEAR_ANCHOR),
                            geometry=self.tables(*ANCHOR))
        self.assertEqual(result.verdicts(), ["", "NCDAnchor"])

    def test_a_name_may_contain_nul_bytes(self):
        result = self.check_text(table("Wat\0er" + "," * 24, NEAR_ANCHOR))
        self.assertEqual(result.verdicts(), ["", "NCDAnchor"])
        self.assertRegex(result.err, r"unknown type name: 1\b")


if __name__ == "__main__":
    unittest.main(verbosity=2)
