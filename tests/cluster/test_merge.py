"""All parts as one file: the columns of a scan in one process, to the last byte."""

import os
import resource
import subprocess
import sys

import numpy as np
import pyarrow.parquet as pq
import pytest
import zarn.cluster
from support import run_python

NAMES = np.array([f"z={i}" for i in range(131)])


@pytest.fixture(scope="module")
def million(events):
    """Events of a million pairs with all PMTs."""
    return events[:131]


@pytest.fixture(scope="module")
def out(client, calc, million, pmts, tmp_path_factory):
    folder = tmp_path_factory.mktemp("million") / "out"
    zarn.cluster.scan(client, calc, million, pmts, out=folder, reflections=True,
                      events_per_part=10, progress=False)
    return folder


@pytest.fixture(scope="module")
def client(processes):
    with processes.client() as found:
        yield found


@pytest.fixture(scope="module")
def local(calc, million, pmts, tmp_path_factory):
    file = tmp_path_factory.mktemp("local") / "local.parquet"
    calc.scan(million, pmts, reflections=True).to_parquet(file)
    return pq.read_table(file).replace_schema_metadata()


def test_a_million_pairs_have_the_columns_of_one_process(out, local, tmp_path):
    zarn.cluster.merge(out, tmp_path / "all.parquet")
    merged = pq.ParquetFile(tmp_path / "all.parquet")
    assert merged.read().replace_schema_metadata().equals(local)
    group = merged.metadata.row_group(0)
    assert ["DELTA_BINARY_PACKED" in group.column(i).encodings for i in range(4)] == [
        True, True, False, False]
    assert [f.name for f in tmp_path.iterdir()] == ["all.parquet"]


READ = """
import sys
import numpy as np, pyarrow.parquet as pq, ROOT
columns = ROOT.RDataFrame("verdicts", sys.argv[1]).AsNumpy()
local = pq.read_table(sys.argv[2])
assert sorted(columns) == sorted(local.column_names)
for name, column in columns.items():
    wanted = local[name].to_numpy()
    assert np.array_equal(column.astype(wanted.dtype), wanted), name
"""


def test_an_rntuple_has_the_same_columns(out, local, tmp_path):
    pytest.importorskip("ROOT")
    zarn.cluster.merge(out, tmp_path / "all.root")
    pq.write_table(local, tmp_path / "local.parquet")
    run_python(READ, tmp_path / "all.root", tmp_path / "local.parquet")


def test_names_stay(inside, calc, million, pmts, tmp_path):
    pmt_names = np.array([f"PMT {i}" for i in range(20)])
    zarn.cluster.scan(
        inside, calc, million, pmts[:20], out=tmp_path / "out", event_names=NAMES,
        pmt_names=pmt_names, events_per_part=50, progress=False)
    zarn.cluster.merge(tmp_path / "out", tmp_path / "all.parquet")
    table = pq.read_table(tmp_path / "all.parquet")
    assert table["event"].to_pylist() == np.repeat(NAMES, 20).tolist()
    assert table["pmt"].to_pylist() == np.tile(pmt_names, 131).tolist()
    pytest.importorskip("ROOT")
    zarn.cluster.merge(tmp_path / "out", tmp_path / "all.root")
    run_python(READ, tmp_path / "all.root", tmp_path / "all.parquet")


@pytest.mark.parametrize("name", ["all.parquet", "all.root"])
def test_an_incomplete_campaign_is_refused(out, tmp_path, name):
    parts = [out / f"part-{i:08}.parquet" for i in (2, 3, 5, 7)]
    for part in parts:
        part.rename(part.with_suffix(".away"))
    try:
        with pytest.raises(zarn.cluster.CampaignError) as error:
            zarn.cluster.merge(out, tmp_path / name)
    finally:
        for part in parts:
            part.with_suffix(".away").rename(part)
    assert str(error.value) == (
        f"{out}: 4 of 14 parts are missing: part-00000002.parquet, part-00000003.parquet, "
        "part-00000005.parquet, ...")
    assert list(tmp_path.iterdir()) == []


def test_a_file_among_the_parts_is_refused(out):
    with pytest.raises(zarn.cluster.CampaignError, match="is in the folder of the parts"):
        zarn.cluster.merge(out, out / "part-00000001.parquet")


@pytest.mark.parametrize("name", ["all.parquet", "all.root"])
def test_a_full_disk_leaves_the_old_file(out, tmp_path, name):
    file = tmp_path / name
    file.write_text("old")
    done = subprocess.run(
        [sys.executable, "-m", "zarn.cluster", "merge", out, file], capture_output=True, text=True,
        preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000)), check=False)
    assert done.returncode == 1
    assert done.stderr.startswith(f"zarn-shadow-cluster: {file}: cannot be written: ")
    assert len(done.stderr.splitlines()) == 1
    assert file.read_text() == "old"
    assert os.listdir(tmp_path) == [name]
