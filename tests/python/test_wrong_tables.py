"""Tables that cannot be judged: an exception names the column."""

import awkward as ak
import numpy as np
import pandas as pd
import pyarrow as pa
import pytest
import zarn
from support import COLUMNS, as_columns

VECTORS = list(dict.fromkeys(name.rpartition("_")[0] for name in COLUMNS[1:]))


@pytest.fixture
def columns(paths):
    """Twenty paths."""
    return as_columns(paths[0, :10])


@pytest.mark.parametrize("kind", [np.float32, np.int64, ">f8", complex, str, object])
def test_coordinates_of_another_type_are_refused(calc, columns, kind):
    columns["av2_y"] = columns["av2_y"].astype(kind)
    with pytest.raises(TypeError, match="^av2_y: expected float64, got"):
        calc.check(columns)


@pytest.mark.parametrize("kind", [float, bool, complex, bytes])
def test_types_that_are_no_integers_or_names_are_refused(calc, columns, kind):
    columns["type"] = columns["type"].astype(kind)
    with pytest.raises(TypeError, match="^type: expected integers or names, got"):
        calc.check(columns)


@pytest.mark.parametrize("number", [-1, 8, 99, 2**31 - 1, -(2**31), 2**40])
def test_a_number_that_is_no_type_is_refused(calc, columns, number):
    columns["type"] = columns["type"].astype(np.int64)
    columns["type"][3] = number
    with pytest.raises(ValueError, match=f"^type: {number} is not the number of a type"):
        calc.check(columns)


def test_a_name_that_is_no_type_is_refused(calc, columns):
    columns["type"] = ["Water"] * 19 + ["Heavy water"]
    with pytest.raises(ValueError, match="^type: 'Heavy water' is not a type of light path"):
        calc.check(columns)


@pytest.mark.parametrize("name", ["type", "start_x", "av3_z"])
def test_a_column_of_two_dimensions_is_refused(calc, columns, name):
    columns[name] = np.stack([columns[name]] * 2, axis=-1)
    with pytest.raises(ValueError, match=f"^{name} has 2 dimensions, expected one"):
        calc.check(columns)


@pytest.mark.parametrize("name", ["type", "start_x"])
def test_a_field_of_several_values_is_refused(calc, name):
    records = np.zeros(3, [(n, "i4" if n == "type" else "f8", (2,) if n == name else ())
                           for n in COLUMNS])
    with pytest.raises(ValueError, match=f"^{name} has more than one value in each element"):
        calc.check(records)


@pytest.mark.parametrize("length", [0, 19, 21])
def test_columns_of_unequal_length_are_refused(calc, columns, length):
    columns["end_z"] = np.zeros(length)
    with pytest.raises(ValueError, match=f"^end_z has {length} rows, but type has 20"):
        calc.check(columns)


def test_a_table_without_types_is_refused(calc, columns):
    del columns["type"]
    for table in (columns, pd.DataFrame(columns), pa.table(columns), ak.Array(columns),
                  np.zeros(3, [("start_x", "f8")]), np.zeros(3)):
        with pytest.raises(ValueError, match='^paths: the column "type" is missing'):
            calc.check(table)


@pytest.mark.parametrize("table", [None, 3, "paths.csv", [1, 2], b"paths"], ids=repr)
def test_what_is_no_table_is_refused(calc, table):
    with pytest.raises(TypeError, match="^paths: expected a structured array, a mapping"):
        calc.check(table)


# ---- missing columns and values


@pytest.mark.parametrize("number", range(8))
@pytest.mark.parametrize("vector", VECTORS)
def test_a_missing_column_is_named_or_does_not_matter(calc, all_types, number, vector):
    columns = {n: values[all_types["type"] == number][:200] for n, values in all_types.items()}
    codes = calc.check(columns)
    for axis in "xyz":
        some = {n: values for n, values in columns.items() if n != f"{vector}_{axis}"}
        try:
            assert np.array_equal(calc.check(some), codes)
        except ValueError as error:
            assert str(error).startswith(f"the column {vector}_{axis} is missing; paths of type")
            for table in (pd.DataFrame(some), pa.table(some), ak.Array(some)):
                with pytest.raises(ValueError, match=f"^the column {vector}_{axis} is missing"):
                    calc.check(table)


def test_crossing_points_and_directions_are_required(calc, all_types):
    refused = set()
    for name in COLUMNS[1:]:
        try:
            calc.check({n: values for n, values in all_types.items() if n != name})
        except ValueError:
            refused.add(name.rpartition("_")[0])
    assert {"initial", "final", "av1", "av2"} <= refused


def masked(columns, name):
    mask = np.arange(len(columns[name])) == 3
    return {**columns, name: np.ma.masked_array(columns[name], mask)}


def masked_records(columns, name):
    records = np.ma.zeros(len(columns[name]), [(n, v.dtype) for n, v in columns.items()])
    for n, values in columns.items():
        records[n] = values
    records[name][3] = np.ma.masked
    return records


def with_none(columns, name):
    values = columns[name].tolist()
    values[3] = None
    return {**columns, name: values}


MISSING = {
    "masked array": masked,
    "masked records": masked_records,
    "pandas": lambda c, n: pd.DataFrame(
        {**c, n: pd.array(with_none(c, n)[n], dtype="Int32" if n == "type" else "Float64")}),
    "pandas on pyarrow": lambda c, n: pd.DataFrame(
        {**c, n: pd.array(with_none(c, n)[n],
                          dtype="int32[pyarrow]" if n == "type" else "double[pyarrow]")}),
    "pyarrow": lambda c, n: pa.table(with_none(c, n)),
    "pyarrow batch": lambda c, n: pa.RecordBatch.from_pydict(with_none(c, n)),
    "awkward": lambda c, n: ak.zip(
        {k: ak.Array(v) for k, v in with_none(c, n).items()}, depth_limit=1),
}


@pytest.mark.parametrize("name", ["type", "start_x", "av4_z"])
@pytest.mark.parametrize("kind", MISSING)
def test_missing_values_are_refused(calc, columns, kind, name):
    with pytest.raises(ValueError, match=f"^{name}: values are missing"):
        calc.check(MISSING[kind](columns, name))


def test_missing_names_are_refused(calc, columns):
    names = ["Water"] * 19 + [None]
    for table in ({**columns, "type": names}, pd.DataFrame({**columns, "type": names}),
                  pa.table({**columns, "type": names}), ak.Array({**columns, "type": names})):
        with pytest.raises(ValueError, match="^type: (values are missing|'None' is not a type)"):
            calc.check(table)


def test_a_name_of_two_columns_is_refused(calc, columns):
    table = pd.DataFrame(columns)
    table.insert(0, "start_x", 0.0, allow_duplicates=True)
    with pytest.raises(ValueError, match="^start_x is the name of 2 columns"):
        calc.check(table)


def test_lists_that_are_not_equally_long_are_refused(calc, columns):
    columns["start_y"] = [[1.0, 2.0]] + [[3.0]] * 19
    for table in (columns, ak.Array(columns)):
        with pytest.raises(ValueError, match="^start_y: "):
            calc.check(table)


def test_a_nan_is_a_number(calc, columns):
    columns["av1_x"] = np.full(20, np.nan)
    assert np.array_equal(calc.check(columns), calc.check(pd.DataFrame(columns)))


# ---- anything else


def garbage(numbers):
    """A table, or what is no table, in which any column can be anything."""
    count = int(numbers.integers(0, 6))
    kinds = [
        lambda: numbers.normal(0, 6000, count),
        lambda: numbers.choice([np.nan, np.inf, -np.inf, 0.0, 5e-324, 1.8e308], count),
        lambda: numbers.normal(0, 6000, 3 * count)[::3],
        lambda: numbers.normal(0, 6000, count + 1),
        lambda: numbers.normal(0, 6000, (count, 2)),
        lambda: numbers.integers(-(2**62), 2**62, count),
        lambda: numbers.normal(0, 1, count).astype(np.float32),
        lambda: np.array(["Water"] * count),
        lambda: np.array([None] * count),
        lambda: np.array(["NaT"] * count, "M8[s]"),
        lambda: None,
        lambda: "av1",
        lambda: 3.5,
        lambda: b"\x00" * count,
        lambda: {},
    ]

    def value(usual):
        return kinds[0]() if numbers.random() < usual else kinds[numbers.integers(len(kinds))]()

    usual = numbers.choice([0.5, 0.95, 1.0])
    table = {name: value(usual) for name in COLUMNS if numbers.random() < 0.97}
    if numbers.random() < 0.9:
        table["type"] = numbers.integers(0, 9 if numbers.random() < 0.2 else 8, count)
    return table


def test_garbage_is_judged_or_refused(calc):
    judged = 0
    for seed in range(3000):
        table = garbage(np.random.default_rng(seed))
        try:
            codes = calc.check(table)
            judged += 1
            assert codes.shape == np.shape(table["type"]) and (codes <= 6).all(), seed
            critical = calc.critical_tolerance(table)
            assert critical.shape == (codes.size, len(zarn.COMPONENTS)), seed
        except (TypeError, ValueError) as error:
            assert str(error), seed
    assert judged > 300
