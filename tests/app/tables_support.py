"""Helpers for the tests of `zarn-shadow tables`, on both engines.

A test that comes before SQLite or PostgreSQL in the bases of a class runs on that
engine: database(name) is a new database.
"""

import atexit
import json
import os
import pathlib
import sqlite3
import subprocess
import sys

from command_support import CommandTest, PROGRAM

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "sql"))
from postgresql import Server


class TablesTest(CommandTest):
    def json(self, *entries, name="entries.json"):
        """A file with these entries, without a vessel."""
        return self.write(name, json.dumps(entries))

    def run_tables(self, command, *arguments, **more):
        return self.run_command([PROGRAM, "tables", command, *arguments], **more)

    def text(self, command, *arguments, **more):
        return self.run_tables(command, *arguments, **more).out.decode()

    def import_tables(self, source, database, *options, reason="a test", **more):
        return self.run_tables("import", source, database, "--reason", reason, *options,
                               **more)

    def entries(self, database, *options):
        """What export writes, parsed."""
        return json.loads(self.text("export", database, *options))

    def imports(self, database):
        return json.loads(self.text("history", database, "--json"))


class SQLite:
    ENGINE = "sqlite"

    def database(self, name="tables"):
        return f"sqlite:{self.folder / name}.db"

    def count_entries(self, database):
        """The number of entries of a database that is not damaged."""
        connection = sqlite3.connect(database.removeprefix("sqlite:"))
        try:
            self.assertEqual(connection.execute("PRAGMA integrity_check").fetchall(),
                             [("ok",)])
            self.assertEqual(connection.execute("PRAGMA foreign_key_check").fetchall(), [])
            return connection.execute("SELECT count(*) FROM zarn_entry").fetchone()[0]
        finally:
            connection.close()

    def hold_imports(self, database):
        """Keep imports waiting; returns the function that lets them go on."""
        connection = sqlite3.connect(database.removeprefix("sqlite:"), isolation_level=None)
        connection.execute("BEGIN IMMEDIATE")
        self.addCleanup(connection.close)
        return connection.rollback


class PostgreSQL:
    """All tests of a file share one server."""
    ENGINE = "postgresql"
    server = None
    made = 0

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        if PostgreSQL.server is None:
            PostgreSQL.server = Server()
            PostgreSQL.server.__enter__()
            atexit.register(PostgreSQL.server.__exit__)

    def database(self, name="tables"):
        PostgreSQL.made += 1
        return "postgresql:" + self.server.make_database(f"{name}_{PostgreSQL.made}")

    @staticmethod
    def name_of(database):
        return database.rpartition("dbname=")[2]

    def query(self, database, text):
        return self.server.query(text, self.name_of(database))

    def count_entries(self, database):
        """The number of entries after every connection has ended."""
        name = self.name_of(database)
        others = f"SELECT count(*) FROM pg_stat_activity WHERE datname = '{name}'"
        self.wait_for(lambda: self.server.query(others) == "0", "the end of connections")
        return int(self.query(database, "SELECT count(*) FROM zarn_entry"))

    def hold_imports(self, database):
        process = subprocess.Popen(
            [self.server.programs / "psql", "-XqAt", "-h", self.server.folder, "-U",
             "postgres", "-d", self.name_of(database)],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        process.stdin.write(f"SELECT pg_advisory_lock({0x7A61726E});\n\\echo held\n")
        process.stdin.flush()
        while process.stdout.readline() != "held\n":
            self.assertIsNone(process.poll())

        def release():
            process.communicate("SELECT pg_advisory_unlock_all();\n")
        return release


def can_be_read_by_others(path):
    """Whether every user reaches a file."""
    path = pathlib.Path(path).resolve()
    return all(os.stat(folder).st_mode & 0o001 for folder in path.parents)
