"""What a scan's result can be turned into: tables, files, and text."""

import dataclasses
import json
import pickle

import numpy as np
import pyarrow as pa
import pyarrow.parquet as pq
import pytest
import zarn
from test_scan import arrays_of, assert_same


@pytest.fixture(scope="module")
def full(calc, events, pmts):
    """A result with every array."""
    return calc.scan(events, pmts, reflections=True, smear=30.0, samples=5,
                     tolerances=[100.0, 200.0])


@pytest.fixture(scope="module")
def plain(calc, events, pmts):
    return calc.scan(events, pmts)


def assert_is_table_of(columns, result):
    events, pmts = result.codes.shape
    assert np.array_equal(columns["event"], np.repeat(np.arange(events), pmts))
    assert np.array_equal(columns["pmt"], np.tile(np.arange(pmts), events))
    assert np.array_equal(columns["code"], result.codes.reshape(-1))
    assert np.array_equal(columns["reflected_code"], result.reflected_codes.reshape(-1))
    for name in ("smeared_fraction", "smeared_reflected_fraction"):
        wanted = getattr(result, name).reshape(-1)
        np.testing.assert_array_equal(np.asarray(columns[name]), wanted)


def test_pandas_has_a_row_for_each_pair(full, plain):
    table = full.to_pandas()
    assert_is_table_of(table, full)
    assert table["verdict"].tolist() == [zarn.Verdict(c).label for c in full.codes.flat]
    assert list(plain.to_pandas()) == ["event", "pmt", "code", "verdict"]


def test_arrow_has_a_row_for_each_pair(full, plain):
    table = full.to_arrow()
    assert_is_table_of({name: table[name].to_numpy() for name in table.column_names}, full)
    assert table["code"].type == pa.uint8()
    assert table["verdict"].to_pylist() == [zarn.Verdict(c).label for c in full.codes.flat]
    assert json.loads(table.schema.metadata[b"zarn"]) == full.origin
    assert plain.to_arrow().column_names == ["event", "pmt", "code", "verdict"]


def test_parquet_has_a_row_for_each_pair(full, tmp_path):
    full.to_parquet(tmp_path / "scan.parquet")
    table = pq.read_table(tmp_path / "scan.parquet")
    assert_is_table_of({name: table[name].to_numpy() for name in table.column_names}, full)
    assert "verdict" not in table.column_names
    assert json.loads(table.schema.metadata[b"zarn"]) == full.origin
    encodings = pq.ParquetFile(tmp_path / "scan.parquet").metadata.row_group(0).column(1).encodings
    assert "DELTA_BINARY_PACKED" in encodings


def test_the_origin_says_what_made_a_scan(calc, full):
    assert full.origin == {
        "source": calc.source, "overrides": None, "as_of": None,
        "fingerprint": calc.fingerprint, "run": 0, "tolerance": 150.0, "wavelength": 400.0,
        "off": {}}


# ---- files


@pytest.mark.parametrize("which", ["full", "plain"])
def test_what_is_saved_is_loaded(which, request, tmp_path):
    result = request.getfixturevalue(which)
    result.save(tmp_path / "scan.npz")
    assert_same(zarn.ScanResult.load(tmp_path / "scan.npz"), result)
    assert [f.name for f in tmp_path.iterdir()] == ["scan.npz"]


def test_the_number_of_the_first_event_is_saved(plain, tmp_path):
    dataclasses.replace(plain, first_event=7).save(tmp_path / "scan.npz")
    assert zarn.ScanResult.load(tmp_path / "scan.npz").first_event == 7


def test_a_result_can_be_pickled(full):
    assert_same(pickle.loads(pickle.dumps(full)), full)


def test_a_file_without_suffix_keeps_its_name(plain, tmp_path):
    plain.save(str(tmp_path / "scan"))
    assert_same(zarn.ScanResult.load(str(tmp_path / "scan")), plain)


def test_results_are_equal_only_to_themselves(plain):
    assert plain == plain and plain != pickle.loads(pickle.dumps(plain))


def damaged(arrays, **changed):
    some = {n: a for n, a in {**arrays, **changed}.items() if a is not None}
    return lambda file: np.savez(file, **some)


def bad_files(result):
    arrays = {n: a for n, a in arrays_of(result).items() if a is not None}
    arrays["origin"] = np.array("{}")
    yield "empty", lambda file: file.write(b"")
    yield "text", lambda file: file.write(b"event,pmt,code\n")
    yield "one array", lambda file: np.save(file, result.codes)
    yield "pickle", lambda file: pickle.dump(result, file)
    yield "objects", damaged(arrays, codes=np.array([None]))
    yield "another archive", lambda file: np.savez(file, a=np.zeros(3))
    for name in ("events", "pmts", "codes", "origin"):
        yield f"no {name}", damaged(arrays, **{name: None})
    for name in set(arrays) - {"origin"}:
        yield f"{name} cut", damaged(arrays, **{name: arrays[name][..., :-1]})
        yield f"{name} of another type", damaged(arrays, **{name: arrays[name].astype("f4")})
    yield "origin no JSON", damaged(arrays, origin=np.array("{"))


def test_a_file_that_is_no_scan_is_refused(full, tmp_path):
    for what, write in bad_files(full):
        with open(tmp_path / "bad.npz", "wb") as file:
            write(file)
        with pytest.raises(ValueError, match="bad.npz: not a saved scan"):
            zarn.ScanResult.load(tmp_path / "bad.npz")
            pytest.fail(what)


def test_a_damaged_file_is_refused(plain, tmp_path):
    plain.save(tmp_path / "scan.npz")
    content = (tmp_path / "scan.npz").read_bytes()
    for damage in (content[: len(content) // 2], content.replace(b"codes", b"c0des")):
        (tmp_path / "bad.npz").write_bytes(damage)
        with pytest.raises(ValueError, match="bad.npz: not a saved scan"):
            zarn.ScanResult.load(tmp_path / "bad.npz")


def test_a_missing_file_is_reported_as_missing(tmp_path):
    with pytest.raises(FileNotFoundError):
        zarn.ScanResult.load(tmp_path / "none.npz")


@pytest.mark.parametrize("write", ["save", "to_parquet"])
def test_a_target_is_kept_if_writing_fails(plain, tmp_path, monkeypatch, write):
    target = tmp_path / "scan"
    target.write_text("as it was")

    def fail(*_arguments, **_more):
        raise OSError("disk full")

    monkeypatch.setattr("os.fsync", fail)
    with pytest.raises(OSError, match="disk full"):
        getattr(plain, write)(target)
    assert target.read_text() == "as it was"
    assert [f.name for f in tmp_path.iterdir()] == ["scan"]
    monkeypatch.undo()
    getattr(plain, write)(target)
    assert target.read_bytes() != b"as it was"


def test_a_new_file_has_the_usual_permissions(plain, tmp_path):
    plain.save(tmp_path / "scan.npz")
    (tmp_path / "usual").write_text("")
    modes = {f.stat().st_mode for f in tmp_path.iterdir()}
    assert len(modes) == 1


def test_writing_into_no_folder_fails(plain, tmp_path):
    with pytest.raises(FileNotFoundError):
        plain.save(tmp_path / "none" / "scan.npz")


# ---- on the screen


def test_the_text_has_counts_and_fractions(plain):
    counts = plain.counts()
    lines = repr(plain).splitlines()
    assert lines[0] == "ScanResult(24 events x 400 PMTs)"
    assert lines[1].split() == ["paths", f"{counts.paths:,}"]
    assert lines[2].split() == ["shadowed", f"{counts.shadowed:,}", f"{counts.fraction:.3%}"]
    assert [line.split()[0] for line in lines[3:]] == [c.label for c in zarn.COMPONENTS]


def test_the_page_has_the_same_numbers_as_the_text(plain):
    page = plain._repr_html_()
    for line in repr(plain).splitlines()[1:]:
        name, *numbers = line.split()
        assert f"{name}</th>" in page
        for number in numbers:
            assert f"<td>{number}</td>" in page


def test_the_text_of_a_scan_without_paths_has_no_fractions(calc):
    assert "%" not in repr(calc.scan(np.empty((0, 3)), np.empty((0, 3))))


def test_counts_print_as_a_table(full):
    assert repr(full.counts()).splitlines()[1:] == repr(full).splitlines()[1:]
    assert repr(full.per_event_at_tolerances()) == "Counts(by event, tolerance)"
