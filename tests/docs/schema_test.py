#!/usr/bin/env python3
"""docs/tables.schema.json is made from the list of fields; it accepts the detectors here
and refuses what is wrong in one file."""

import copy
import json
import os
import pathlib
import subprocess
import unittest

import jsonschema

SOURCE = pathlib.Path(os.environ["ZARN_SOURCE_DIR"])
PROGRAM = os.environ["ZARN_TABLES_SCHEMA"]
PAGE = SOURCE / "docs" / "tables.schema.json"
FOLDERS = (SOURCE / "data" / "reference-detector", SOURCE / "examples" / "minimal-detector")


def run(*arguments):
    return subprocess.run([PROGRAM, *arguments], check=True, capture_output=True,
                          text=True).stdout


def minimal():
    return [entry for file in sorted(FOLDERS[1].glob("*.json"))
            for entry in json.loads(file.read_text())]


class TablesSchema(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        schema = json.loads(PAGE.read_text())
        jsonschema.Draft202012Validator.check_schema(schema)
        cls.validator = jsonschema.Draft202012Validator(schema)

    def assert_refused(self, entries, text):
        errors = [error.message for error in self.validator.iter_errors(entries)]
        self.assertEqual(len(errors), 1, errors)
        self.assertIn(text, errors[0])

    def test_the_file_is_the_one_that_the_list_of_fields_makes(self):
        self.assertEqual(PAGE.read_text(), run(),
                         "write it again: build/release/tests/docs/tables_schema "
                         "> docs/tables.schema.json")

    def test_it_accepts_the_detectors_file_by_file(self):
        files = [file for folder in FOLDERS for file in folder.glob("*.json")]
        self.assertGreater(len(files), 15)
        for file in files:
            with self.subTest(file=file):
                self.validator.validate(json.loads(file.read_text()))

    def test_it_refuses_a_typing_error_in_every_field_of_a_fixed_entry(self):
        fixed = {(field["table"], field["index"]) for field in json.loads(run("--fields"))
                 if field["named_by"] is None}
        tried = 0
        for number, entry in enumerate(minimal()):
            if (entry["table"], entry["index"]) not in fixed:
                continue
            for field in entry["fields"]:
                with self.subTest(entry=entry, field=field):
                    entries = minimal()
                    fields = entries[number]["fields"]
                    fields[field + "s"] = fields.pop(field)
                    errors = [error.message for error in self.validator.iter_errors(entries)]
                    self.assertTrue(any(f"'{field}s' was unexpected" in error
                                        for error in errors), errors)
                tried += 1
        self.assertGreater(tried, 40)

    def test_it_refuses_a_field_of_another_type_in_every_entry(self):
        for number, entry in enumerate(minimal()):
            for field, value in entry["fields"].items():
                with self.subTest(entry=entry, field=field):
                    entries = minimal()
                    entries[number]["fields"][field] = 1 if isinstance(value, str) else "text"
                    self.assertFalse(self.validator.is_valid(entries))

    def test_it_refuses_a_missing_field_of_a_fixed_entry(self):
        entry = {"table": "SOLID", "index": "neck_boss", "fields": {"half_height1": 60}}
        self.assert_refused([entry], "'half_height2' is a required property")

    def test_a_detector_without_plates_or_anchors_may_leave_out_their_names(self):
        self.validator.validate([{"table": "GEO", "index": "inner_av", "fields": {}}])

    def test_it_refuses_what_the_reader_refuses(self):
        good = {"table": "GEO_LOCATIONS", "index": "rolls", "runs": [1000, None], "pass": 1,
                "fields": {"roll": [0, 180]}}
        self.validator.validate([good])
        for key, value, text in (("Pass", 1, "'Pass' was unexpected"),
                                 ("pass", -1, "less than the minimum"),
                                 ("runs", [1], "too short"),
                                 ("runs", [1, "2"], "is not of type"),
                                 ("index", 7, "is not of type 'string'"),
                                 ("fields", [], "is not of type 'object'")):
            with self.subTest(key=key, value=value):
                bad = copy.deepcopy(good)
                bad[key] = value
                self.assert_refused([bad], text)
        for key in ("table", "index", "fields"):
            bad = {name: value for name, value in good.items() if name != key}
            self.assert_refused([bad], f"'{key}' is a required property")
        self.assert_refused({}, "is not of type 'array'")


if __name__ == "__main__":
    unittest.main(verbosity=2)
