"""Verdicts on light paths in tables of every kind."""

import awkward as ak
import numpy as np
import pandas as pd
import pyarrow as pa
import pytest
import zarn
from support import COLUMNS, NAMES, as_columns

PACKED = np.dtype([("flag", "u1"), ("type", "i4"), *((name, "f8") for name in COLUMNS[1:])])


def packed(columns):
    records = np.zeros(len(columns["type"]), PACKED)
    for name, values in columns.items():
        records[name] = values
    return records


def every_second(columns):
    strided = {}
    for name, values in columns.items():
        strided[name] = np.repeat(values, 2)[::2]
        strided[name].base[1::2] = 0
    return strided


def backwards(columns):
    return {name: values[::-1].copy()[::-1] for name, values in columns.items()}


def with_names(columns):
    return {**columns, "type": NAMES[columns["type"]]}


def chunked(columns):
    table = pa.table(columns)
    return pa.concat_tables([table.slice(0, 1000), table.slice(1000)])


TABLES = {
    "dict": lambda c: c,
    "dict of lists": lambda c: {name: values.tolist() for name, values in c.items()},
    "names of types": with_names,
    "names as objects": lambda c: {**c, "type": NAMES[c["type"]].astype(object)},
    "numbers of 8 bits": lambda c: {**c, "type": c["type"].astype(np.uint8)},
    "numbers of 64 bits": lambda c: {**c, "type": c["type"].astype(np.int64)},
    "numbers of another byte order": lambda c: {**c, "type": c["type"].astype(">i4")},
    "strided": every_second,
    "backwards": backwards,
    "packed records": packed,
    "record array": lambda c: packed(c).view(np.recarray),
    "every second packed record": lambda c: np.repeat(packed(c), 2)[::2],
    "read-only records": lambda c: np.frombuffer(packed(c).tobytes(), PACKED),
    "masked, but nothing is": lambda c: {n: np.ma.masked_array(v) for n, v in c.items()},
    "pandas": pd.DataFrame,
    "pandas with names": lambda c: pd.DataFrame(with_names(c)),
    "pandas categories": lambda c: pd.DataFrame(with_names(c)).astype({"type": "category"}),
    "pandas types of its own": lambda c: pd.DataFrame(c).astype(
        {n: "Int32" if n == "type" else "Float64" for n in c}),
    "pandas on pyarrow": lambda c: pd.DataFrame(c).astype(
        {n: "int32[pyarrow]" if n == "type" else "double[pyarrow]" for n in c}),
    "pyarrow": pa.table,
    "pyarrow chunks": chunked,
    "pyarrow batch": pa.RecordBatch.from_pydict,
    "pyarrow dictionary": lambda c: pa.table(
        {**c, "type": pa.array(with_names(c)["type"]).dictionary_encode()}),
    "awkward": ak.Array,
    "awkward with names": lambda c: ak.Array(with_names(c)),
}


@pytest.fixture(scope="module")
def columns(all_types):
    return all_types


@pytest.fixture(scope="module")
def codes(calc, columns):
    return calc.check(columns)


@pytest.fixture(scope="module")
def path_codes(calc, paths):
    return calc.check(as_columns(paths)).reshape(paths.shape)


@pytest.mark.parametrize("kind", TABLES)
def test_a_table_of_any_kind_gives_the_same_verdicts(calc, columns, codes, kind):
    found = calc.check(TABLES[kind](columns))
    assert found.dtype == np.uint8
    assert np.array_equal(found, codes)


def test_verdicts_are_those_of_the_command(calc, example_paths, example_codes):
    assert np.array_equal(calc.check(example_paths), example_codes)
    assert set(example_codes) == set(range(7))


def test_every_type_and_verdict_occurs(columns, codes):
    assert set(columns["type"]) == set(range(len(NAMES)))
    assert set(codes) == set(range(7))


def test_verdicts_have_the_shape_of_the_paths(calc, paths, path_codes):
    assert np.array_equal(calc.check(paths), path_codes)
    assert np.array_equal(calc.check(paths[::2, ::3]), path_codes[::2, ::3])
    one = calc.check(paths[0, 0, :1].reshape(()))
    assert one.shape == () and one == path_codes[0, 0, 0]


def test_no_paths_have_no_verdicts(calc, paths):
    assert calc.check(paths[:0]).shape == (0, *paths.shape[1:])
    assert calc.check({"type": np.array([], np.int32)}).shape == (0,)


@pytest.mark.parametrize("threads", [1, 2, 1024])
def test_threads_do_not_change_verdicts(calc, columns, codes, threads):
    many = {name: np.tile(values, 10) for name, values in columns.items()}
    assert np.array_equal(calc.check(many, threads=threads), np.tile(codes, 10))


@pytest.mark.parametrize("threads", [0, -1, 1025, 2**70])
def test_a_wrong_number_of_threads_is_refused(calc, columns, threads):
    with pytest.raises(ValueError, match="threads: expected 1 to 1,024, got"):
        calc.check(columns, threads=threads)


# ---- read in place

IN_PLACE = ["dict", "strided", "backwards", "packed records", "read-only records", "pandas",
            "pyarrow", "awkward"]


@pytest.mark.parametrize("kind", IN_PLACE)
def test_coordinates_are_read_in_place(calc, columns, codes, kind, allocated):
    many = TABLES[kind]({name: np.tile(values, 4) for name, values in columns.items()})
    out = np.empty(4 * codes.size, np.uint8)
    assert allocated(lambda: calc.check(many, out=out)) < out.nbytes  # one column has 8 times
    assert np.array_equal(out, np.tile(codes, 4))


# ---- out=


def test_out_is_filled_in_and_returned(calc, paths, path_codes):
    out = np.full(paths.shape, 99, np.uint8)
    assert calc.check(paths, out=out) is out
    assert np.array_equal(out, path_codes)


@pytest.mark.parametrize(
    "out",
    [np.empty(10, np.int8), np.empty(10, bool), np.empty(10), [0] * 10, memoryview(bytearray(10))],
    ids=lambda out: getattr(out, "dtype", type(out)),
)
def test_out_of_another_type_is_refused(calc, columns, out):
    some = {name: values[:10] for name, values in columns.items()}
    with pytest.raises(TypeError, match="^out: expected an array of uint8, got"):
        calc.check(some, out=out)


@pytest.mark.parametrize("shape", [9, 11, (10, 1), (2, 5), ()])
def test_out_of_another_shape_is_refused(calc, columns, shape):
    some = {name: values[:10] for name, values in columns.items()}
    with pytest.raises(ValueError, match=r"^out: expected the shape \(10,\), got"):
        calc.check(some, out=np.empty(shape, np.uint8))


def test_out_that_is_not_dense_or_not_writeable_is_refused(calc, columns):
    some = {name: values[:10] for name, values in columns.items()}
    read_only = np.empty(10, np.uint8)
    read_only.flags.writeable = False
    for out in (np.empty(20, np.uint8)[::2], np.empty(10, np.uint8)[::-1], read_only):
        with pytest.raises(ValueError, match="^out: expected a dense array that can be written"):
            calc.check(some, out=out)


def test_out_with_a_mask_or_in_the_memory_of_a_column_is_refused(calc, columns):
    some = {name: values[:10].copy() for name, values in columns.items()}
    with pytest.raises(TypeError, match="^out: expected an array of uint8, got MaskedArray"):
        calc.check(some, out=np.ma.zeros(10, np.uint8))
    with pytest.raises(ValueError, match="^out: expected an array apart from the columns"):
        calc.check(some, out=some["end_x"].view(np.uint8)[:10])


def test_out_is_not_touched_if_the_paths_are_refused(calc, columns):
    out = np.full(10, 99, np.uint8)
    some = {name: values[:10] for name, values in columns.items()}
    del some["av2_x"]
    with pytest.raises(ValueError):
        calc.check(some, out=out)
    assert (out == 99).all()


# ---- critical tolerances


def test_critical_tolerances_are_those_of_the_command(calc, example_paths, example_rows):
    found = calc.critical_tolerance(example_paths)
    assert found.shape == (len(example_rows), 6)
    wanted = [float(row["critical_tolerance"]) for row in example_rows]
    assert np.array_equal(found.min(axis=-1), wanted)
    names = [zarn.COMPONENTS[i].label for i in found.argmin(axis=-1)]
    by = [row["critical_by"] for row in example_rows]
    assert all(name == b for name, b, at in zip(names, by, wanted) if np.isfinite(at))


@pytest.mark.parametrize("component", zarn.COMPONENTS)
def test_the_critical_tolerance_of_one_component_is_one_of_all(calc, paths, component):
    some = paths[:3, ::10]
    all_of_them = calc.critical_tolerance(some)
    one = calc.critical_tolerance(some, component)
    assert one.shape == some.shape
    assert np.array_equal(one, all_of_them[..., component - 1])


def test_verdicts_at_a_tolerance_follow_from_critical_tolerances(calc, paths):
    some = paths[:, ::10]
    critical = calc.critical_tolerance(some).min(axis=-1)
    for tolerance in (0.0, 60.0, 150.0, 300.0):
        shadowed = calc.with_tolerance(tolerance).check(some) > 0
        assert np.array_equal(shadowed, critical <= tolerance)


@pytest.mark.parametrize("component", [0, 7, -1, 99, zarn.Verdict.CLEAR, "AVPipe"])
def test_what_is_not_a_component_is_refused(calc, paths, component):
    with pytest.raises(ValueError, match="component: expected one of zarn.COMPONENTS, got"):
        calc.critical_tolerance(paths[0, 0], component)
    with pytest.raises(ValueError, match="component: expected one of zarn.COMPONENTS, got"):
        calc.why_off(component)
