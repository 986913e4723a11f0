"""The command zarn-shadow-cluster."""

import os
import re
import signal
import subprocess
import sys
import time

import dask
import pyarrow.parquet as pq
import pytest
from processes import wait_until
from support import DATA, REFERENCE, command
from zarn.cluster._command import main as command_main

INPUTS = ["--events", DATA / "source-scan.csv", "--pmts", DATA / "pmts.csv",
          "--geometry", REFERENCE]


def start(*arguments):
    """The command in a process group of its own, as a shell starts it."""
    return subprocess.Popen(
        [sys.executable, "-m", "zarn.cluster", *map(str, arguments)], stdout=subprocess.PIPE,
        stderr=subprocess.PIPE, text=True, start_new_session=True)


def run(*arguments, status=0):
    child = start(*arguments)
    out, err = child.communicate(timeout=120)
    assert child.returncode == status, err
    return out, err


@pytest.fixture
def scheduler(processes):
    return "--scheduler", processes.address


@pytest.fixture
def many_events(tmp_path):
    rows = (DATA / "source-scan.csv").read_text().splitlines()
    file = tmp_path / "events.csv"
    file.write_text("\n".join(rows[:1] + rows[1:] * 100) + "\n")
    return file


def test_ctrl_c_ends_it_and_the_next_run_completes(processes, scheduler, many_events, tmp_path):
    out = tmp_path / "out"
    scan = ["scan", "--events", many_events, *INPUTS[2:], *scheduler, "--output", out]
    child = start(*scan)
    wait_until(lambda: list(out.glob("part-*")))
    child.send_signal(signal.SIGINT)
    _, err = child.communicate(timeout=60)
    assert child.returncode == 130, err
    assert err.endswith("zarn-shadow-cluster: interrupted\n") and "Traceback" not in err
    there = {file.name for file in out.glob("part-*")}
    _, err = run(*scan)
    made, kept = re.search(r"^parts made: (\d+); there before: (\d+)$", err, re.MULTILINE).groups()
    assert int(made) + int(kept) == len(list(out.glob("part-*")))
    assert int(kept) >= len(there)


# The rest needs no process of its own.


@pytest.fixture
def call(capsys):
    """Call the command, and return its status and what it says on standard error."""

    def main(*arguments):
        try:
            status = command_main([str(argument) for argument in arguments])
        except SystemExit as ended:  # argparse
            status = ended.code
        return status, capsys.readouterr()

    return main


@pytest.mark.parametrize("option, name, content, wanted", [
    ("--events", "events.csv", "event,x,y,z\n1,2,3,4\n2,5,x,6\n",
     'events.csv: line 3 (row 1), column y: "x" is not a number'),
    ("--events", "events.csv", "event,x,y,z\n\udcff,2,3,4\n",
     "events.csv: event: a name is not UTF-8: b'\\xff'"),
    ("--events", "missing.csv", None, "missing.csv: cannot be read: No such file or directory"),
    ("--pmts", "pmts.csv", "pmt,x,y\n", "pmts.csv: line 1 (the header): missing columns: z"),
    ("--geometry", "tables.json", "[", "tables.json"),
    ("--output", "notes/notes.txt", "", "notes: holds files, but no campaign"),
    ("--tolerance", None, "inf", "tolerance: expected a finite number"),
    ("--wavelength", None, "-1", "wavelength"),
])
def test_wrong_input_is_named(call, scheduler, tmp_path, option, name, content, wanted):
    value = content
    if name is not None:
        value = tmp_path / name
        value.parent.mkdir(exist_ok=True)
        if content is not None:
            value.write_bytes(content.encode(errors="surrogateescape"))
    if option == "--output":
        value = value.parent
    status, said = call("scan", *INPUTS, *scheduler, "--output", tmp_path / "out", option, value)
    assert status == 2
    assert wanted in said.err
    assert said.err.startswith("zarn-shadow-cluster: ") and len(said.err.splitlines()) == 1


def test_a_scan_with_settings_is_that_of_the_other_command(call, scheduler, tmp_path):
    settings = ["--tolerance", "50", "--wavelength", "500", "--run", "7"]
    status, said = call("scan", *INPUTS, *settings, *scheduler, "--output", tmp_path / "out")
    assert status == 0, said.err
    rows = command("scan", *INPUTS, *settings, "--columns", "code")
    assert [f"{name}" for name in pq.read_table(tmp_path / "out")["code"]] == [
        row["code"] for row in rows]


def test_a_dry_run_tells_parts_bytes_and_time_and_writes_nothing(call, scheduler, tmp_path):
    for cluster, workers in ((["--local", "3"], 3), (scheduler, 2)):
        status, said = call("scan", *INPUTS, *cluster, "--output", tmp_path / "out", "--dry-run")
        assert (status, said.err) == (0, "")
        for wanted in ("pairs +400,000", r"parts +\d+ of \d+ events", r"bytes +[\d,]+",
                       r"core time +\d+ s", rf"time left +\d+ s with {workers} workers"):
            assert re.search(f"^{wanted}$", said.out, re.MULTILINE), wanted
    assert list(tmp_path.iterdir()) == []


@pytest.mark.parametrize("arguments", [
    [], ["scan"], ["scan", *INPUTS, "--output", "out"], ["merge", "out"],
    ["scan", *INPUTS, "--output", "out", "--local", "0"],
    ["scan", *INPUTS, "--output", "out", "--local", "two"],
    ["scan", *INPUTS, "--output", "out", "--local", "2", "--events", DATA / "pmts.csv"],
    ["scan", *INPUTS, "--output", "out", "--local", "2", "--scheduler", "tcp://127.0.0.1:1"],
    ["merge", "missing", "all.parquet"],
])
def test_wrong_usage_has_the_status_2(call, arguments):
    status, said = call(*arguments)
    assert status == 2
    assert "zarn-shadow-cluster" in said.err.splitlines()[-1]


def test_ctrl_c_ends_the_reading_of_events(tmp_path):
    pipe = tmp_path / "events.csv"
    os.mkfifo(pipe)
    child = start("scan", "--events", pipe, *INPUTS[2:], "--local", "1", "--output", "out")
    with open(pipe, "w") as events:  # waits for the reader
        events.write("event,x,y,z\n")
        events.flush()
        time.sleep(0.2)
        child.send_signal(signal.SIGINT)
        _, err = child.communicate(timeout=60)
    assert (child.returncode, err) == (130, "zarn-shadow-cluster: interrupted\n")


def test_a_scheduler_that_does_not_answer_is_named(call, tmp_path):
    with dask.config.set({"distributed.comm.timeouts.connect": "1s"}):
        status, said = call(
            "scan", *INPUTS, "--scheduler", "tcp://127.0.0.1:1", "--output", tmp_path / "out")
    assert status == 2
    assert said.err.startswith("zarn-shadow-cluster: --scheduler: tcp://127.0.0.1:1: ")
    assert len(said.err.splitlines()) == 1


def test_help_describes_every_option(call):
    status, said = call("scan", "--help")
    assert status == 0
    for option in ("--events", "--pmts", "--geometry", "--override", "--as-of", "--output",
                   "--scheduler", "--local", "--run", "--tolerance", "--wavelength", "--reflections", "--dry-run"):
        assert re.search(rf"^  {option}( |$)", said.out, re.MULTILINE), option
    assert "Exit status: 0 success" in said.out
