"""Campaigns with tables of a database, into which somebody imports meanwhile."""

import json
import re

import pytest
import zarn
import zarn.cluster
from support import REFERENCE, import_tables
from test_command import INPUTS, call, scheduler  # noqa: F401: fixtures


def write_no_plates(folder, first_run=None):
    """A file that removes the belly plates, for all runs or from one on."""
    file = folder / "no_plates.json"
    file.write_text(json.dumps([
        {"table": "GEO_LOCATIONS", "index": "belly_plates", "runs": [first_run, None], "pass": 1,
         "fields": {"x": [], "y": [], "z": []}}]))
    return file


@pytest.fixture
def database(tmp_path):
    found = f"sqlite:{tmp_path / 'tables.db'}"
    import_tables(REFERENCE, found)
    return found


def remove_a_part(out):
    part = out / "part-00000000.parquet"
    content = part.read_bytes()
    part.unlink()
    return part, content


def test_a_command_that_goes_on_reads_the_tables_with_which_it_began(
    call, scheduler, tmp_path, database  # noqa: F811
):
    out = tmp_path / "out"
    scan = ["scan", *INPUTS[:4], "--geometry", database, *scheduler, "--output", out]
    status, said = call(*scan)
    assert status == 0, said.err
    shown = re.search(r"^  BellyPlate.*$", said.err, re.MULTILINE)[0]
    part, content = remove_a_part(out)
    import_tables(write_no_plates(tmp_path), database)
    status, said = call(*scan)
    assert status == 0, said.err
    assert shown in said.err
    assert part.read_bytes() == content
    as_of = json.loads((out / "_campaign.json").read_text())["as_of"]
    assert zarn.Calculator(database, as_of=as_of).components == zarn.COMPONENTS
    assert zarn.Verdict.BELLY_PLATE not in zarn.Calculator(database).components


def test_tables_of_another_time_are_refused_with_the_time_to_read(
    inside, pmts, tmp_path, database
):
    old, out = zarn.Calculator(database), tmp_path / "out"
    some = ([[0, 0, 3000]], pmts[::40])
    zarn.cluster.scan(inside, old, *some, out=out, progress=False)
    import_tables(write_no_plates(tmp_path), database)
    with pytest.raises(zarn.cluster.CampaignError, match=f"read as of {old.as_of}$"):
        zarn.cluster.scan(inside, zarn.Calculator(database), *some, out=out, progress=False)
    again = zarn.Calculator(database, as_of=old.as_of)
    zarn.cluster.scan(inside, again, *some, out=out, progress=False)


def test_an_import_that_changes_other_runs_does_not_matter(
    inside, pmts, tmp_path, database
):
    some, out = ([[0, 0, 3000]], pmts[::40]), tmp_path / "out"
    zarn.cluster.scan(inside, zarn.Calculator(database), *some, out=out, progress=False)
    import_tables(write_no_plates(tmp_path, first_run=1000), database)
    zarn.cluster.scan(inside, zarn.Calculator(database), *some, out=out, progress=False)


def test_an_override_goes_to_the_workers(call, scheduler, tmp_path):  # noqa: F811
    status, said = call(
        "scan", *INPUTS, "--override", write_no_plates(tmp_path), *scheduler,
        "--output", tmp_path / "out")
    assert status == 0, said.err
    assert re.search(r"^  BellyPlate +0 ", said.err, re.MULTILINE)


@pytest.mark.parametrize("more, wanted", [
    (["--geometry", "sqlite:missing.db"], "missing.db"),
    (["--geometry", REFERENCE, "--as-of", "2026-01-31"],
     "as_of: .* is not a database"),
])
def test_wrong_sources_are_named(call, scheduler, tmp_path, more, wanted):  # noqa: F811
    status, said = call(
        "scan", *INPUTS[:4], *more, *scheduler, "--output", tmp_path / "out")
    assert status == 2
    assert re.search(wanted, said.err) and len(said.err.splitlines()) == 1
