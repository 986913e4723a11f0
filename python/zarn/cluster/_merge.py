"""The parts of a campaign as one file."""

from __future__ import annotations

import json
import os
from collections.abc import Iterator
from pathlib import Path

import numpy as np
import pyarrow as pa
import pyarrow.parquet as pq

from .. import _core
from .._files import parquet_options, replacing
from ._campaign import Campaign, Positions, read_campaign
from ._errors import CampaignError
from ._part import Damaged, PartFile, part_name, schema_of

_MISSING_SHOWN = 3


def merge(folder: str | os.PathLike[str], file: str | os.PathLike[str]) -> None:
    """Write the verdicts of a complete campaign to one file, in the order of the events.

    The columns are those of ScanResult.to_parquet for the whole scan. One part is in
    memory at a time. An existing file is replaced when the new one is complete.

    Args:
        folder: of the parts.
        file: an RNTuple called "verdicts" if its name ends in .root, else Parquet.

    Raises:
        CampaignError: parts are missing or damaged.
        OSError: the file cannot be written.
    """
    source, target = Path(folder), Path(file)
    campaign = read_campaign(source)
    if target.resolve().parent == source.resolve():
        raise CampaignError(f"{target}: is in the folder of the parts")
    _require_complete(source, campaign)
    pmts = campaign.pmt_positions(source)
    write = _write_rntuple if target.name.endswith(".root") else _write_parquet
    write(campaign, pmts, _Rows(source, campaign), target)


class _Rows:
    """The rows of all parts, in order, some at a time."""

    def __init__(self, folder: Path, campaign: Campaign) -> None:
        self._tables = _tables(folder, campaign)
        self._first = next(self._tables, None)
        #: Of the column event.
        self.event_type = pa.int64() if self._first is None else self._first["event"].type

    def __iter__(self) -> Iterator[pa.Table]:
        if self._first is not None:
            yield self._first
            yield from self._tables


def _require_complete(folder: Path, campaign: Campaign) -> None:
    there = {file.name for file in folder.iterdir()}
    missing = [n for n in map(part_name, range(campaign.parts)) if n not in there]
    if missing:
        names = ", ".join(missing[:_MISSING_SHOWN])
        more = ", ..." if len(missing) > _MISSING_SHOWN else ""
        raise CampaignError(
            f"{folder}: {len(missing):,} of {campaign.parts:,} parts are missing: {names}{more}"
        )


def _tables(folder: Path, campaign: Campaign) -> Iterator[pa.Table]:
    """The rows of all parts, in order."""
    for part in range(campaign.parts):
        path = folder / part_name(part)
        try:
            found = PartFile(folder, campaign, part)
        except Damaged as error:
            raise CampaignError(f"{path}: damaged: {error}") from error
        except OSError as error:
            raise CampaignError(f"{path}: cannot be read: {error.strerror}") from error
        yield from found.tables()


def _write_parquet(campaign: Campaign, pmts: Positions, rows: _Rows, target: Path) -> None:
    schema = schema_of(campaign, rows.event_type, pmts.names.type)
    schema = schema.with_metadata({"zarn": json.dumps(campaign.to_dict())})
    try:
        with replacing(target) as file:
            with pq.ParquetWriter(file, schema, **parquet_options(schema)) as writer:
                for table in rows:
                    writer.write_table(table.cast(schema))
    except OSError as error:
        reason = error.strerror or error
        raise OSError(f"{target}: cannot be written: {reason}") from error


def _write_rntuple(campaign: Campaign, pmts: Positions, rows: _Rows, target: Path) -> None:
    file = _core.CodeNTuple(
        os.fsencode(target),
        program="zarn-shadow-cluster",
        run=campaign.run,
        tolerance=campaign.tolerance,
        wavelength=campaign.wavelength,
        fingerprint=campaign.fingerprint,
        pmts=[str(name) for name in pmts.names.to_pylist()],
        integer_events=pa.types.is_int64(rows.event_type),
        integer_pmts=pa.types.is_int64(pmts.names.type),
        reflections=campaign.reflections,
    )
    for table in rows if len(pmts) else ():
        events = table["event"].to_numpy()[:: len(pmts)]
        codes = [
            np.ascontiguousarray(table[name].to_numpy()).reshape(-1, len(pmts))
            for name in table.column_names[2:]
        ]
        reflected = codes[1] if campaign.reflections else None
        file.add([str(name) for name in events], codes[0], reflected)
    file.commit()
