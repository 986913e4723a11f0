"""Files that appear complete or not at all, and how verdicts are written to Parquet."""

from __future__ import annotations

import contextlib
import os
import secrets
from collections.abc import Iterator
from pathlib import Path
from typing import IO, TYPE_CHECKING, Any

if TYPE_CHECKING:
    import pyarrow as pa


@contextlib.contextmanager
def replacing(path: str | os.PathLike[str]) -> Iterator[IO[bytes]]:
    """Open a temporary file that replaces the target if all went well.

    A killed process leaves it behind as .<target>.<sixteen digits>.
    """
    target = Path(path)
    temporary = target.with_name(f".{target.name}.{secrets.token_hex(8)}")
    with open(temporary, "xb") as file:
        try:
            yield file
            file.flush()
            os.fsync(file.fileno())
            os.replace(temporary, target)
        except BaseException:
            temporary.unlink(missing_ok=True)
            raise
    _sync_folder(target.parent)


def _sync_folder(folder: Path) -> None:
    """Write the names of the files in a folder to disk."""
    descriptor = os.open(folder, os.O_RDONLY | os.O_DIRECTORY)
    try:
        os.fsync(descriptor)
    finally:
        os.close(descriptor)


def parquet_options(schema: pa.Schema) -> dict[str, Any]:
    """How a table of verdicts is written: numbers of events and PMTs by their
    differences; codes and names, which repeat, by a dictionary.

    Whoever copies such a table must ask for this again.
    """
    import pyarrow.types as of

    kinds = {field.name: field.type for field in schema}
    repeating = [n for n, kind in kinds.items() if of.is_uint8(kind) or of.is_string(kind)]
    numbers = [name for name, kind in kinds.items() if of.is_int64(kind)]
    return {
        "compression": "zstd",
        "use_dictionary": repeating,
        "column_encoding": {name: "DELTA_BINARY_PACKED" for name in numbers},
    }
