#!/usr/bin/env python3
"""`zarn-shadow check` and `scan` give the same verdicts, byte for byte, with tables from
JSON, SQLite and PostgreSQL."""

import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import DATA, PROGRAM, REFERENCE
from tables_support import PostgreSQL, SQLite, TablesTest


class Verdicts:
    def assert_same(self, *arguments):
        """Outputs and the files beside them."""
        database = self.database()
        self.import_tables(REFERENCE, database)
        found = []
        for tables in (REFERENCE, database):
            self.run_command([PROGRAM, *arguments, "--geometry", tables, "-o", "out.csv"])
            found.append([(self.folder / name).read_bytes()
                          for name in ("out.csv", "out.csv.json")])
        self.assertEqual(found[0], found[1])
        self.assertGreater(len(found[0][0].splitlines()), 20_000)

    def test_check_gives_the_same_verdicts(self):
        self.assert_same("check", DATA / "example-paths.csv", "--columns",
                         "critical_tolerance,item")

    def test_scan_gives_the_same_verdicts(self):
        events = "".join((DATA / "source-scan.csv").read_text().splitlines(True)[:6])
        self.assert_same("scan", "--events", self.write("events.csv", events),
                         "--pmts", DATA / "pmts.csv", "--columns", "item")


class VerdictsFromSQLite(Verdicts, SQLite, TablesTest):
    pass


class VerdictsFromPostgreSQL(Verdicts, PostgreSQL, TablesTest):
    pass


if __name__ == "__main__":
    unittest.main(verbosity=2)
