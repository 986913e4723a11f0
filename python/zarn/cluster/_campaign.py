"""What belongs to all parts of a campaign, and the files that hold it.

Beside its parts, a folder holds

    _campaign.json   settings and hashes: what every part must have been made with
    _tables.json     the tables, from which workers make their calculators
    _pmts.parquet    names and positions of the PMTs

Programs that read the folder as one table skip names that begin with _ or a dot.
"""

from __future__ import annotations

import dataclasses
import hashlib
import json
from dataclasses import dataclass
from pathlib import Path
from typing import Any

import numpy as np
import numpy.typing as npt
import pyarrow as pa
import pyarrow.parquet as pq

from .. import Calculator
from .._files import replacing
from ._errors import CampaignError

TABLES = "_tables.json"
PMTS = "_pmts.parquet"
_CAMPAIGN = "_campaign.json"


@dataclass(frozen=True)
class Positions:
    """Events or PMTs."""

    names: pa.Array
    """Integers or strings."""
    xyz: npt.NDArray[np.float64]
    """Positions, mm: (n, 3)."""

    def __len__(self) -> int:
        return len(self.xyz)

    def some(self, first: int, count: int) -> Positions:
        """Some that follow one another."""
        # A slice of the names would take all of them along to a worker.
        end = min(first + count, len(self))
        return Positions(self.names.take(pa.array(np.arange(first, end))), self.xyz[first:end])

    def sha256(self) -> str:
        """A hash of the positions and names."""
        digest = hashlib.sha256(self.xyz.tobytes())
        if pa.types.is_int64(self.names.type):
            digest.update(self.names.to_numpy().tobytes())
        else:
            digest.update(json.dumps(self.names.to_pylist()).encode())
        return digest.hexdigest()

    def write(self, path: Path) -> None:
        """Write a table with the columns name, x, y and z."""
        columns = dict(zip("xyz", self.xyz.T))
        with replacing(path) as file:
            pq.write_table(pa.table({"name": self.names, **columns}), file)

    @classmethod
    def read(cls, path: Path) -> Positions:
        """Read what write wrote."""
        table = pq.read_table(path)
        xyz = np.stack([table[axis].to_numpy() for axis in "xyz"], axis=-1)
        return cls(table["name"].combine_chunks(), np.ascontiguousarray(xyz))


@dataclass(frozen=True)
class Campaign:
    """What every part of a folder must have been made with."""

    version: str
    fingerprint: str
    run: int
    tolerance: float
    wavelength: float
    reflections: bool
    events: int
    events_sha256: str
    pmts: int
    pmts_sha256: str
    events_per_part: int
    as_of: str | None = dataclasses.field(default=None, compare=False)
    """Calculator.as_of: the same tables can be read again as of this time."""

    @property
    def parts(self) -> int:
        """The number of parts; the last can be smaller."""
        return -(-self.events // self.events_per_part)

    @property
    def pairs(self) -> int:
        """The number of pairs of an event and a PMT."""
        return self.events * self.pmts

    def range(self, part: int) -> tuple[int, int]:
        """The first event of a part, and the number of its events."""
        first = part * self.events_per_part
        return first, min(self.events_per_part, self.events - first)

    def require_same(self, other: Campaign, name: str | Path) -> None:
        """Raise CampaignError unless the other one is the same.

        Args:
            name: of what has the other one.
        """
        for field in dataclasses.fields(self):
            here, there = getattr(self, field.name), getattr(other, field.name)
            if field.compare and here != there:
                hint = ""
                if field.name == "fingerprint" and other.as_of is not None:
                    hint = f"; its tables were read as of {other.as_of}"
                raise CampaignError(
                    f"{name}: made with {field.name} {there}, expected {here}{hint}"
                )

    def to_dict(self) -> dict[str, Any]:
        """As JSON writes it."""
        return dataclasses.asdict(self)

    def calculator(self, folder: Path) -> Calculator:
        """Make a calculator of the tables in a folder."""
        path = folder / TABLES
        calculator = Calculator(path, self.run, self.tolerance)
        if calculator.fingerprint != self.fingerprint:
            raise CampaignError(
                f"{path}: tables with the fingerprint {calculator.fingerprint}, "
                f"expected {self.fingerprint}"
            )
        return calculator

    def pmt_positions(self, folder: Path) -> Positions:
        """Read the PMTs in a folder."""
        path = folder / PMTS
        try:
            pmts = Positions.read(path)
        except FileNotFoundError as error:
            raise CampaignError(f"{path}: missing") from error
        except (OSError, pa.ArrowInvalid, KeyError) as error:
            raise CampaignError(f"{path}: damaged: {error}") from error
        if pmts.sha256() != self.pmts_sha256:
            raise CampaignError(f"{path}: not the PMTs of the campaign")
        return pmts


def read_campaign(folder: Path) -> Campaign:
    """The campaign of a folder."""
    path = folder / _CAMPAIGN
    try:
        return Campaign(**json.loads(path.read_text()))
    except OSError as error:
        raise CampaignError(f"{path}: cannot be read: {error.strerror}") from error
    except (ValueError, TypeError) as error:
        raise CampaignError(f"{path}: not the settings of a campaign: {error}") from error


def has_campaign(folder: Path) -> bool:
    """Whether a folder has a campaign.

    Raises:
        CampaignError: it has other files instead.
    """
    if (folder / _CAMPAIGN).exists():
        return True
    if folder.exists():
        if not folder.is_dir():
            raise CampaignError(f"{folder}: not a folder")
        if any(file.name[0] not in "._" for file in folder.iterdir()):
            raise CampaignError(f"{folder}: holds files, but no campaign")
    return False


def write_campaign(folder: Path, campaign: Campaign, tables: str, pmts: Positions) -> None:
    """Begin a campaign in a folder. Its settings are written last: then all is there."""
    entries = [
        {"table": table, "index": index, "fields": fields}
        for table, of_table in json.loads(tables).items()
        for index, fields in of_table.items()
    ]
    try:
        folder.mkdir(parents=True, exist_ok=True)
        _write_json(folder / TABLES, entries)
        pmts.write(folder / PMTS)
        _write_json(folder / _CAMPAIGN, campaign.to_dict())
    except OSError as error:
        raise OSError(f"{folder}: cannot be written: {error.strerror}") from error


def _write_json(path: Path, value: Any) -> None:
    with replacing(path) as file:
        file.write(json.dumps(value, indent=1).encode())
