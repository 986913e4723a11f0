"""The type of a light path."""

from __future__ import annotations

import enum

from . import _core

_NAMES = _core.path_types()


class PathType(enum.IntEnum):
    """The media that a light path crosses, from event to PMT.

    The numbers are those in the column ``type`` of all tables.

    >>> PathType(6)
    <PathType.WATER: 6>
    >>> PathType.INNER_AV_TO_WATER.label
    'Scint/InnerAV->AV->Water'
    """

    UNINITIALISED = 0
    INNER_AV_TO_WATER = 1
    AV_THROUGH_INNER_AV_TO_WATER = 2
    AV_TO_WATER = 3
    WATER_THROUGH_INNER_AV = 4
    WATER_THROUGH_AV = 5
    WATER = 6
    WATER_REFLECTION = 7

    @property
    def label(self) -> str:
        """The name in the command's tables and files: "Water->AV->Water"."""
        return _NAMES[self]
