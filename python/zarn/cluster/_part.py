"""One part of a campaign: a Parquet file with the verdicts on some events.

The file has the columns of ScanResult.to_parquet. Its metadata tell what made it, which
events it has, the counts of its verdicts, and the SHA-256 of all its other bytes.
"""

from __future__ import annotations

import hashlib
import json
from collections.abc import Iterator
from pathlib import Path

import numpy as np
import numpy.typing as npt
import pyarrow as pa
import pyarrow.parquet as pq

from .. import Calculator, Verdict
from .._files import parquet_options, replacing
from ._campaign import Campaign, Positions
from ._errors import CampaignError

#: Rows that are encoded together: few enough that a part needs little memory.
_ROWS_OF_GROUP = 1 << 20
# The hash stands for itself as zeros.
_LABEL = b"sha256:"
_NO_HASH = b"0" * 64


class Damaged(Exception):
    """A part is not as it was written."""


def part_name(part: int) -> str:
    """The name of a part's file; names sort as parts do."""
    return f"part-{part:08}.parquet"


def schema_of(campaign: Campaign, event: pa.DataType, pmt: pa.DataType) -> pa.Schema:
    """The columns of all parts."""
    columns = [("event", event), ("pmt", pmt), ("code", pa.uint8())]
    if campaign.reflections:
        columns.append(("reflected_code", pa.uint8()))
    return pa.schema(columns)


def encode_part(
    calculator: Calculator, campaign: Campaign, pmts: Positions, part: int, events: Positions
) -> tuple[bytes, list[int]]:
    """Judge the light from some events, and return the content of the part's file and
    the number of light paths by verdict."""
    schema = schema_of(campaign, events.names.type, pmts.names.type)
    counts = np.zeros(len(Verdict), np.int64)
    content = pa.BufferOutputStream()
    at_once = min(len(events), max(1, _ROWS_OF_GROUP // max(1, len(pmts))))
    # The same for every group of rows.
    of_event = pa.array(np.repeat(np.arange(at_once, dtype=np.int32), len(pmts)))
    pmt = pmts.names.take(pa.array(np.tile(np.arange(len(pmts), dtype=np.int32), at_once)))
    with pq.ParquetWriter(content, schema, **parquet_options(schema)) as writer:
        for first in range(0, len(events), at_once):
            some = events.some(first, at_once)
            rows = len(some) * len(pmts)
            columns = [some.names.take(of_event.slice(0, rows)), pmt.slice(0, rows)]
            for codes in _judge(calculator, campaign, pmts, some):
                counts += np.bincount(codes, minlength=len(Verdict))
                columns.append(pa.array(codes))
            writer.write_table(pa.table(columns, schema=schema), row_group_size=max(1, rows))
        about = {"campaign": campaign.to_dict(), "part": part, "counts": counts.tolist()}
        hashed = (_LABEL + _NO_HASH).decode()
        writer.add_key_value_metadata({"zarn": json.dumps(about), "checksum": hashed})
    return _with_hash(content.getvalue().to_pybytes()), counts.tolist()


def _judge(
    calculator: Calculator, campaign: Campaign, pmts: Positions, events: Positions
) -> list[npt.NDArray[np.uint8]]:
    """The codes of direct light, and of reflected light if it is asked for."""
    # One thread: a worker has a task for each of its threads.
    result = calculator.scan(
        events.xyz, pmts.xyz, wavelength=campaign.wavelength,
        reflections=campaign.reflections, threads=1,
    )
    codes = (result.codes, result.reflected_codes)
    return [found.reshape(-1) for found in codes if found is not None]


def _hash_place(content: bytes) -> int:
    """Where the digits of the hash are; they are in the metadata at the end."""
    at = content.rfind(_LABEL)
    if at < 0:
        raise Damaged("it has no checksum")
    return at + len(_LABEL)


def _hash_of(content: bytes, at: int) -> bytes:
    digest = hashlib.sha256(memoryview(content)[:at])
    digest.update(_NO_HASH)
    digest.update(memoryview(content)[at + len(_NO_HASH) :])
    return digest.hexdigest().encode()


def _with_hash(content: bytes) -> bytes:
    at = _hash_place(content)
    return content[:at] + _hash_of(content, at) + content[at + len(_NO_HASH) :]


def write_part(path: Path, content: bytes) -> None:
    """Write a part's file; it appears complete or not at all."""
    try:
        with replacing(path) as file:
            file.write(content)
    except OSError as error:
        raise OSError(f"{path}: cannot be written: {error.strerror}") from error


class PartFile:
    """A part that exists.

    Raises:
        FileNotFoundError: it does not.
        Damaged: it is not as it was written.
        CampaignError: it does not belong to the campaign.
    """

    def __init__(self, folder: Path, campaign: Campaign, part: int) -> None:
        path = folder / part_name(part)
        content = path.read_bytes()
        at = _hash_place(content)
        if content[at : at + len(_NO_HASH)] != _hash_of(content, at):
            raise Damaged("its checksum does not fit")
        self._file = pq.ParquetFile(pa.BufferReader(content))
        about = json.loads(self._file.metadata.metadata[b"zarn"])
        try:
            made_for = Campaign(**about["campaign"])
        except TypeError as error:
            raise CampaignError(f"{path}: made by another version of zarn") from error
        campaign.require_same(made_for, path)
        if about["part"] != part:
            raise CampaignError(f"{path}: the content of {part_name(about['part'])}")
        self.counts: list[int] = about["counts"]

    def tables(self) -> Iterator[pa.Table]:
        """The rows, some at a time, each of whole events."""
        for group in range(self._file.num_row_groups):
            yield self._file.read_row_group(group)
