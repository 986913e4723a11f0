"""The numbers and names of types of light paths."""

import zarn
from zarn import _core


def test_the_numbers_are_those_of_the_library():
    assert [kind.label for kind in zarn.PathType] == _core.path_types()
    assert [int(kind) for kind in zarn.PathType] == list(range(len(_core.path_types())))


def test_a_light_path_has_the_type_of_the_media_that_it_crosses(calc):
    events = [[0, 0, 0], [7000, 0, 0], [-7000, 0, 0], [0, 0, -7000]]
    types = calc.light_paths(events, [[8300, 0, 0]])["type"][:, 0]
    assert [zarn.PathType(number).label for number in types] == [
        "Scint/InnerAV->AV->Water", "Water", "Water->AV->Scint/InnerAV->AV->Water",
        "Light Path Uninitialised"]
    assert zarn.PathType.WATER_REFLECTION == calc.light_paths(
        [[7000, 0, 0]], [[8300, 0, 0]], reflections=True)["type"][0, 0, 1]
