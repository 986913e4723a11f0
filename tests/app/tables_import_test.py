#!/usr/bin/env python3
"""`zarn-shadow tables import` and `export`, on both engines."""

import json
import os
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import ANCHOR, NECK_BOSS, REFERENCE, VESSEL, anchor_reach, entry
from tables_support import PostgreSQL, SQLite, TablesTest


class Import:
    def test_export_gives_back_equal_json(self):
        database = self.database()
        self.import_tables(REFERENCE, database)
        self.run_tables("export", database, "-o", "first.json")
        files = sorted(REFERENCE.glob("*.json"))
        self.assertEqual(json.loads((self.folder / "first.json").read_text()),
                         [item for file in files for item in json.loads(file.read_text())])
        other = self.database("other")
        self.import_tables("first.json", other)
        second = self.run_tables("export", other).out
        self.assertEqual(second, (self.folder / "first.json").read_bytes())
        third = self.database("third")  # from one database to another
        self.import_tables(other, third)
        self.assertEqual(self.run_tables("export", third).out, second)

    def test_numbers_text_runs_and_passes_come_back_to_the_last_bit(self):
        numbers = [5e-324, 2.2250738585072014e-308, 1.7976931348623157e308, 0.1, -0.0, 1 / 3,
                   123456789012345680, -9007199254740993.0]
        entries = [entry("A", "b", {"x": numbers, "y": -0.0, "none": [], "text": ""}),
                   entry("A", "b", {"y": 1.5}, runs=[-5, 7], **{"pass": 3}),
                   entry("A", "b", {"y": 2.5}, runs=[None, -7]),
                   entry("\u00e9\u20ac", "", {"\U0001F600": "tab\t, line\n, \"quotes\" '"})]
        entries[2]["pass"] = 4
        database = self.database()
        self.import_tables(self.json(*entries), database)
        found = self.entries(database)
        self.assertEqual(found, entries)
        self.assertEqual([number.hex() for number in map(float, found[0]["fields"]["x"])],
                         [float(number).hex() for number in numbers])
        self.assertEqual(float(found[0]["fields"]["y"]).hex(), "-0x0.0p+0")

    def test_findings_of_the_check_are_counted(self):
        database = self.database()
        result = self.import_tables(REFERENCE, database)
        self.assertRegex(result.err, r": 1 entry that nothing reads; see zarn-shadow tables check "
                                     r"\S.*\n$")  # PMT/positions
        typo = entry("SOLID", "hold_down_rop", {"r_rope": 12.5}, runs=[1000, None])
        result = self.import_tables(self.json(typo), database)
        self.assertRegex(result.err, r": 1 entry that nothing reads; see .* --run 1000\n$")
        metres = entry("SOLID", "hold_up_rope", {"r_rope": 0.015, "z_rope": 6090},
                       runs=[1000, None])
        result = self.import_tables(self.json(metres), database, "--new-pass")
        self.assertRegex(result.err, r": 1 warning; see .* --run 1000\n$")
        wrong = entry("SOLID", "hold_up_rope", {"r_rop": 15, "z_rope": 6090}, runs=[7, 7])
        result = self.import_tables(self.json(wrong), database, "--new-pass")
        self.assertRegex(result.err, r": 1 error; see .* --run 7\n$")
        fine = self.import_tables(REFERENCE.parent.parent / "examples" / "minimal-detector",
                                  self.database("fine"))
        self.assertNotIn("see zarn-shadow", fine.err)

    def test_sql_in_names_and_values_is_text(self):
        texts = ["'; DROP TABLE zarn_entry; --", "\" OR 1=1", "$1 :id ? %s {} \\' \\", "zarn_entry"]
        entries = [entry(text, text, {text: text, "x": [1]}) for text in texts]
        database = self.database()
        note = "it's \"so\"; DELETE FROM zarn_import; -- :reason"
        self.import_tables(self.json(*entries), database, "--author", note, reason=note)
        self.assertEqual(self.entries(database), entries)
        found, = self.imports(database)
        self.assertEqual((found["author"], found["reason"]), (note, note))
        text = texts[0]
        shown = self.text("show", database, f"{text}/{text}")
        self.assertIn(f'{text}: "{text}"', shown)
        self.assertIn(note, self.text("history", database, f"{text}/{text}"))

    def test_what_stands_is_left_out(self):
        database = self.database()
        self.import_tables(self.json(*VESSEL), database)
        result = self.import_tables(self.json(*VESSEL), database)
        self.assertIn("all 2 entries stand already; nothing was imported", result.err)
        result = self.import_tables(self.json(*VESSEL, *NECK_BOSS), database)
        self.assertIn("2 entries added, 2 stood already", result.err)
        self.assertEqual([found["entries"] for found in self.imports(database)], [2, 2])

    def test_nothing_is_overwritten(self):
        database = self.database()
        self.import_tables(self.json(*VESSEL, *ANCHOR), database)
        before = self.entries(database)
        longer = self.json(*NECK_BOSS, anchor_reach(500.0))
        result = self.import_tables(longer, database, status=2)
        self.assertIn("SOLID/ncd_anchor, pass 0, all runs", result.err)
        self.assertIn("--new-pass", result.err)
        self.assertEqual(self.entries(database), before)
        self.assertEqual(len(self.imports(database)), 1)
        result = self.import_tables(longer, database, "--new-pass")
        self.assertRegex(result.err, r"SOLID/ncd_anchor, pass 1, all runs\n")
        self.assertEqual(self.entries(database)[:len(before)], before)
        self.assertEqual(self.entries(database)[-1],
                         anchor_reach(500.0, **{"pass": 1}))

    def test_a_bad_file_imports_nothing(self):
        database = self.database()
        self.import_tables(self.json(*VESSEL), database)
        self.write("bad/a.json", json.dumps(NECK_BOSS))
        self.write("bad/b.json", '[{"table": "A"}]')
        result = self.import_tables("bad", database, status=2)
        self.assertRegex(result.err, r"bad/b\.json:1: ")
        self.assertEqual(self.entries(database), VESSEL)

    def test_the_author_comes_from_the_account_and_from_email(self):
        database = self.database()
        one = {**os.environ, "EMAIL": "ada@example.org"}
        self.import_tables(self.json(*VESSEL), database, env=one)
        self.import_tables(self.json(*NECK_BOSS), database, "--author", "Grace", env=one)
        del one["EMAIL"]
        self.import_tables(self.json(*ANCHOR), database, env=one)
        first, second, third = [found["author"] for found in self.imports(database)]
        self.assertRegex(first, r"^.+ <ada@example\.org>$")
        self.assertEqual(second, "Grace")
        self.assertRegex(third, r"^.+ <.+@.+>$")

    def test_a_reason_is_required(self):
        for options in ([], ["--reason", ""], ["--reason", " "]):
            database = self.database("empty" + str(len(options)))
            result = self.run_tables("import", self.json(*VESSEL), database, *options, status=2)
            self.assertRegex(result.err, r"needs --reason: .*history")
            result = self.run_tables("list", database, status=2)  # nothing was made
        result = self.import_tables(self.json(*VESSEL), database, "--author", "", status=2)
        self.assertIn("--author is empty", result.err)

    def test_what_cannot_be_stored_is_refused(self):
        database = self.database()
        for name in ("a\\u0000", "\\u0000"):
            file = self.write("nul.json", '[{"table": "A", "index": "%s", "fields": {}}]' % name)
            result = self.import_tables(file, database, status=2)
            self.assertIn("NUL", result.err)
        result = self.import_tables(self.json(*VESSEL), database, "--author", "\udcff", status=2)
        self.assertIn("UTF-8", result.err)

    def test_export_writes_what_stood_or_what_holds_for_a_run(self):
        database = self.database()
        self.import_tables(self.json(*VESSEL, *ANCHOR), database)
        longer = anchor_reach(500.0, runs=[1000, None], **{"pass": 1})
        self.import_tables(self.json(longer), database)
        time = self.imports(database)[0]["time"]
        self.assertEqual(self.entries(database), [*VESSEL, *ANCHOR, longer])
        self.assertEqual(self.entries(database, "--as-of", time), [*VESSEL, *ANCHOR])
        held = self.entries(database, "--run", 1000)
        self.assertIn(longer, held)
        self.assertNotIn(anchor_reach(60.0), held)
        self.assertEqual(len(held), len(VESSEL) + len(ANCHOR))

    def test_export_replaces_a_file_completely_or_not_at_all(self):
        database = self.database()
        self.import_tables(REFERENCE, database)
        self.run_tables("export", database, "-o", "old.json")
        whole = (self.folder / "old.json").read_bytes()
        for name in ("old.json", "new.json"):
            result = self.run_tables("export", database, "-o", name, status=1,
                                     preexec_fn=self.limited(len(whole) - 1))
            self.assertRegex(result.err, name + r": (?i:.*file too large)")
        self.assertEqual((self.folder / "old.json").read_bytes(), whole)
        self.assertFalse((self.folder / "new.json").exists())
        with open("/dev/full", "wb") as full:
            self.run_tables("export", database, status=1, stdout=full)

    def test_only_databases_are_imported_into(self):
        for name in ("tables.json", "tables.db", "mysql:tables"):
            result = self.import_tables(self.json(*VESSEL), name, status=2)
            self.assertIn(f'"{name}" is no database; use sqlite:FILE or postgresql:', result.err)
            self.assertFalse((self.folder / name).exists())


class ImportIntoSQLite(Import, SQLite, TablesTest):
    def test_an_export_does_not_replace_its_database(self):
        database = self.database()
        self.import_tables(self.json(*VESSEL), database)
        result = self.run_tables("export", database, "-o", "tables.db", status=2)
        self.assertIn("tables.db", result.err)
        self.assertIn("is both read and written", result.err)
        self.assertEqual(self.entries(database), VESSEL)

    def test_a_file_that_is_no_database_is_left_alone(self):
        file = self.write("tables.db", "not a database " * 100)
        result = self.import_tables(self.json(*VESSEL), self.database(), status=2)
        self.assertRegex(result.err, r"tables\.db: is not an SQLite database")
        self.assertEqual(file.read_text(), "not a database " * 100)


class ImportIntoPostgreSQL(Import, PostgreSQL, TablesTest):
    pass


if __name__ == "__main__":
    unittest.main(verbosity=2)
