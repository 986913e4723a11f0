#!/usr/bin/env python3
"""What remains of `zarn-shadow tables import` when it is killed, waits for another
import, finds a full disk or loses its connection; and that passwords stay secret."""

import os
import pathlib
import random
import signal
import sys
import time
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import PROGRAM, VESSEL, entry
from tables_support import PostgreSQL, Server, SQLite, TablesTest

KILLS = 100


class Writers:
    def step(self, number):
        """Three entries that no other step has."""
        return self.json(*(entry("STEP", f"{number}-{part}", {"x": [number, part]})
                           for part in range(3)), name="step.json")

    def start_import(self, source, database, **more):
        return self.start([PROGRAM, "tables", "import", source, database, "--reason", "a step"],
                          stdin=None, stdout=None, **more)

    def test_imports_that_are_killed_leave_nothing_half(self):
        """At random moments from the start of the program to its end."""
        database = self.database()
        begin = time.monotonic()
        for number in range(3):
            self.import_tables(self.step(-number), database)
        whole = (time.monotonic() - begin) / 3
        chance = random.Random(1)
        count = self.count_entries(database)
        self.assertEqual(count, 9)
        done = 0
        for number in range(KILLS):
            process = self.start_import(self.step(number), database)
            time.sleep(chance.uniform(0.3, 1.1) * whole)
            process.kill()
            process.wait()
            process.stderr.close()
            found = self.count_entries(database)
            self.assertIn(found, (count, count + 3), number)
            done += found > count
            # Follows the machine, which may be busier now.
            whole *= 0.97 if found > count else 1.03
            count = found
        self.assertGreater(done, KILLS / 20, "hardly one was killed late")
        self.assertLess(done, KILLS - KILLS / 20, "hardly one was killed early")
        self.import_tables(self.step(KILLS), database)
        self.assertEqual(self.count_entries(database), count + 3)
        self.assertEqual(sum(found["entries"] for found in self.imports(database)), count + 3)
        self.assertEqual({found["entries"] for found in self.imports(database)}, {3})

    def test_two_imports_at_once_wait_for_each_other(self):
        database = self.database()
        self.import_tables(self.json(*VESSEL), database)
        release = self.hold_imports(database)
        files = [self.json(*(entry("STEP", f"{name}{part}", {}) for part in range(50)),
                           name=f"{name}.json") for name in "ab"]
        processes = [self.start_import(file, database) for file in files]
        for process in processes:
            self.wait_until_it_waits(process)
        self.assertEqual(len(self.imports(database)), 1)  # reading does not wait
        release()
        for process in processes:
            self.assert_ends(process, 0)
        found = self.imports(database)
        self.assertEqual([one["entries"] for one in found], [2, 50, 50])
        self.assertEqual({one["source"] for one in found[1:]}, set(map(str, files)))

    def wait_until_it_waits(self, process):
        time.sleep(0.5)
        self.assertIsNone(process.poll())

    def test_an_interrupt_ends_an_import_that_waits(self):
        database = self.database()
        self.import_tables(self.json(*VESSEL), database)
        release = self.hold_imports(database)
        for number in (signal.SIGINT, signal.SIGTERM):
            process = self.start_import(self.step(1), database)
            self.wait_until_it_waits(process)
            process.send_signal(number)
            self.assert_ends(process, 128 + number, timeout=20)
        release()
        self.assertEqual(self.count_entries(database), len(VESSEL))
        self.import_tables(self.step(1), database)


class WritersOfSQLite(Writers, SQLite, TablesTest):
    def test_a_full_disk_leaves_nothing_half(self):
        database = self.database()
        self.import_tables(self.json(*VESSEL), database)
        before = self.run_tables("export", database).out
        big = self.json(*(entry("BIG", str(i), {"x": [1 / (i + k + 1) for k in range(300)]})
                          for i in range(100)), name="big.json")
        size = (self.folder / "tables.db").stat().st_size
        for limit in (size, size + 4096, size + 40_960, size + 200_000):
            result = self.import_tables(big, database, status=1, preexec_fn=self.limited(limit))
            self.assertIn(database, result.err)
            self.assertRegex(result.err, "disk is full")
            self.assertEqual(self.count_entries(database), len(VESSEL))
            self.assertEqual(self.run_tables("export", database).out, before)
        new = self.database("new")
        result = self.import_tables(big, new, status=1, preexec_fn=self.limited(1))
        self.assertRegex(result.err, "disk is full")
        self.import_tables(big, database)
        self.import_tables(big, new)


class WritersOfPostgreSQL(Writers, PostgreSQL, TablesTest):
    def test_a_full_disk_of_the_server_leaves_nothing_half(self):
        numbers = random.Random(1)
        big = self.json(*(entry("BIG", str(i), {"x": [numbers.random() for _ in range(5000)]})
                          for i in range(60)), name="big.json")
        with Server(largest_file=2 << 20) as server:
            database = "postgresql:" + server.connection
            self.import_tables(self.json(*VESSEL), database)
            before = self.run_tables("export", database).out
            result = self.import_tables(big, database, status=1)
            self.assertIn(database, result.err)
            self.assertIn("File too large", result.err)
            self.assertEqual(server.query("SELECT count(*) FROM zarn_entry"), str(len(VESSEL)))
            self.assertEqual(self.run_tables("export", database).out, before)
            self.import_tables(self.step(1), database)
        self.import_tables(big, self.database())

    def end_connections(self, database):
        self.server.query("SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE "
                          f"datname = '{self.name_of(database)}' AND "
                          "application_name <> 'psql'")

    def test_a_dropped_connection_leaves_nothing_half(self):
        database = self.database()
        self.import_tables(self.json(*VESSEL), database)
        release = self.hold_imports(database)
        process = self.start_import(self.step(1), database)
        self.wait_until_it_waits(process)
        self.end_connections(database)
        err = self.assert_ends(process, 1)
        self.assertIn(database, err)
        release()
        self.assertEqual(self.count_entries(database), len(VESSEL))
        self.import_tables(self.step(1), database)

    def locked(self, database):
        """The same database for a user who needs the password."""
        exists = self.server.query("SELECT count(*) FROM pg_roles WHERE rolname = 'locked'")
        if exists == "0":
            self.server.query("CREATE ROLE locked LOGIN SUPERUSER PASSWORD 'kept-secret'")
        return database.replace("user=postgres", "user=locked")

    def assert_secret(self, *texts):
        for text in texts:
            self.assertNotIn("kept-secret", text)

    def test_a_password_on_the_command_line_is_refused_and_not_shown(self):
        database = self.database()
        folder = str(self.server.folder).replace("/", "%2F")
        for name in (self.locked(database) + " password=kept-secret",
                     self.locked(database) + " password = 'kept-secret'",
                     f"postgresql://locked:kept-secret@{folder}/postgres",
                     f"postgresql://locked@{folder}/postgres?password=kept-secret"):
            for arguments in (["tables", "list", name],
                              ["tables", "import", self.json(*VESSEL), name, "--reason", "r"],
                              ["tables", "history", name],
                              ["check", "none.csv", "--geometry", name]):
                result = self.run_command([PROGRAM, *arguments], status=2)
                self.assert_secret(result.err, result.out.decode())
                self.assertIn("PGPASSWORD", result.err)

    def test_a_password_comes_from_the_environment_or_a_file_and_is_not_shown(self):
        database = self.database()
        locked = self.locked(database)
        file = self.write("passwords", "*:*:*:locked:kept-secret\n")
        file.chmod(0o600)
        self.import_tables(self.json(*VESSEL), database)
        clean = {name: value for name, value in os.environ.items()
                 if not name.startswith("PG")} | {"HOME": str(self.folder)}
        for number, secret in enumerate(({"PGPASSWORD": "kept-secret"},
                                         {"PGPASSFILE": str(file)})):
            environment = clean | secret
            self.assertEqual(self.run_tables("export", locked, env=environment).out,
                             self.run_tables("export", database).out)
            release = self.hold_imports(database)
            process = self.start_import(self.step(number), locked, env=environment)
            self.wait_until_it_waits(process)
            shown = pathlib.Path(f"/proc/{process.pid}/cmdline").read_text()
            self.assertIn("user=locked", shown)
            release()
            self.assert_secret(shown, self.assert_ends(process, 0))
        for secret in ({}, {"PGPASSWORD": "kept-secret-wrong"}):
            result = self.run_tables("list", locked, env=clean | secret, status=2)
            self.assertRegex(result.err, "password")
            self.assert_secret(result.err)

    def test_a_server_that_is_not_there_is_named(self):
        for name in (f"postgresql:host={self.folder} dbname=tables",
                     self.database().replace("dbname=", "dbname=no_")):
            result = self.run_tables("list", name, status=2)
            self.assertIn(name, result.err)


if __name__ == "__main__":
    unittest.main(verbosity=2)
