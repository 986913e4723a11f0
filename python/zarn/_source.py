"""Where geometry tables come from."""

from __future__ import annotations

import datetime
import os
import pathlib
from dataclasses import dataclass, replace

from . import _core

#: What can name a source of tables.
Source = str | os.PathLike[str]
#: What can give a time.
Time = str | datetime.date

_FILE_DATABASE, _SERVER = "sqlite:", "postgresql:"
_DATABASES = (_FILE_DATABASE, _SERVER)


def is_database(name: str) -> bool:
    """Whether a source is a database, which keeps a history."""
    return name.startswith(_DATABASES)


def short_name(name: str, overrides: str | None) -> str:
    """What a picture calls tables: the name of their file, folder or database."""
    short = _name_of_server(name) if name.startswith(_SERVER) else _name_of_file(name)
    return f"{short} with {_name_of_file(overrides)}" if overrides else short


def _name_of_file(name: str) -> str:
    place = pathlib.Path(name.removeprefix(_FILE_DATABASE))
    return place.stem if place.suffix in (".json", ".db") else place.name


def _name_of_server(name: str) -> str:
    connection = name.removeprefix(_SERVER)
    if connection.startswith("//"):
        database = connection[2:].partition("/")[2].partition("?")[0]
    else:
        database = connection.rpartition("dbname=")[2] if "dbname=" in connection else ""
    return database.partition(" ")[0] or "PostgreSQL"


@dataclass(frozen=True)
class TableSource:
    """A source of tables, and what is laid over it."""

    name: str
    overrides: str | None
    as_of: str | None
    """Always None of files, which keep no history."""

    @classmethod
    def of(cls, source: Source, overrides: Source | None, as_of: Time | None) -> TableSource:
        """What a user named."""
        name = os.fsdecode(source)
        if as_of is not None and not is_database(name):
            raise ValueError(f"as_of: {name} is not a database, and keeps no history")
        return cls(
            name,
            os.fsdecode(overrides) if overrides else None,
            as_of.isoformat() if isinstance(as_of, datetime.date) else as_of,
        )

    def absolute(self) -> TableSource:
        """The same from any working directory."""
        name = self.name
        if name.startswith(_FILE_DATABASE):
            name = _FILE_DATABASE + os.path.abspath(name.removeprefix(_FILE_DATABASE))
        elif not is_database(name):
            name = os.path.abspath(name)
        overrides = None if self.overrides is None else os.path.abspath(self.overrides)
        return TableSource(name, overrides, self.as_of)

    def pinned(self) -> TableSource:
        """The same at any later time: as of the last import that is read."""
        if not is_database(self.name):
            return self
        _require_libraries(self.name)
        from . import _sql

        last = _sql.last_import(os.fsencode(self.name), self.as_of)
        return self if last is None else replace(self, as_of=last)

    def read(self) -> _core.Tables:
        """Read the tables of all runs."""
        name = os.fsencode(self.name)
        overrides = os.fsencode(self.overrides or "")
        if not is_database(self.name):
            return _core.read_tables(name, overrides)
        _require_libraries(self.name)
        from . import _sql

        tables: _core.Tables = _sql.read_tables(name, overrides, self.as_of)
        return tables


def _require_libraries(name: str) -> None:
    """Raise ImportError, with what to install, if databases cannot be read."""
    try:
        from . import _sql  # noqa: F401
    except ImportError as error:
        # Not the whole name, in which there may be a password.
        raise ImportError(
            f"{name.partition(':')[0]}: tables in a database need libraries of the system "
            "(on Debian: apt install libsoci-core4.0 libsoci-sqlite3-4.0 "
            f"libsoci-postgresql4.0): {error}"
        ) from error
