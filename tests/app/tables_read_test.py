#!/usr/bin/env python3
"""Geometry tables from a database in every command, and `zarn-shadow tables list`,
`show`, `diff` and `history`."""

import json
import os
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import (
    ANCHOR, DATA, NECK_BOSS, PROGRAM, REFERENCE, VESSEL, anchor_reach, entry)
from check_support import NEAR_ANCHOR, path, table
from scan_support import OPTICS
from tables_support import PostgreSQL, SQLite, TablesTest, can_be_read_by_others

# An anchor of 500 mm reaches this point, one of 60 mm does not.
MIDWAY = path("AV->Water", av1=(300.0, 0.0, -5800.0))
LONGER = anchor_reach(500.0, runs=[1000, 1999], **{"pass": 1})


class Read:
    def setUp(self):
        super().setUp()
        self.tables = self.database()
        self.import_tables(self.json(*VESSEL, *ANCHOR, *OPTICS), self.tables,
                           reason="First tables")

    def check(self, *options, tables=None, status=0):
        paths = self.write("paths.csv", table(NEAR_ANCHOR, MIDWAY))
        return self.run_command([PROGRAM, "check", paths, "--geometry", tables or self.tables,
                                 *options], status=status)

    def verdicts(self, *options, **more):
        return self.check(*options, **more).verdicts()

    BOTH = ["NCDAnchor", "NCDAnchor"]
    ONE = ["NCDAnchor", ""]

    def test_commands_judge_with_the_tables_of_the_run(self):
        self.import_tables(self.json(LONGER), self.tables)
        for run, wanted in ((0, self.ONE), (999, self.ONE), (1000, self.BOTH),
                            (1999, self.BOTH), (2000, self.ONE)):
            self.assertEqual(self.verdicts("--run", run), wanted, run)

    def test_an_old_analysis_can_be_repeated(self):
        """Byte for byte, with the fingerprint beside it."""
        self.check("-o", "old.csv", "--run", 1500)
        old = [(self.folder / name).read_bytes() for name in ("old.csv", "old.csv.json")]
        self.import_tables(self.json(LONGER), self.tables, reason="Longer anchors")
        self.check("-o", "new.csv", "--run", 1500)
        self.assertNotEqual((self.folder / "new.csv").read_bytes(), old[0])

        fingerprint = json.loads(old[1])["fingerprint"]
        state, = json.loads(self.text("history", self.tables, "--fingerprint", fingerprint,
                                      "--json"))
        self.assertEqual((state["import"], state["reason"]), (1, "First tables"))
        self.assertIn(state["time"], self.text("history", self.tables, "--fingerprint",
                                               fingerprint))
        self.check("-o", "again.csv", "--run", 1500, "--as-of", state["time"])
        again = [(self.folder / name).read_bytes() for name in ("again.csv", "again.csv.json")]
        self.assertEqual(again, old)

        new = json.loads((self.folder / "new.csv.json").read_text())["fingerprint"]
        state, = json.loads(self.text("history", self.tables, "--fingerprint", new, "--json"))
        self.assertEqual((state["import"], state["runs"]), (2, [1000, 1999]))

    def test_a_fingerprint_that_is_not_there_gives_status_3(self):
        result = self.run_tables("history", self.tables, "--fingerprint", "0" * 64, status=3)
        self.assertEqual(result.out, b"")
        self.assertIn("no tables", result.err)
        self.assertEqual(json.loads(self.text("history", self.tables, "--fingerprint", "0" * 64,
                                              "--json", status=3)), [])
        for text in ("0" * 63, "x" * 64, "", "0" * 65):
            result = self.run_tables("history", self.tables, "--fingerprint", text, status=2)
            self.assertIn("64 digits", result.err)

    def test_local_json_is_laid_over_the_tables(self):
        plan = self.json(anchor_reach(500.0, runs=[1000, None]), name="plan.json")
        self.assertEqual(self.verdicts("--override", plan), self.ONE)
        self.assertEqual(self.verdicts("--override", plan, "--run", 1000), self.BOTH)
        shown = self.text("show", self.tables, "SOLID/ncd_anchor", "--run", 1000,
                          "--override", plan)
        self.assertRegex(shown, r"^SOLID/ncd_anchor, pass 0, runs from 1000, .*plan\.json:1:2\n")
        self.assertIn("half_z: 500\n", shown)
        result = self.check("--override", "none.json", status=2)
        self.assertIn("none.json", result.err)
        result = self.check("--override", plan, "-o", plan, status=2)
        self.assertIn("plan.json: is both read and written", result.err)
        tables = self.tables_file()
        self.assertEqual(self.verdicts("--override", plan, "--run", 1000, tables=tables),
                         self.BOTH)

    def tables_file(self):
        return self.json(*VESSEL, *ANCHOR, *OPTICS, name="detector.json")

    def test_a_time_before_the_first_import_is_refused(self):
        first = self.imports(self.tables)[0]["time"]
        result = self.check("--as-of", "2001-02-03", status=2)
        self.assertRegex(result.err, "there were no tables at 2001-02-03T23:59:59")
        self.assertIn(first, result.err)
        for text in ("yesterday", "2026-13-01", "", "12:00"):
            result = self.check("--as-of", text, status=2)
            self.assertRegex(result.err, r"^zarn-shadow: --as-of: ")
        result = self.check("--as-of", "2030-01-01", tables=self.tables_file(), status=2)
        self.assertRegex(result.err, r"detector\.json: JSON has no history")

    def test_every_command_reads_databases(self):
        plan = self.json(anchor_reach(500.0), name="plan.json")
        pmts = self.write("pmts.csv", "pmt,x,y,z\np0,0,0,-8300\n")
        tables = ["--geometry", self.tables, "--override", plan, "--as-of", "2100-01-01"]
        scan = self.run_command([PROGRAM, "scan", "--at", "0,0,0", "--pmts", pmts, *tables])
        self.assertIn(b",NCDAnchor\n", scan.out)
        explain = self.run_command([PROGRAM, "explain", "--at", "0,0,0", "--to", "0,0,-8300",
                                    *tables])
        self.assertIn(b"shadowed by NCDAnchor", explain.out)
        drawn = self.run_command([PROGRAM, "map", "--at", "0,0,0", "--pmts", pmts, *tables])
        self.assertIn(b"as of 2100-01-01 with plan", drawn.out)
        if self.ENGINE == "sqlite":
            self.assertIn(b"tables as of", drawn.out)
        changed = self.run_command([PROGRAM, "map", "--at", "0,0,0", "--pmts", pmts, *tables,
                                    "--compare", self.tables])
        self.assertIn(b"with plan", changed.out)
        page = self.run_command([PROGRAM, "display", "--at", "0,0,0", "--pmts", pmts, *tables,
                                 "-o", "page.html"], status=(0, 2))
        if page.status == 2:
            self.assertIn("this build has no display", page.err)
        else:
            self.assertIn("as of 2100-01-01 with plan", (self.folder / "page.html").read_text())

    def test_messages_name_the_database(self):
        empty = self.database("empty")
        self.import_tables(self.json(*VESSEL[:1]), empty)
        result = self.check(tables=empty, status=2)
        self.assertIn(empty, result.err)
        self.assertIn("acrylic_vessel_outer", result.err)
        result = self.check(tables=self.tables)
        self.assertRegex(result.err, r"(?m)^.*" + empty.partition(":")[0] + r":.*NeckBoss")

    def test_list_has_a_line_for_each_entry(self):
        self.import_tables(self.json(LONGER, entry("OTHER", "thing", {})), self.tables)
        lines = self.text("list", self.tables).splitlines()
        self.assertEqual(len(lines), 1 + len(VESSEL) + len(ANCHOR) + len(OPTICS) + 2)
        cells = [line.split("  ") for line in lines]
        rows = [[cell.strip() for cell in row if cell.strip()] for row in cells]
        self.assertEqual(rows[0], ["table", "index", "pass", "runs", "fields", "read by"])
        for row in (["SOLID", "ncd_anchor", "0", "all runs", "2", "NCDAnchor"],
                    ["SOLID", "ncd_anchor", "1", "runs 1000 to 1999", "2", "NCDAnchor"],
                    ["SOLID", "acrylic_vessel_inner", "0", "all runs", "1", "vessel"],
                    ["GEO", "inner_av", "0", "all runs", "3", "BellyPlate, NCDAnchor"],
                    ["OPTICS", "water", "0", "all runs", "1", "light paths"],
                    ["OTHER", "thing", "0", "all runs", "0", "-"]):
            self.assertIn(row, rows)
        self.assertEqual(len(self.text("list", self.tables, "--as-of",
                                       self.imports(self.tables)[0]["time"]).splitlines()),
                         len(lines) - 2)

    def test_show_tells_what_holds_for_a_run(self):
        self.import_tables(self.json(LONGER), self.tables)
        shown = self.text("show", self.tables, "--run", 1000)
        self.assertIn(f"SOLID/ncd_anchor, pass 1, runs 1000 to 1999, {self.tables}\n"
                      "  half_z: 500\n  r_max: 40\n", shown)
        self.assertNotIn("half_z: 60", shown)
        shown = self.text("show", self.tables, "SOLID/ncd_anchor")
        self.assertEqual(shown, f"SOLID/ncd_anchor, pass 0, all runs, {self.tables}\n"
                                "  half_z: 60\n  r_max: 40\n")

    def test_show_names_the_nearest_entry_and_other_runs(self):
        result = self.run_tables("show", self.tables, "SOLID/ncd_ancor", status=2)
        self.assertRegex(result.err, "there is no entry SOLID/ncd_ancor for run 0; "
                                     "did you mean SOLID/ncd_anchor\\?")
        self.import_tables(self.json(entry("A", "b", {}, runs=[5, 7])), self.tables)
        result = self.run_tables("show", self.tables, "A/b", "--run", 8, status=2)
        self.assertIn("there is one for runs 5 to 7", result.err)
        result = self.run_tables("show", self.tables, "ncd_anchor", status=2)
        self.assertIn("TABLE/INDEX", result.err)

    def test_diff_names_fields_and_values(self):
        changed = [{**ANCHOR[2], "fields": {"x": [0.0], "y": [1.0], "z": [-5800.0, 3.0]}},
                   entry("SOLID", "ncd_anchor", {"half_z": "60", "r_min": 1.0})]
        other = self.json(*VESSEL, ANCHOR[0], *changed, *OPTICS[:2], *NECK_BOSS[:1])
        result = self.run_tables("diff", self.tables, other, status=3)
        self.assertEqual(result.out.decode(), (
            "GEO/av, all runs: only in B\n"
            "GEO_LOCATIONS/ncd_anchors, all runs\n"
            "  y[0]: 0 -> 1\n"
            "  z[1]: none -> 3\n"
            "OPTICS/water, all runs: only in A\n"
            "SOLID/ncd_anchor, all runs\n"
            "  half_z: 60 -> \"60\"\n"
            "  r_max: 40 -> none\n"
            "  r_min: none -> 1\n"))
        found = json.loads(self.text("diff", self.tables, other, "--json", status=3))
        self.assertEqual(found, [
            {"table": "GEO", "index": "av", "runs": [None, None], "only_in": "B"},
            {"table": "GEO_LOCATIONS", "index": "ncd_anchors", "runs": [None, None], "fields": [
                {"field": "y", "position": 0, "before": 0, "after": 1},
                {"field": "z", "position": 1, "before": None, "after": 3}]},
            {"table": "OPTICS", "index": "water", "runs": [None, None], "only_in": "A"},
            {"table": "SOLID", "index": "ncd_anchor", "runs": [None, None], "fields": [
                {"field": "half_z", "before": 60, "after": "60"},
                {"field": "r_max", "before": 40, "after": None},
                {"field": "r_min", "before": None, "after": 1}]}])

    def test_diff_compares_runs_and_times(self):
        first = self.imports(self.tables)[0]["time"]
        self.import_tables(self.json(LONGER), self.tables)
        result = self.run_tables("diff", self.tables, self.tables, "--as-of", first, status=3)
        self.assertEqual(result.out, b"SOLID/ncd_anchor, runs 1000 to 1999\n"
                                     b"  half_z: 60 -> 500\n")
        file = self.tables_file()
        self.assertEqual(self.text("diff", file, self.tables, "--run", 999), "")
        self.assertEqual(self.text("diff", file, self.tables, "--run", 999, "--json"), "[]\n")
        self.assertEqual(self.text("diff", file, self.tables, "--run", 1000, status=3),
                         "SOLID/ncd_anchor\n  half_z: 60 -> 500\n")
        self.assertEqual(self.text("diff", self.tables, self.tables), "")

    def test_diff_of_a_long_array_shows_some_numbers_and_json_shows_all(self):
        a = self.json(entry("A", "b", {"x": list(range(100))}), name="a.json")
        b = self.json(entry("A", "b", {"x": [n + 0.5 for n in range(100)]}), name="b.json")
        text = self.text("diff", a, b, status=3)
        self.assertEqual(text.splitlines()[1], "  x[0]: 0 -> 0.5")
        self.assertEqual(text.splitlines()[-1], "  x: 95 more numbers")
        self.assertEqual(len(text.splitlines()), 7)
        found, = json.loads(self.text("diff", a, b, "--json", status=3))
        self.assertEqual(len(found["fields"]), 100)

    def test_history_tells_who_added_what_and_why(self):
        long_reason = "because " * 20 + "\x1b[2J\n"
        self.import_tables(self.json(LONGER), self.tables, "--author", "Gr\u00e4ce",
                           reason=long_reason)
        first, second = self.imports(self.tables)
        self.assertEqual((first["import"], first["reason"], first["entries"]),
                         (1, "First tables", len(VESSEL) + len(ANCHOR) + len(OPTICS)))
        self.assertEqual((second["import"], second["author"], second["reason"]),
                         (2, "Gr\u00e4ce", long_reason))
        self.assertLess(first["time"], second["time"])
        text = self.text("history", self.tables)
        self.assertNotIn("\x1b", text)
        self.assertIn("because " * 20 + "\\x1b[2J\\x0a", text)
        header, *lines = text.splitlines()
        self.assertEqual(header.split(),
                         ["import", "time", "author", "entries", "source", "reason"])
        self.assertEqual(len(lines), 2)

        versions = self.text("history", self.tables, "SOLID/ncd_anchor")
        self.assertRegex(versions, r"^SOLID/ncd_anchor, pass 0, all runs: import 1, 20")
        self.assertRegex(versions, r"\nSOLID/ncd_anchor, pass 1, runs 1000 to 1999: import 2, ")
        self.assertTrue(versions.endswith("  half_z: 60 -> 500\n"), versions)
        found = json.loads(self.text("history", self.tables, "SOLID/ncd_anchor", "--json"))
        self.assertEqual([version["fields"]["half_z"] for version in found], [60, 500])
        self.assertEqual(found[1]["runs"], [1000, 1999])
        result = self.run_tables("history", self.tables, "SOLID/ncd_anchors", status=2)
        self.assertIn("there was never an entry SOLID/ncd_anchors; did you mean "
                      "SOLID/ncd_anchor?", result.err)
        result = self.run_tables("history", self.tables_file(), status=2)
        self.assertIn("keeps no history", result.err)

    def test_output_that_cannot_be_written_gives_status_1(self):
        for command in (["list"], ["show"], ["history"], ["diff", REFERENCE]):
            with open("/dev/full", "wb") as full:
                result = self.run_tables(*command, self.tables, status=1, stdout=full)
            self.assertRegex(result.err, "(?i)standard output.*no space")

    def test_a_reader_that_closes_the_pipe_ends_the_command_silently(self):
        for command in (["list"], ["export"], ["diff", REFERENCE]):
            reader, writer = os.pipe()
            os.close(reader)
            result = self.run_tables(*command, self.tables, status=141, stdout=writer)
            os.close(writer)
            self.assertEqual(result.err, "")


class ReadFromSQLite(Read, SQLite, TablesTest):
    def as_reader(self):
        """What makes a command run without the right to write."""
        if os.geteuid() != 0:
            return {}
        if not can_be_read_by_others(PROGRAM) or not can_be_read_by_others(DATA / "x"):
            self.skipTest("other users cannot run the program")
        return {"user": 65534, "group": 65534, "extra_groups": []}

    def test_reading_needs_no_write_permission(self):
        folder = self.folder / "shared"
        folder.mkdir()
        self.folder.chmod(0o755)
        database = f"sqlite:{folder / 'tables.db'}"
        self.import_tables(self.json(*VESSEL, *ANCHOR), database)
        (folder / "tables.db").chmod(0o444)
        folder.chmod(0o555)
        self.addCleanup(folder.chmod, 0o755)
        reader = {**self.as_reader(), "cwd": "/"}
        self.assertEqual(json.loads(self.text("export", database, **reader)),
                         [*VESSEL, *ANCHOR])
        self.assertEqual(len(json.loads(self.text("history", database, "--json", **reader))), 1)
        paths = self.write("paths.csv", table(NEAR_ANCHOR))
        paths.chmod(0o444)
        done = self.run_command([PROGRAM, "check", paths, "--geometry", database], **reader)
        self.assertEqual(done.verdicts(), ["NCDAnchor"])
        file = self.json(*NECK_BOSS)
        file.chmod(0o444)
        result = self.import_tables(file, database, status=1, **reader)
        self.assertRegex(result.err, "write permission")
        self.assertEqual([path.name for path in folder.iterdir()], ["tables.db"])

    def test_a_missing_file_is_named_and_not_made(self):
        for command in ("list", "show", "export", "history"):
            result = self.run_tables(command, "sqlite:none.db", status=2)
            self.assertIn("none.db", result.err)
        self.assertFalse((self.folder / "none.db").exists())


class ReadFromPostgreSQL(Read, PostgreSQL, TablesTest):
    def test_reading_needs_the_right_to_select_only(self):
        self.query(self.tables, "CREATE ROLE reader_of_tables LOGIN; GRANT SELECT ON ALL "
                                "TABLES IN SCHEMA public TO reader_of_tables")
        reader = self.tables.replace("user=postgres", "user=reader_of_tables")
        self.assertEqual(self.entries(reader), self.entries(self.tables))
        self.assertEqual(self.verdicts(tables=reader), self.ONE)
        result = self.import_tables(self.json(*NECK_BOSS), reader, status=1)
        self.assertIn("permission denied", result.err)
        self.assertEqual(len(self.imports(self.tables)), 1)

    def test_the_name_of_the_database_is_in_pictures(self):
        pmts = self.write("pmts.csv", "pmt,x,y,z\np0,0,0,-8300\n")
        drawn = self.run_command([PROGRAM, "map", "--at", "0,0,0", "--pmts", pmts,
                                  "--geometry", self.tables])
        self.assertIn(self.name_of(self.tables).encode(), drawn.out)
        self.assertNotIn(str(self.server.folder).encode(), drawn.out)


if __name__ == "__main__":
    unittest.main(verbosity=2)
