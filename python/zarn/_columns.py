"""Columns of numbers from what users have: NumPy, pandas, Arrow and Awkward tables."""

from __future__ import annotations

from collections.abc import Mapping
from typing import Any

import numpy as np
import numpy.typing as npt

from . import _core

#: A table of light paths: a structured array, a mapping of arrays, or a data frame.
PathTable = Any

_COLUMNS = _core.path_columns()
_TYPE_NUMBERS = {name: number for number, name in enumerate(_core.path_types())}


def _field(table: Any, name: str) -> Any:
    """A column of a table, or None if there is no such column."""
    if isinstance(table, np.ndarray):
        names = table.dtype.names or ()
        return table[name].reshape(-1) if name in names else None
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


def _array(column: Any, name: str) -> npt.NDArray[Any]:
    """The values of a column as a one-dimensional array, without a copy if possible."""
    if hasattr(column, "null_count"):  # pyarrow
        if column.null_count > 0:
            raise ValueError(f"{name} has {column.null_count} missing values")
        if hasattr(column, "combine_chunks"):
            column = column.combine_chunks()
        if hasattr(column, "dictionary_decode"):
            column = column.dictionary_decode()
        array = column.to_numpy(zero_copy_only=False)
    elif hasattr(column, "to_numpy"):  # pandas, awkward
        array = column.to_numpy()
    else:
        array = np.asarray(column)
    if np.ma.isMaskedArray(array) and array.mask.any():
        raise ValueError(f"{name} has {int(array.mask.sum())} missing values")
    if array.ndim != 1:
        raise ValueError(f"{name} has {array.ndim} dimensions, expected one")
    return np.asarray(array)


def _types(column: Any) -> npt.NDArray[np.int32]:
    """The numbers of path types, from numbers or names."""
    array = _array(column, "type")
    if array.dtype == np.int32:
        return array
    if array.dtype.kind in "iu":
        if array.size and (array.min() < -(2**31) or array.max() >= 2**31):
            raise ValueError("type: a number does not fit into 32 bits")
        return array.astype(np.int32)
    if array.dtype.kind in "OUT":
        names, inverse = np.unique(array.astype(str), return_inverse=True)
        try:
            numbers = [_TYPE_NUMBERS[name] for name in names]
        except KeyError as error:
            raise ValueError(f"type: {error.args[0]!r} is not a type of light path") from None
        return np.array(numbers, dtype=np.int32)[inverse]
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


def positions(values: Any, name: str) -> npt.NDArray[np.float64]:
    """Positions as a dense array with a row of x, y, z for each."""
    if hasattr(values, "columns"):  # a data frame
        missing = [axis for axis in "xyz" if axis not in values.columns]
        if missing:
            raise ValueError(f"{name}: the column {missing[0]} is missing")
        values = values[["x", "y", "z"]]
    array = np.asarray(values)
    if array.dtype.kind not in "fiu":
        raise TypeError(f"{name}: expected numbers, got {array.dtype}")
    if array.ndim == 1 and array.shape == (3,):
        array = array[np.newaxis]
    if array.ndim != 2 or array.shape[1] != 3:
        raise ValueError(f"{name}: expected the shape (n, 3), got {array.shape}")
    return np.ascontiguousarray(array, dtype=np.float64)
