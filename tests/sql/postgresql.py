#!/usr/bin/env python3
"""A PostgreSQL server of its own for tests: on a socket in a temporary folder, stopped
at the end.

    tests/sql/postgresql.py COMMAND...   run a command that may use the server

The command finds what follows postgresql: in ZARN_TEST_POSTGRESQL. Everybody is let in
without a password, except the user "locked". Tests in Python use Server.
"""

import ctypes
import os
import pathlib
import pwd
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time

DEADLINE = 60  # s; a start takes one or two
PR_SET_PDEATHSIG = 1  # of prctl(2)


def find_programs():
    """The folder with the newest installed server."""
    folders = sorted(pathlib.Path("/usr/lib/postgresql").glob("[0-9]*/bin"),
                     key=lambda folder: int(folder.parent.name))
    found = [folder for folder in folders if (folder / "initdb").exists()]
    on_path = shutil.which("initdb")
    if on_path:
        found.append(pathlib.Path(on_path).resolve().parent)
    if not found:
        sys.exit("no PostgreSQL server: script/setup --test installs it "
                 "(Debian's package postgresql)")
    return found[-1]


class Server:
    """with Server() as server: ... f"postgresql:{server.connection}" ..."""

    def __init__(self, *options, largest_file=None):
        """Further options of the server: "-c", "fsync=on". largest_file, in bytes: the
        server can write no larger one, as on a full disk; above 1 MiB."""
        self.options = options
        self.largest_file = largest_file
        self.programs = find_programs()
        # The server refuses to run as root.
        self.user = "postgres" if os.geteuid() == 0 else None
        self.process = None

    def __enter__(self):
        # A socket's path is short: not below a long TMPDIR.
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="zarn-sql-", dir="/tmp"))
        try:
            self.folder.chmod(0o755)
            if self.user:
                owner = pwd.getpwnam(self.user)
                os.chown(self.folder, owner.pw_uid, owner.pw_gid)
            self.make_cluster()
            self.start()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        self.stop()
        shutil.rmtree(self.folder, ignore_errors=True)

    @property
    def connection(self):
        return f"host={self.folder} user=postgres dbname=postgres"

    def make_cluster(self):
        done = subprocess.run(
            [self.programs / "initdb", "-D", self.folder / "data", "-U", "postgres",
             "-A", "trust", "-E", "UTF8", "--locale=C.UTF-8", "--no-sync",
             "--wal-segsize=1"],  # MiB
            capture_output=True, text=True, cwd="/", **self.as_user())
        if done.returncode != 0:
            raise RuntimeError(f"initdb: {done.stdout}{done.stderr}")
        access = self.folder / "data" / "pg_hba.conf"
        access.write_text("local all locked scram-sha-256\nlocal all all trust\n")

    def prepare_process(self):
        """In the server: also if this process is killed, end quickly."""
        ctypes.CDLL(None).prctl(PR_SET_PDEATHSIG, signal.SIGINT)
        if self.largest_file is not None:
            resource.setrlimit(resource.RLIMIT_FSIZE, (self.largest_file,) * 2)

    def start(self):
        with open(self.folder / "log", "ab") as log:
            self.process = subprocess.Popen(
                [self.programs / "postgres", "-D", self.folder / "data",
                 "-c", "listen_addresses=", "-k", self.folder, "-c", "fsync=off",
                 *self.options],
                stdin=subprocess.DEVNULL, stdout=log, stderr=log, cwd="/",
                # A signal from the keyboard is for the command, not for its server.
                start_new_session=True, preexec_fn=self.prepare_process, **self.as_user())
        deadline = time.monotonic() + DEADLINE
        while not self.is_ready():
            if self.process.poll() is not None or time.monotonic() > deadline:
                raise RuntimeError("the server does not start: "
                                   + (self.folder / "log").read_text())
            time.sleep(0.05)

    def stop(self):
        """Ends the server and its connections; start() starts it again."""
        if self.process is None:
            return
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGINT)  # a fast shutdown
            try:
                self.process.wait(DEADLINE)
            except subprocess.TimeoutExpired:
                self.process.send_signal(signal.SIGQUIT)
                self.process.wait()
        self.process = None

    def is_ready(self):
        return subprocess.run([self.programs / "pg_isready", "-q", "-h", self.folder],
                              check=False).returncode == 0

    def query(self, text, database="postgres"):
        """What the superuser's SQL prints."""
        return subprocess.run(
            [self.programs / "psql", "-XqAt", "-v", "ON_ERROR_STOP=1", "-h", self.folder,
             "-U", "postgres", "-d", database, "-c", text],
            check=True, capture_output=True, text=True).stdout.rstrip("\n")

    def make_database(self, name):
        """What follows postgresql: for a new empty database."""
        self.query(f'CREATE DATABASE "{name}"')
        return f"host={self.folder} user=postgres dbname={name}"

    def as_user(self):
        if self.user is None:
            return {}
        owner = pwd.getpwnam(self.user)
        return {"user": owner.pw_uid, "group": owner.pw_gid, "extra_groups": []}


def main():
    if len(sys.argv) < 2:
        sys.exit("usage: tests/sql/postgresql.py COMMAND...")

    def end(number, _):
        raise SystemExit(128 + number)  # so that the server is stopped

    for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGINT):
        signal.signal(number, end)
    with Server() as server:
        environment = os.environ | {"ZARN_TEST_POSTGRESQL": server.connection}
        command = subprocess.Popen(sys.argv[1:], env=environment)
        try:
            status = command.wait()
        finally:
            command.kill()
    return status if status >= 0 else 128 - status


if __name__ == "__main__":
    sys.exit(main())
