"""The verdict on a light path."""

from __future__ import annotations

import enum

from . import _core

_NAMES = _core.verdict_names()


class Verdict(enum.IntEnum):
    """What is known of the light from an event to a PMT.

    The numbers are those in all files and arrays, and never change: 0 is clear, 1 to 6
    are the components in the order in which they are tested, from 7 on there is no
    light path.

    >>> Verdict(5)
    <Verdict.AV_PIPE: 5>
    >>> Verdict.TOTAL_REFLECTION.label
    'total reflection'
    """

    CLEAR = 0
    AVHD_ROPE = 1
    SUPPORT_ROPE = 2
    BELLY_PLATE = 3
    NCD_ANCHOR = 4
    AV_PIPE = 5
    NECK_BOSS = 6
    TOTAL_REFLECTION = 7
    PMT_NOT_IN_WATER = 8
    EVENT_AT_PMT = 9
    POSITION_NOT_FINITE = 10
    NO_REFLECTED_PATH = 11

    @property
    def label(self) -> str:
        """The name in the command's tables and files: "AVPipe", "total reflection"."""
        return _NAMES[self]

    @property
    def has_path(self) -> bool:
        """Whether there is a light path at all."""
        return self < Verdict.TOTAL_REFLECTION

    @property
    def is_shadowed(self) -> bool:
        """Whether hardware blocks the light path."""
        return Verdict.CLEAR < self < Verdict.TOTAL_REFLECTION


COMPONENTS: tuple[Verdict, ...] = tuple(v for v in Verdict if v.is_shadowed)
"""The components of the hardware, in the order in which they are tested."""
