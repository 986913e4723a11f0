"""What a campaign leaves in its folder, and what it refuses to mix."""

import json
import pickle
import shutil

import numpy as np
import pandas as pd
import pyarrow.parquet as pq
import pytest
import zarn
import zarn.cluster
from support import MINIMAL
from zarn.cluster._scan import describe


@pytest.fixture(scope="module")
def some(events, pmts):
    """Small enough to scan again and again."""
    return events[:50], pmts[::40]


@pytest.fixture(scope="module")
def complete(inside, calc, some, tmp_path_factory):
    out = tmp_path_factory.mktemp("complete") / "out"
    zarn.cluster.scan(inside, calc, *some, out=out, events_per_part=8, progress=False)
    return out


@pytest.fixture
def out(complete, tmp_path):
    """A copy of a complete campaign."""
    return shutil.copytree(complete, tmp_path / "out")


def contents(folder):
    return {file.name: file.read_bytes() for file in folder.iterdir()}


def modified(folder):
    return {file.name: file.stat().st_mtime_ns for file in folder.iterdir()}


def test_a_part_holds_codes_with_small_numbers_and_what_made_it(complete, calc, some):
    file = pq.ParquetFile(complete / "part-00000002.parquet")
    columns = [file.metadata.row_group(0).column(i) for i in range(3)]
    assert [c.path_in_schema for c in columns] == ["event", "pmt", "code"]
    assert {c.compression for c in columns} == {"ZSTD"}
    assert [("DELTA_BINARY_PACKED" in c.encodings) for c in columns] == [True, True, False]
    about = json.loads(file.metadata.metadata[b"zarn"])
    assert (about["part"], about["campaign"]["events_per_part"]) == (2, 8)
    assert about["campaign"]["fingerprint"] == calc.fingerprint
    assert about["campaign"]["version"] == zarn.__version__
    table = file.read()
    assert np.array_equal(table["event"], np.repeat(np.arange(16, 24), len(some[1])))
    assert np.array_equal(table["code"], calc.scan(some[0][16:24], some[1]).codes.reshape(-1))
    assert sum(about["counts"]) == len(table)


def test_the_folder_reads_as_one_table(complete, calc, some, tmp_path):
    calc.scan(*some).to_parquet(tmp_path / "local.parquet")
    assert pd.read_parquet(complete).equals(pd.read_parquet(tmp_path / "local.parquet"))


def test_counts_are_those_of_one_scan_with_names_and_reflections(inside, calc, some, tmp_path):
    names = [f"z={i}" for i in range(50)]
    counts = zarn.cluster.scan(
        inside, calc.with_tolerance(30.0), *some, out=tmp_path / "out", wavelength=500.0,
        reflections=True, event_names=names, pmt_names=np.arange(200) * 40, progress=False)
    wanted = calc.with_tolerance(30.0).scan(*some, wavelength=500.0, reflections=True)
    assert counts.numbers.tolist() == wanted.counts().numbers.tolist()
    assert repr(counts).splitlines()[1:] == repr(wanted).splitlines()[1:]
    table = pd.read_parquet(tmp_path / "out")
    assert table["event"].tolist() == np.repeat(names, 200).tolist()
    assert table["pmt"].tolist() == np.tile(np.arange(200) * 40, 50).tolist()
    assert np.array_equal(table["reflected_code"], wanted.reflected_codes.reshape(-1))


def test_parts_that_fit_are_kept_and_their_counts_come_back(inside, calc, some, out, capsys):
    before = modified(out)
    counts = zarn.cluster.scan(inside, calc, *some, out=out)
    assert modified(out) == before
    assert counts.numbers.tolist() == calc.scan(*some).counts().numbers.tolist()
    assert "parts made: 0; there before: 7" in capsys.readouterr().err


def test_a_task_brings_its_own_events_only(calc, events, pmts):
    for names in (None, [f"event {i}" for i in range(len(events))]):
        _, of_events, _ = describe(calc, events, pmts, event_names=names)
        assert len(pickle.dumps(of_events.some(100, 10))) < 1500


def test_the_scheduler_has_few_tasks_at_a_time(inside, calc, some, tmp_path, monkeypatch):
    waiting, submit = [], inside.submit

    def count(*arguments, **options):
        running = sum(not future.done() for future in futures)
        waiting.append(running + 1)
        futures.append(submit(*arguments, **options))
        return futures[-1]

    futures = []
    monkeypatch.setattr(inside, "submit", count)
    zarn.cluster.scan(inside, calc, *some, out=tmp_path / "out", events_per_part=1, progress=False)
    assert len(waiting) == 50 and max(waiting) <= 32


def flip(content, at):
    return content[:at] + bytes([content[at] ^ 4]) + content[at + 1:]


DAMAGES = {
    "empty": lambda content: b"",
    "cut": lambda content: content[:-1],
    "a flipped bit in the codes": lambda content: flip(content, len(content) // 2),
    "a flipped bit at the beginning": lambda content: flip(content, 0),
    "a flipped bit at the end": lambda content: flip(content, len(content) - 5),
    "a flipped bit in the checksum": lambda content: flip(content, content.rfind(b"sha256:") + 9),
    "no checksum": lambda content: content.replace(b"sha256:", b"sha255:"),
    "longer": lambda content: content + b"x",
}


@pytest.mark.parametrize("damage", DAMAGES)
def test_a_damaged_part_is_found_and_made_anew(inside, calc, some, out, damage, capsys):
    before = contents(out)
    part = out / "part-00000003.parquet"
    part.write_bytes(DAMAGES[damage](part.read_bytes()))
    with pytest.raises(zarn.cluster.CampaignError, match=f"{part}: damaged: "):
        zarn.cluster.merge(out, out.parent / "all.parquet")
    zarn.cluster.scan(inside, calc, *some, out=out)
    assert contents(out) == before
    said = capsys.readouterr().err
    assert "part-00000003.parquet: " in said and ": made anew\n" in said
    assert "parts made: 1; there before: 6" in said


def test_leftovers_of_killed_workers_are_removed(inside, calc, some, out):
    (out / ".part-00000003.parquet.0123456789abcdef").write_bytes(b"half")
    zarn.cluster.scan(inside, calc, *some, out=out, progress=False)
    assert not list(out.glob(".*"))


OTHERS = {
    "fingerprint": lambda calc, e, p: (zarn.Calculator(MINIMAL), e, p, {}),
    "tolerance": lambda calc, e, p: (calc.with_tolerance(7.0), e, p, {}),
    "run": lambda calc, e, p: (zarn.Calculator(calc.source, run=3), e, p, {}),
    "wavelength": lambda calc, e, p: (calc, e, p, {"wavelength": 420.0}),
    "reflections": lambda calc, e, p: (calc, e, p, {"reflections": True}),
    "events": lambda calc, e, p: (calc, e[1:], p, {}),
    "events_sha256": lambda calc, e, p: (calc, e[::-1], p, {}),
    "pmts": lambda calc, e, p: (calc, e, p[1:], {}),
    "pmts_sha256": lambda calc, e, p: (calc, e, -p, {}),
    "events_per_part": lambda calc, e, p: (calc, e, p, {"events_per_part": 9}),
}


@pytest.mark.parametrize("field", OTHERS)
def test_a_folder_of_another_campaign_is_refused(inside, calc, some, out, field):
    before = contents(out)
    other, events, pmts, settings = OTHERS[field](calc, *some)
    with pytest.raises(zarn.cluster.CampaignError) as error:
        zarn.cluster.scan(inside, other, events, pmts, out=out, **settings)
    assert str(error.value).startswith(f"{out}: made with {field} ")
    assert contents(out) == before


def test_other_names_are_another_campaign(inside, calc, some, out):
    with pytest.raises(zarn.cluster.CampaignError, match="events_sha256"):
        zarn.cluster.scan(inside, calc, *some, out=out, event_names=np.arange(1, 51))


def test_a_part_of_another_campaign_is_refused_by_name(inside, calc, some, out, tmp_path):
    zarn.cluster.scan(inside, calc.with_tolerance(7.0), *some, out=tmp_path / "other",
                      events_per_part=8, progress=False)
    part = out / "part-00000003.parquet"
    shutil.copy(tmp_path / "other" / part.name, part)
    wanted = f"{part}: made with tolerance 7.0, expected 150.0"
    with pytest.raises(zarn.cluster.CampaignError, match=wanted):
        zarn.cluster.scan(inside, calc, *some, out=out)
    with pytest.raises(zarn.cluster.CampaignError, match=wanted):
        zarn.cluster.merge(out, tmp_path / "all.parquet")


def test_a_part_under_the_name_of_another_is_refused(inside, calc, some, out):
    shutil.copy(out / "part-00000002.parquet", out / "part-00000003.parquet")
    with pytest.raises(zarn.cluster.CampaignError,
                       match="part-00000003.parquet: the content of part-00000002.parquet"):
        zarn.cluster.scan(inside, calc, *some, out=out)


def test_a_folder_with_other_files_is_refused(inside, calc, some, tmp_path):
    (tmp_path / "notes.txt").write_text("")
    with pytest.raises(zarn.cluster.CampaignError, match="holds files, but no campaign"):
        zarn.cluster.scan(inside, calc, *some, out=tmp_path)
    with pytest.raises(zarn.cluster.CampaignError, match="notes.txt: not a folder"):
        zarn.cluster.scan(inside, calc, *some, out=tmp_path / "notes.txt")


@pytest.mark.parametrize("name, content, wanted", [
    ("_campaign.json", "{}", "not the settings of a campaign"),
    ("_campaign.json", "{", "not the settings of a campaign"),
    ("_pmts.parquet", "", "damaged"),
])
def test_damaged_settings_are_refused(inside, calc, some, out, name, content, wanted):
    (out / name).write_text(content)
    (out / "part-00000003.parquet").unlink()
    # Another place, so that the worker reads it.
    moved = out.rename(out.with_name("moved"))
    with pytest.raises(zarn.cluster.CampaignError, match=f"{moved / name}: {wanted}"):
        zarn.cluster.scan(inside, calc, *some, out=moved)


def test_a_scan_without_events_has_no_parts(inside, calc, some, tmp_path):
    counts = zarn.cluster.scan(
        inside, calc, np.empty((0, 3)), some[1], out=tmp_path / "out", progress=False)
    assert counts.numbers.sum() == 0
    zarn.cluster.merge(tmp_path / "out", tmp_path / "all.parquet")
    assert pq.read_table(tmp_path / "all.parquet").column_names == ["event", "pmt", "code"]


def test_wrong_arguments_are_refused_before_anything_is_written(inside, calc, some, tmp_path):
    out = tmp_path / "out"
    for wanted, arguments in (
        ("events_per_part: expected at least 1, got 0", {"events_per_part": 0}),
        ("names of events: expected 50, got", {"event_names": ["a"]}),
        ("wavelength", {"wavelength": -1.0}),
    ):
        with pytest.raises(ValueError, match=wanted):
            zarn.cluster.scan(inside, calc, *some, out=out, **arguments)
    assert not out.exists()
