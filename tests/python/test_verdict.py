"""The numbers and names of verdicts."""

import zarn
from zarn import _core


def letters(name):
    return "".join(c for c in name.lower().replace("the ", "") if c.isalpha())


def test_the_numbers_are_those_of_the_library():
    names = _core.verdict_names()
    assert len(names) == len(zarn.Verdict)
    for number, name in enumerate(names):
        assert zarn.Verdict(number).label == name
        assert letters(zarn.Verdict(number).name) == letters(name)


def test_components_are_numbered_from_one_in_the_order_of_testing():
    assert [int(c) for c in zarn.COMPONENTS] == [1, 2, 3, 4, 5, 6]
    assert [c.label for c in zarn.COMPONENTS] == [
        "AVHDRope", "SupportRope", "BellyPlate", "NCDAnchor", "AVPipe", "NeckBoss"]


def test_every_verdict_is_clear_or_shadowed_or_without_path():
    for verdict in zarn.Verdict:
        assert verdict.has_path == (verdict <= 6)
        assert verdict.is_shadowed == (1 <= verdict <= 6)
