"""Calculators: made from tables, copied, pickled, shown."""

import concurrent.futures
import copy
import hashlib
import json
import multiprocessing
import os
import pickle
import shutil

import numpy as np
import pytest
import zarn
from support import MINIMAL, REFERENCE, SOURCE, tables_of


@pytest.fixture
def tables(tmp_path):
    """A copy of the reference detector's tables."""
    return shutil.copytree(REFERENCE, tmp_path / "tables")


def change(file, table, field, value):
    entries = json.loads(file.read_text())
    for entry in entries:
        if entry["table"] == table and field in entry["fields"]:
            entry["fields"][field] = value
    file.write_text(json.dumps(entries))


def test_a_source_can_be_a_path_or_text_and_a_file_or_folder(paths, tmp_path):
    entries = [e for f in sorted(REFERENCE.glob("*.json")) for e in json.loads(f.read_text())]
    (tmp_path / "all.json").write_text(json.dumps(entries))
    codes = zarn.Calculator(REFERENCE).check(paths)
    for source in (str(REFERENCE), tmp_path / "all.json", str(tmp_path / "all.json")):
        assert np.array_equal(zarn.Calculator(source).check(paths), codes)


def test_properties_tell_what_it_was_made_from():
    calc = zarn.Calculator(REFERENCE, run=7, tolerance=99)
    assert (calc.source, calc.run, calc.tolerance) == (str(REFERENCE), 7, 99.0)
    assert calc.components == zarn.COMPONENTS
    for name in ("source", "run", "tolerance", "fingerprint", "components"):
        with pytest.raises(AttributeError):
            setattr(calc, name, None)


# ---- another tolerance


@pytest.mark.parametrize("tolerance", [0.0, -20.0, 500.0])
def test_a_copy_with_a_tolerance_is_a_calculator_with_it(calc, paths, tolerance):
    copy, fresh = calc.with_tolerance(tolerance), zarn.Calculator(REFERENCE, tolerance=tolerance)
    assert np.array_equal(copy.check(paths), fresh.check(paths))
    assert repr(copy) == repr(fresh)
    assert copy.fingerprint == fresh.fingerprint
    assert copy.belly_plates.grid_points.tolist() == fresh.belly_plates.grid_points.tolist()


def test_a_copy_with_a_tolerance_reads_no_files(tables, paths):
    calc = zarn.Calculator(tables)
    before = calc.check(paths)
    shutil.rmtree(tables)
    copy = calc.with_tolerance(0.0)
    assert not np.array_equal(copy.check(paths), before)
    assert np.array_equal(calc.check(paths), before)
    assert np.array_equal(copy.with_tolerance(150.0).check(paths), before)
    del calc
    assert copy.scan([[0.0, 0.0, 0.0]], [[8300.0, 0.0, 0.0]]).codes.shape == (1, 1)


@pytest.mark.parametrize("tolerance", [np.nan, np.inf, -np.inf])
def test_a_tolerance_that_is_not_finite_is_refused(calc, tolerance):
    for call in (lambda: zarn.Calculator(REFERENCE, tolerance=tolerance),
                 lambda: calc.with_tolerance(tolerance)):
        with pytest.raises(ValueError, match="tolerance: expected a finite number, got"):
            call()


@pytest.mark.parametrize("run", [2**31, -(2**31) - 1])
def test_a_run_that_does_not_fit_is_refused(run):
    with pytest.raises(ValueError, match="run: expected -2,147,483,648 to 2,147,483,647, got"):
        zarn.Calculator(REFERENCE, run=run)


@pytest.mark.parametrize("run", [1.5, "1"])
def test_a_run_that_is_no_whole_number_is_refused(run):
    with pytest.raises(TypeError):
        zarn.Calculator(REFERENCE, run=run)


def test_numbers_of_numpy_are_numbers(tmp_path):
    calc = zarn.Calculator(REFERENCE, run=np.int64(3), tolerance=np.float32(12.5))
    result = calc.scan(np.zeros((1, 3)), [[8300.0, 0.0, 0.0]], wavelength=np.float32(400))
    result.save(tmp_path / "scan.npz")
    origin = zarn.ScanResult.load(tmp_path / "scan.npz").origin
    assert (origin["run"], origin["tolerance"], origin["wavelength"]) == (3, 12.5, 400.0)


# ---- several detectors


def test_two_detectors_are_used_side_by_side(paths):
    reference, minimal = zarn.Calculator(REFERENCE), zarn.Calculator(MINIMAL)
    codes = [calc.check(paths) for calc in (reference, minimal, reference, minimal)]
    assert not np.array_equal(codes[0], codes[1])
    assert np.array_equal(codes[0], codes[2]) and np.array_equal(codes[1], codes[3])
    assert reference.fingerprint != minimal.fingerprint
    assert len(reference.hold_down_ropes.rolls) != len(minimal.hold_down_ropes.rolls)


def test_tables_are_those_of_the_run(tables):
    lower = {"table": "GEO", "index": "av", "runs": [100, 200], "pass": 1,
             "fields": {"neck_boss_z": 5700.0}}
    (tables / "lower_boss.json").write_text(json.dumps([lower]))
    angles = [zarn.Calculator(tables, run=run).neck_boss.angle for run in (99, 100, 200, 201)]
    assert angles[0] == angles[3] != angles[1] == angles[2]


# ---- pickled


def pickled(calc):
    return pickle.loads(pickle.dumps(calc))


def test_a_pickled_calculator_is_the_same(paths):
    calc = zarn.Calculator(REFERENCE, run=3, tolerance=77.0)
    for copy in (pickled(calc), pickled(zarn.Calculator(REFERENCE, 3).with_tolerance(77.0))):
        assert repr(copy) == repr(calc)
        assert copy.fingerprint == calc.fingerprint
        assert np.array_equal(copy.check(paths), calc.check(paths))


def test_a_pickle_is_small(calc):
    assert len(pickle.dumps(calc)) < 1000


def test_a_calculator_is_sent_to_another_process(calc, events, pmts):
    with concurrent.futures.ProcessPoolExecutor(
        1, mp_context=multiprocessing.get_context("spawn")
    ) as pool:
        result = pool.submit(calc.scan, events, pmts).result()
    assert np.array_equal(result.codes, calc.scan(events, pmts).codes)


def test_a_pickle_of_tables_that_have_changed_is_refused(tables):
    pickle_of_old = pickle.dumps(zarn.Calculator(tables))
    pickle.loads(pickle_of_old)
    change(tables / "ncd_anchors.json", "SOLID", "half_z", 61.0)
    with pytest.raises(zarn.Error, match="tables: the tables have changed since the calculator"):
        pickle.loads(pickle_of_old)


def test_a_pickle_without_its_tables_is_refused(tables):
    pickle_of_old = pickle.dumps(zarn.Calculator(tables))
    shutil.rmtree(tables)
    with pytest.raises(zarn.TableFileError, match="tables"):
        pickle.loads(pickle_of_old)


def test_a_pickle_works_in_another_folder(tables, monkeypatch, tmp_path):
    monkeypatch.chdir(tables.parent)
    pickled = pickle.dumps(zarn.Calculator(tables.name))
    monkeypatch.chdir(REFERENCE)
    assert pickle.loads(pickled).source == str(tables)


def test_a_copy_is_the_calculator_itself(calc):
    assert copy.copy(calc) is calc
    assert copy.deepcopy([calc])[0] is calc


# ---- shown


def test_the_text_says_which_components_are_on_and_why_others_are_off(tables):
    (tables / "av_pipes.json").unlink()
    change(tables / "ncd_anchors.json", "GEO_LOCATIONS", "x", [])
    change(tables / "ncd_anchors.json", "GEO_LOCATIONS", "y", [])
    change(tables / "ncd_anchors.json", "GEO_LOCATIONS", "z", [])
    calc = zarn.Calculator(tables)
    off = {zarn.Verdict.AV_PIPE, zarn.Verdict.NCD_ANCHOR}
    assert set(zarn.COMPONENTS) - set(calc.components) == off
    assert "av_pipe-1" in calc.why_off(zarn.Verdict.AV_PIPE)
    assert calc.why_off(zarn.Verdict.NCD_ANCHOR) == "nothing to test"
    assert calc.why_off(zarn.Verdict.NECK_BOSS) == ""
    assert repr(calc).splitlines() == [
        f"Calculator({str(tables)!r}, run=0, tolerance=150.0)",
        "  on: AVHDRope, SupportRope, BellyPlate, NeckBoss",
        "  off: NCDAnchor (nothing to test)",
        f"  off: AVPipe ({calc.why_off(zarn.Verdict.AV_PIPE)})",
    ]


def test_the_text_of_a_detector_without_hardware_says_so(tmp_path):
    shutil.copy(REFERENCE / "vessel.json", tmp_path)
    assert "\n  on: none\n  off: AVHDRope (" in repr(zarn.Calculator(tmp_path))


# ---- errors of the library


def test_a_missing_source_is_a_table_file_error(tmp_path):
    with pytest.raises(zarn.TableFileError, match="none.json"):
        zarn.Calculator(tmp_path / "none.json")


def test_a_table_that_is_no_json_is_a_table_file_error(tables):
    (tables / "vessel.json").write_text("[")
    with pytest.raises(zarn.TableFileError, match="vessel.json"):
        zarn.Calculator(tables)


def test_errors_with_bytes_that_are_no_utf_8_keep_their_class(tables):
    (tables / "vessel.json").write_bytes(b'[{"table": "SOLID \xb0"')
    with pytest.raises(zarn.TableFileError, match="vessel.json"):
        zarn.Calculator(tables)


def test_a_path_can_have_any_bytes(tables, paths, calc):
    place = tables.with_name(os.fsdecode(b"tables \xff"))
    tables.rename(place)
    for source in (place, os.fsencode(place)):
        moved = zarn.Calculator(source)
        assert np.array_equal(moved.check(paths), calc.check(paths))


def test_a_missing_radius_is_not_found(tables):
    (tables / "vessel.json").unlink()
    with pytest.raises(zarn.DBNotFoundError, match="acrylic_vessel_inner"):
        zarn.Calculator(tables)


def test_a_radius_of_the_wrong_type_is_a_value_error_of_the_tables(tables):
    change(tables / "vessel.json", "SOLID", "r_sphere", "wide")
    with pytest.raises(zarn.Error, match="r_sphere"):
        zarn.Calculator(tables)


def test_missing_media_are_not_found_when_they_are_needed(tables, paths):
    (tables / "optics.json").unlink()
    calc = zarn.Calculator(tables)
    calc.check(paths)
    position = [[8300.0, 0.0, 0.0]]
    for call in (calc.light_paths, calc.scan):
        with pytest.raises(zarn.DBNotFoundError, match="OPTICS"):
            call(position, position)
    with pytest.raises(zarn.DBNotFoundError, match="OPTICS"):
        calc.explain(event=position, pmt=position)


def test_errors_of_the_library_are_runtime_errors():
    for kind in (zarn.DBNotFoundError, zarn.DBValueError, zarn.TableFileError):
        assert issubclass(kind, zarn.Error)
    assert issubclass(zarn.Error, RuntimeError)


def test_the_fingerprint_is_the_hash_of_the_tables(calc):
    assert hashlib.sha256(calc.tables.encode()).hexdigest() == calc.fingerprint
    entry = json.loads(calc.tables)["SOLID"]["hold_down_rope"]
    assert entry == tables_of(REFERENCE)["SOLID", "hold_down_rope"]


def test_the_version_is_that_of_the_library():
    assert f"project(zarn VERSION {zarn.__version__}" in (SOURCE / "CMakeLists.txt").read_text()
