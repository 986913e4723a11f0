"""What is wrong with geometry tables."""

from __future__ import annotations

import dataclasses
import enum
from dataclasses import dataclass
from typing import Any

import numpy.typing as npt

from . import _core
from ._columns import positions
from ._source import Source, TableSource, Time
from ._verdict import Verdict


class Severity(enum.StrEnum):
    """How much a finding matters."""

    ERROR = "error"
    """There is no calculator, or a component is off or has nothing to test; where there are
    media, also: light paths cannot be computed."""
    WARNING = "warning"
    """Read, but hardly meant: verdicts may be wrong."""
    NOTE = "note"
    """No verdict depends on it."""


@dataclass(frozen=True)
class TableFinding:
    """What is wrong with one entry or field of geometry tables; ``str`` is one line."""

    severity: Severity
    component: Verdict | None
    """The first component that reads the field; None for the vessel, the media, PMTs, and
    what nothing reads."""
    table: str
    index: str
    field: str
    """Empty if the finding is about the entry, as where a field is missing."""
    place: str
    """Where the entry stands: file, line and column, or database, pass and runs."""
    problem: str
    """What is wrong."""
    value: str
    """The value, shortened; empty if there is none."""
    remedy: str
    """What would be right."""
    text: str = dataclasses.field(repr=False)
    """All of it in one line, as the command prints it."""

    def __str__(self) -> str:
        return self.text


class TableCheckError(_core.Error):
    """The tables have findings that their user does not accept.

    ``findings`` are these; the text has a line for each.
    """

    def __init__(self, source: str, findings: tuple[TableFinding, ...]) -> None:
        super().__init__(source, findings)
        self.source = source
        self.findings = findings

    def __str__(self) -> str:
        return "\n".join([f"{self.source}: the tables are wrong:", *map(str, self.findings)])


class TableFindings(tuple[TableFinding, ...]):
    """What ``check_tables`` found: a tuple, errors first. ``print`` shows a line for each."""

    _source: str

    def raise_for_errors(self, strict: bool = False) -> None:
        """Raise TableCheckError if a finding is an error.

        Args:
            strict: also raise it for warnings.
        """
        accepted = (Severity.NOTE,) if strict else (Severity.NOTE, Severity.WARNING)
        refused = tuple(found for found in self if found.severity not in accepted)
        if refused:
            raise TableCheckError(self._source, refused)

    def __str__(self) -> str:
        return "\n".join(map(str, self))


def check_tables(
    source: Source,
    run: int = 0,
    *,
    overrides: Source | None = None,
    as_of: Time | None = None,
    pmts: npt.ArrayLike | None = None,
) -> TableFindings:
    """Check geometry tables, entry by entry, as ``zarn-shadow tables check`` does.

    Tells what is missing, has the wrong type or length, is read by nothing, or is not
    plausible: radii, places, lengths in m, angles in the other unit.

    Args:
        source, run, overrides, as_of: as of Calculator.
        pmts: also check these positions beside the vessel: an array (n, 3), or a data frame
            with x, y, z, of which the index gives the names.

    Returns:
        The findings; none is an error exactly if a Calculator of these tables has every
        component on and, where there are media, computes light paths.

    Raises:
        TableFileError, StoreError: the tables cannot be read.

    >>> for finding in check_tables("data/reference-detector"):
    ...     print(finding.severity, finding.table, finding.index, finding.problem)
    ...     break
    note PMT positions nothing reads this entry
    >>> check_tables("data/reference-detector").raise_for_errors(strict=True)
    """
    found = TableSource.of(source, overrides, as_of)
    tables = found.read()
    rows = _core.check_tables(tables, run)
    if pmts is not None:
        xyz = positions(pmts, "pmts")
        rows += _core.check_pmts(tables, run, _names(pmts, len(xyz)), xyz)
    findings = TableFindings(sorted(map(_finding, rows), key=_rank))
    findings._source = found.name
    return findings


def _names(pmts: Any, count: int) -> list[str]:
    """The names of positions in messages."""
    index = getattr(pmts, "index", None)  # of a list, a method
    return [str(name) for name in (range(count) if index is None or callable(index) else index)]


def _finding(row: tuple[Any, ...]) -> TableFinding:
    severity, component, *rest = row
    return TableFinding(Severity(severity), Verdict(component) if component else None, *rest)


def _rank(finding: TableFinding) -> int:
    return list(Severity).index(finding.severity)
