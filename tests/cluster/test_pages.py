"""What the pages show of campaigns is right."""

import re
import shlex
import subprocess
import sys

import pyarrow.parquet as pq
import pytest
from support import DATA, REFERENCE, SOURCE, command

PAGE = SOURCE / "docs" / "scale.md"


def blocks(page, language):
    return re.findall(rf"^```{language}\n(.*?)^```$", page.read_text(), re.MULTILINE | re.DOTALL)


def commands(page):
    """The words of the commands zarn-shadow-cluster on a page."""
    lines = "\n".join(blocks(page, "sh")).replace("\\\n", " ").splitlines()
    found = [shlex.split(line) for line in lines]
    return [words[1:] for words in found if words and words[0] == "zarn-shadow-cluster"]


@pytest.fixture
def folder(tmp_path):
    (tmp_path / "data").symlink_to(DATA)
    return tmp_path


def run(folder, *arguments):
    return subprocess.run([sys.executable, *arguments], cwd=folder, capture_output=True, text=True,
                          timeout=120, check=True)


def test_the_commands_run_one_after_another(folder):
    first, *others = commands(PAGE)
    assert commands(SOURCE / "README.md") == [first]
    said = run(folder, "-m", "zarn.cluster", *first).stderr
    assert re.search(r"^dashboard: http://127.0.0.1:\d+/status$", said, re.MULTILINE)
    assert re.search(r"^8 of 8 parts, [\d,]+ pairs a second in \d+ s$", said, re.MULTILINE)
    for words in others:
        run(folder, "-m", "zarn.cluster", *words)
    table = pq.read_table(folder / "verdicts.parquet")
    rows = command("scan", "--events", DATA / "source-scan.csv", "--pmts", DATA / "pmts.csv",
                   "--geometry", REFERENCE, "--columns", "code")
    assert table["event"].to_pylist() == [row["event"] for row in rows]
    assert table["pmt"].to_pylist() == [int(row["pmt"]) for row in rows]
    assert table["code"].to_pylist() == [int(row["code"]) for row in rows]
    assert (folder / "verdicts.root").exists()


def test_the_program_prints_what_is_shown(folder):
    program, *_ = blocks(PAGE, "python")
    (wanted,) = blocks(PAGE, "output")
    (folder / "program.py").write_text(program)
    assert run(folder, "program.py").stdout == wanted


def test_the_figures_follow_from_what_was_measured(tmp_path):
    copy = tmp_path / "scale.md"
    copy.write_text(PAGE.read_text())
    plan = SOURCE / "benchmarks" / "cluster_plan.py"
    run(tmp_path, plan, SOURCE / "docs" / "scale.json", "--update", copy)
    assert copy.read_text() == PAGE.read_text()
