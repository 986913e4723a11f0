"""Columns of numbers from what users have: NumPy, pandas, Arrow and Awkward tables."""

from __future__ import annotations

from collections.abc import Mapping
from typing import Any

import numpy as np
import numpy.typing as npt

from . import _core
from ._path_type import PathType

#: A table of light paths: a structured array, a mapping of arrays, or a data frame.
PathTable = Any

_COLUMNS = _core.path_columns()
_TYPE_NUMBERS = {kind.label: kind.value for kind in PathType}


def _is_table(values: Any) -> bool:
    if isinstance(values, np.ndarray):
        return values.dtype.names is not None
    return isinstance(values, Mapping) or any(
        hasattr(values, names) for names in ("column_names", "columns", "fields")
    )


def _field(table: Any, name: str) -> Any:
    """A column of a table, or None if there is no such column."""
    if isinstance(table, np.ndarray):
        if name not in (table.dtype.names or ()):
            return None
        column = table[name]
        if column.shape != table.shape:
            raise ValueError(f"{name} has more than one value in each element")
        return column.reshape(-1)
    if isinstance(table, Mapping):
        return table.get(name)
    if hasattr(table, "column_names"):  # pyarrow
        return table.column(name) if name in table.column_names else None
    if hasattr(table, "columns"):  # pandas
        return table[name] if name in table.columns else None
    if hasattr(table, "fields"):  # awkward
        return table[name] if name in table.fields else None
    raise TypeError(
        "paths: expected a structured array, a mapping of arrays, or a table of pandas, "
        f"pyarrow or awkward, got {type(table).__name__}"
    )


def _values(column: Any) -> npt.NDArray[Any]:
    if hasattr(column, "null_count"):  # pyarrow
        if column.null_count > 0:
            raise ValueError("values are missing")
        if hasattr(column, "combine_chunks"):
            column = column.combine_chunks()
        if hasattr(column, "dictionary_decode"):
            column = column.dictionary_decode()
        return np.asarray(column.to_numpy(zero_copy_only=False))
    # In pandas' own types a missing value is not NaN, but becomes NaN.
    if hasattr(column, "isna") and not isinstance(column.dtype, np.dtype):
        if column.isna().any():
            raise ValueError("values are missing")
    array = column.to_numpy() if hasattr(column, "to_numpy") else np.asanyarray(column)
    if np.ma.is_masked(array):
        raise ValueError("values are missing")
    return np.asarray(array)


def _array(column: Any, name: str) -> npt.NDArray[Any]:
    """The values of a column as a one-dimensional array, without a copy if possible."""
    if hasattr(column, "columns"):  # pandas, of a name that is there twice
        raise ValueError(f"{name} is the name of {len(column.columns)} columns")
    try:
        array = _values(column)
    except ValueError as error:  # also of lists that are not equally long
        raise ValueError(f"{name}: {error}") from error
    if array.ndim != 1:
        raise ValueError(f"{name} has {array.ndim} dimensions, expected one")
    return array


def _types(column: Any) -> npt.NDArray[np.int32]:
    """The numbers of path types, from numbers or names."""
    array = _array(column, "type")
    if array.dtype.kind in "iu":
        if array.size and not (0 <= array.min() and array.max() < len(_TYPE_NUMBERS)):
            wrong = array[(array < 0) | (array >= len(_TYPE_NUMBERS))][0]
            raise ValueError(f"type: {wrong} is not the number of a type of light path")
        return array.astype(np.int32, copy=False)
    if array.dtype.kind in "OUT":
        names, inverse = np.unique(array.astype(str), return_inverse=True)
        unknown = set(names.tolist()) - set(_TYPE_NUMBERS)
        if unknown:
            raise ValueError(f"type: {min(unknown)!r} is not a type of light path")
        return np.array([_TYPE_NUMBERS[name] for name in names], dtype=np.int32)[inverse]
    raise TypeError(f"type: expected integers or names, got {array.dtype}")


class PathColumns:
    """Light paths as the arrays that the compiled module reads."""

    types: npt.NDArray[np.int32]
    vectors: list[npt.NDArray[np.float64] | None]
    shape: tuple[int, ...]

    def __init__(self, paths: PathTable) -> None:
        types = _field(paths, "type")
        if types is None:
            raise ValueError('paths: the column "type" is missing')
        self.types = _types(types)
        self.vectors = []
        for name in _COLUMNS[1:]:
            column = _field(paths, name)
            if column is None:
                self.vectors.append(None)
                continue
            array = _array(column, name)
            if array.dtype != np.float64:
                raise TypeError(f"{name}: expected float64, got {array.dtype}")
            self.vectors.append(array)
        is_array = isinstance(paths, np.ndarray)
        self.shape = paths.shape if is_array else self.types.shape

    def arrays(self) -> list[npt.NDArray[Any]]:
        """All arrays that there are."""
        return [self.types, *(array for array in self.vectors if array is not None)]


def positions(values: Any, name: str) -> npt.NDArray[np.float64]:
    """Positions as a dense array with a row of x, y, z for each."""
    if _is_table(values):
        columns = [_field(values, axis) for axis in "xyz"]
        for axis, column in zip("xyz", columns):
            if column is None:
                raise ValueError(f"{name}: the column {axis} is missing")
        arrays = [_array(column, f"{name}.{axis}") for axis, column in zip("xyz", columns)]
        for axis, array in zip("yz", arrays[1:]):
            if len(array) != len(arrays[0]):
                raise ValueError(
                    f"{name}.{axis} has {len(array)} rows, but x has {len(arrays[0])}"
                )
        array = np.stack(arrays, axis=-1)
    else:
        try:
            array = np.asanyarray(values)
        except ValueError as error:
            raise ValueError(f"{name}: {error}") from error
    if np.ma.is_masked(array):
        raise ValueError(f"{name}: values are missing")
    if array.dtype.kind not in "fiu":
        raise TypeError(f"{name}: expected numbers, got {array.dtype}")
    if array.shape == (3,):
        array = array[np.newaxis]
    if array.ndim != 2 or array.shape[1] != 3:
        raise ValueError(f"{name}: expected the shape (n, 3), got {array.shape}")
    return np.ascontiguousarray(array, dtype=np.float64)
