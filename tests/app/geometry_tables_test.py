#!/usr/bin/env python3
"""The geometry tables that `zarn-shadow` reads."""

import json
import os
import re
import sys
import threading
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import ANCHOR, TIMEOUT, VESSEL, anchor_reach, entry
from check_support import CheckTest, NEAR_ANCHOR, path


class Geometry(CheckTest):
    # An anchor of 500 mm reaches this point, one of 60 mm does not.
    MIDWAY = path("AV->Water", av1=(300.0, 0.0, -5800.0))

    def reach(self, *entries, run=None):
        """Whether the anchor reaches MIDWAY in a run."""
        options = [] if run is None else ["--run", run]
        return self.verdicts([*ANCHOR, *entries], [self.MIDWAY], *options) == ["NCDAnchor"]

    def refuse_tables(self, text, line_number, json_path, *wanted):
        file = self.write("tables.json", text)
        result = self.check(self.paths(NEAR_ANCHOR), "-o", "out.csv", geometry=file, status=2)
        self.assertFalse((self.folder / "out.csv").exists())
        self.assertRegex(result.err, rf"tables\.json\D{{1,8}}{line_number}\b")
        self.assertIn(json_path, result.err)
        for part in wanted:
            self.assertRegex(result.err, part)
        return result

    def test_a_range_of_runs_includes_both_ends(self):
        for run, wanted in ((999, False), (1000, True), (1500, True), (2000, True),
                            (2001, False)):
            self.assertEqual(self.reach(anchor_reach(500.0, runs=[1000, 2000]), run=run),
                             wanted, run)

    def test_null_leaves_a_range_open(self):
        for runs, run, wanted in (([1000, None], 999, False), ([1000, None], 1000, True),
                                  ([1000, None], 2147483647, True), ([None, 1000], 1000, True),
                                  ([None, 1000], 1001, False), ([None, 1000], 0, True),
                                  ([None, None], 7, True)):
            self.assertEqual(self.reach(anchor_reach(500.0, runs=runs), run=run), wanted,
                             (runs, run))

    def test_an_entry_without_runs_is_valid_for_all_and_the_default_run_is_0(self):
        self.assertTrue(self.reach(anchor_reach(500.0), run=123))
        self.assertTrue(self.reach(anchor_reach(500.0, runs=[0, 0])))
        self.assertFalse(self.reach(anchor_reach(500.0, runs=[1, None])))

    def test_the_highest_pass_valid_for_the_run_wins(self):
        low, high = anchor_reach(60.0, **{"pass": 1}), anchor_reach(500.0, **{"pass": 2})
        self.assertTrue(self.reach(low, high))
        self.assertTrue(self.reach(high, low))
        self.assertFalse(self.reach(anchor_reach(500.0, **{"pass": 2}, runs=[1, None]), low))
        self.assertTrue(self.reach(anchor_reach(500.0, **{"pass": 0})))
        self.assertFalse(self.reach(high, anchor_reach(60.0, **{"pass": 2147483647})))

    def test_among_equal_passes_the_one_loaded_last_wins(self):
        self.assertTrue(self.reach(anchor_reach(60.0), anchor_reach(500.0)))
        self.assertFalse(self.reach(anchor_reach(500.0), anchor_reach(60.0)))
        one, two = {"pass": 3}, {"pass": 3, "runs": [0, 5]}
        self.assertTrue(self.reach(anchor_reach(60.0, **one), anchor_reach(500.0, **two)))

    def test_a_directory_is_read_in_the_order_of_its_file_names(self):
        folder = self.folder / "tables"
        self.write("tables/a.json", json.dumps([*VESSEL, *ANCHOR]))
        self.write("tables/c.json", json.dumps([anchor_reach(500.0)]))
        self.write("tables/b.json", json.dumps([anchor_reach(60.0)]))
        self.write("tables/z.txt", "no table")
        self.write("tables/README.md", "no table")
        self.write("tables/more/z.json", "no table")
        paths = self.paths(self.MIDWAY)
        self.assertEqual(self.check(paths, geometry=folder).verdicts(), ["NCDAnchor"])
        self.write("tables/d.json", json.dumps([anchor_reach(60.0)]))
        self.assertEqual(self.check(paths, geometry=folder).verdicts(), [""])
        self.assertEqual(self.check(paths, geometry=str(folder) + "/").verdicts(), [""])

    def test_one_bad_file_of_a_directory_is_named(self):
        self.write("tables/a.json", json.dumps([*VESSEL, *ANCHOR]))
        self.write("tables/b.json", "[\n1]")
        result = self.check(self.paths(NEAR_ANCHOR), geometry=self.folder / "tables", status=2)
        self.assertRegex(result.err, r"b\.json\D{1,8}2\b")
        self.assertIn("$[0]", result.err)
        self.assertNotIn("a.json", result.err)

    def test_a_directory_without_tables_or_a_missing_path_is_bad_input(self):
        (self.folder / "empty").mkdir()
        for geometry in ("empty", "nowhere", "nowhere/tables.json", ""):
            with self.subTest(geometry=geometry):
                result = self.check(self.paths(NEAR_ANCHOR), "-o", "out.csv",
                                    geometry=geometry, status=2)
                self.assertIn(geometry, result.err)
                self.assertFalse((self.folder / "out.csv").exists())

    def test_geometry_without_the_vessel_radii_is_bad_input(self):
        for entries in ([], VESSEL[:1], VESSEL[1:], ANCHOR,
                        [VESSEL[0], entry("SOLID", "acrylic_vessel_outer", {"r_sphere": 5860})],
                        [VESSEL[0], entry("SOLID", "acrylic_vessel_outer", {"r_neck": 700})],
                        [VESSEL[1], entry("SOLID", "acrylic_vessel_inner", {"r_sphere": "big"})],
                        [VESSEL[1], entry("SOLID", "acrylic_vessel_inner", {"r_sphere": [1]})],
                        [VESSEL[1], {**VESSEL[0], "runs": [1, None]}]):
            with self.subTest(entries=entries):
                file = self.write("tables.json", json.dumps(entries))
                result = self.check(self.paths(NEAR_ANCHOR), "-o", "out.csv", geometry=file,
                                    status=2)
                self.assertRegex(result.err, r"tables\.json.*acrylic_vessel_(inner|outer)")
                self.assertFalse((self.folder / "out.csv").exists())

    def test_tables_may_come_through_a_pipe(self):
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        text = json.dumps([*VESSEL, *ANCHOR])
        thread = threading.Thread(target=lambda: pipe.write_text(text))
        thread.start()
        self.assertEqual(self.check(self.paths(NEAR_ANCHOR), geometry=pipe).verdicts(),
                         ["NCDAnchor"])
        thread.join(TIMEOUT)

    def test_a_byte_order_mark_and_crlf_are_accepted_in_tables(self):
        text = json.dumps([*VESSEL, *ANCHOR], indent=1).replace("\n", "\r\n")
        file = self.write("tables.json", "\ufeff" + text)
        self.assertEqual(self.check(self.paths(NEAR_ANCHOR), geometry=file).verdicts(),
                         ["NCDAnchor"])

    def test_unused_tables_and_fields_are_ignored(self):
        more = [entry("OTHER", "thing", {"a": 1, "b": [], "c": "text", "d": -0.0, "e": [1, 2.5]}),
                entry("", "", {"": 1})]
        self.assertEqual(self.verdicts([*ANCHOR, *more], [NEAR_ANCHOR]), ["NCDAnchor"])

    def test_text_that_is_not_json_is_refused_with_its_line(self):
        good = json.dumps(VESSEL)[1:-1]
        for text, number in (("", 1), ("\n\n", None), ("[", 1), ("[\n\n]x", 3),
                             ("[\n" + good + ",\n]", 3), ("[] []", 1),
                             ("// tables\n[]", 1), ("[\n'a'\n]", 2),
                             ('[\n{"table": "A",\n"index"}]', 3), ("\0", 1), ("[\n\xa0]", 2)):
            with self.subTest(text=text[-30:]):
                self.refuse_tables(text, number if number else r"\d+", "$")

    def test_numbers_that_are_not_finite_are_refused(self):
        for value in ("NaN", "nan", "Infinity", "-Infinity", "1e400", "-1e400", "inf"):
            for field, json_path in ((value, "$[0].fields"), (f"[1,\n{value}]", "$[0].fields.x")):
                with self.subTest(value=field):
                    text = '[{"table": "A", "index": "b", "fields": {\n"x": ' + field + "}}]"
                    self.refuse_tables(text, 3 if "\n" in field else 2, json_path)

    def test_unknown_keys_are_refused(self):
        for key in ("field", "Table", "run", "passes", "comment", ""):
            with self.subTest(key=key):
                text = ('[\n{"table": "A", "index": "b", "fields": {},\n'
                        f'{json.dumps(key)}: 1}}]')
                self.refuse_tables(text, 3, "$[0]", re.escape(key or "[0]"))

    def test_missing_keys_are_refused(self):
        for key in ("table", "index", "fields"):
            with self.subTest(key=key):
                whole = {"table": "A", "index": "b", "fields": {}}
                del whole[key]
                self.refuse_tables("[\n" + json.dumps(whole) + "]", 2, "$[0]", f'"?{key}"?')

    def test_keys_given_twice_are_refused(self):
        for text, number, json_path in (
                ('[{"table": "A",\n"table": "A", "index": "b", "fields": {}}]', 2, "$[0]"),
                ('[{"table": "A", "index": "b", "fields": {"x": 1,\n\n"x": 1}}]', 3,
                 "$[0].fields"),
                ('[{"table": "A", "index": "b", "fields": {},\n"fields": {}}]', 2, "$[0]")):
            with self.subTest(text=text):
                self.refuse_tables(text, number, json_path, "twice")

    def test_a_wrong_structure_is_refused_with_its_place(self):
        def one(**changes):
            return {"table": "A", "index": "b", "fields": {}, **changes}
        for tables, json_path in (
                ({}, "$"), (1, "$"), ("a", "$"), (None, "$"), (one(), "$"), ([1], "$[0]"),
                ([one(), []], "$[1]"), ([None], "$[0]"), ([one(table=1)], "$[0].table"),
                ([one(index=None)], "$[0].index"), ([one(fields=[])], "$[0].fields"),
                ([one(fields="x")], "$[0].fields"), ([one(runs=1)], "$[0].runs"),
                ([one(runs=[])], "$[0].runs"), ([one(runs=[1])], "$[0].runs"),
                ([one(runs=[1, 2, 3])], "$[0].runs"), ([one(runs=[2, 1])], "$[0].runs[1]"),
                ([one(runs=["1", 2])], "$[0].runs[0]"), ([one(runs=[1, 2.5])], "$[0].runs[1]"),
                ([one(runs=[1.0, 2])], "$[0].runs[0]"),
                ([one(runs=[0, 2147483648])], "$[0].runs[1]"),
                ([one(runs=[-2147483649, 0])], "$[0].runs[0]"),
                ([one(runs=[0, 18446744073709551615])], "$[0].runs[1]"),
                ([one(runs=[0, 10**30])], "$[0].runs[1]"), ([one(runs=None)], "$[0].runs"),
                ([one(**{"pass": -1})], "$[0].pass"), ([one(**{"pass": 1.5})], "$[0].pass"),
                ([one(**{"pass": "1"})], "$[0].pass"), ([one(**{"pass": None})], "$[0].pass"),
                ([one(**{"pass": 2147483648})], "$[0].pass"),
                ([one(**{"pass": 18446744073709551615})], "$[0].pass"),
                ([one(fields={"x": None})], "$[0].fields.x"),
                ([one(fields={"x": True})], "$[0].fields.x"),
                ([one(fields={"x": {}})], "$[0].fields.x"),
                ([one(fields={"x": [1, "2"]})], "$[0].fields.x[1]"),
                ([one(fields={"x": [1, None]})], "$[0].fields.x[1]"),
                ([one(fields={"x": [[1]]})], "$[0].fields.x[0]"),
                ([one(), one(fields={"y": [1, 2, True]})], "$[1].fields.y[2]")):
            with self.subTest(tables=tables):
                self.refuse_tables(json.dumps(tables), 1, json_path + ":")

    def test_deep_nesting_is_refused(self):
        self.refuse_tables("[" * 100_000, 1, "$[0]")
        self.refuse_tables('[{"a":' * 50_000, 1, "$[0]")

    def test_the_line_of_a_late_entry_is_right(self):
        entries = ['{"table": "A", "index": "b", "fields": {"x": [1,\n2]}}'] * 5000
        text = "[" + ",\n".join(entries) + ',\n{"table": 5, "index": "b", "fields": {}}]'
        self.refuse_tables(text, 10_001, "$[5000].table:")

    def test_bytes_that_are_not_utf8_are_refused(self):
        self.refuse_tables(b'[\n{"table": "A\xff", "index": "b", "fields": {}}]', 2, "$[0]")


if __name__ == "__main__":
    unittest.main(verbosity=2)
