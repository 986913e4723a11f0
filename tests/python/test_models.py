"""The models of the hardware, as views."""

import gc

import numpy as np
import pytest
import zarn
from support import MINIMAL, REFERENCE, run_python, tables_of, xyz

VIEWS = ["hold_down_ropes.positions", "hold_down_ropes.rolls", "hold_down_ropes.end_points",
         "hold_down_ropes.surface_points", "hold_down_ropes.leg_points",
         "support_ropes.positions", "support_ropes.line_points", "belly_plates.positions",
         "belly_plates.grid_points", "ncd_anchors.positions", "av_pipes.points"]


def view(calc, name):
    model, _, field = name.partition(".")
    return getattr(getattr(calc, model), field)


@pytest.mark.parametrize("source", [REFERENCE, MINIMAL], ids=lambda s: s.name)
def test_positions_and_sizes_are_those_of_the_tables(source):
    calc, tables = zarn.Calculator(source), tables_of(source)

    def places(owner, field="locations"):
        return tables["GEO_LOCATIONS", tables[owner][field]]

    def solid(owner, field="solid_definition"):
        return tables["SOLID", tables[owner][field]]

    down, up, vessel = ("GEO", "hold_down_ropes"), ("GEO", "hold_up_ropes"), ("GEO", "inner_av")
    assert np.array_equal(calc.hold_down_ropes.positions, xyz(solid(down), "rope_"))
    assert np.allclose(np.degrees(calc.hold_down_ropes.rolls), places(down)["roll"], rtol=1e-15)
    assert calc.hold_down_ropes.radius == solid(down)["r_rope"]
    feet = calc.support_ropes.positions.reshape(-1, 2, 3)  # two beside each place
    assert np.allclose(np.linalg.norm(feet, axis=2).T, np.linalg.norm(xyz(places(up)), axis=1))
    assert calc.support_ropes.radius == solid(up)["r_rope"]
    plates, anchors = (places(vessel, f"{item}_locations") for item in ("belly_plate", "ncd_anchor"))
    assert np.array_equal(calc.belly_plates.positions, xyz(plates))
    assert np.array_equal(calc.ncd_anchors.positions, xyz(anchors))
    anchor = solid(vessel, "ncd_anchor_definition")
    assert calc.ncd_anchors.half_z == anchor["half_z"]
    assert calc.ncd_anchors.radius == anchor["r_max"]


def test_points_lie_on_the_vessel():
    calc = zarn.Calculator(REFERENCE)
    for name in ("hold_down_ropes.surface_points", "belly_plates.grid_points"):
        radii = np.linalg.norm(view(calc, name), axis=1)
        assert 5700 < radii.min() and radii.max() < 6600, name
    assert 0 < calc.neck_boss.angle < np.pi / 2


@pytest.mark.parametrize("name", VIEWS)
def test_a_view_is_of_numbers_in_place(calc, name):
    found = view(calc, name)
    assert found.dtype == np.float64
    assert found.shape[1:] == (() if name.endswith("rolls") else (3,))
    assert len(found) > 0
    assert not found.flags.owndata
    again = view(calc, name)
    assert found.__array_interface__["data"] == again.__array_interface__["data"]


@pytest.mark.parametrize("name", VIEWS)
def test_a_view_is_read_only(calc, name):
    found = view(calc, name)
    with pytest.raises(ValueError, match="read-only"):
        found[0] = 0
    with pytest.raises(ValueError):
        found.flags.writeable = True


@pytest.mark.parametrize("name", VIEWS)
def test_a_view_keeps_its_calculator_alive(name):
    calc = zarn.Calculator(MINIMAL)
    found = view(calc, name)
    before = found.copy()
    del calc
    gc.collect()
    others = [zarn.Calculator(MINIMAL).with_tolerance(t) for t in (0.0, 1.0)]  # use memory again
    assert len(others) == 2
    assert np.array_equal(found, before)


def test_a_model_keeps_its_calculator_alive():
    boss = zarn.Calculator(MINIMAL).neck_boss
    gc.collect()
    assert boss.angle == zarn.Calculator(MINIMAL).neck_boss.angle


def test_a_calculator_does_not_outlive_its_views():
    done = run_python(
        "import gc, resource, sys, zarn\n"
        "def peak(): return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss\n"
        "calc = zarn.Calculator(sys.argv[1])\n"
        "def use(n):\n"
        "    for i in range(n): calc.with_tolerance(i).belly_plates.grid_points.sum()\n"
        "use(5); before = peak(); use(60); print(peak() - before)\n", REFERENCE)
    assert int(done.stdout) < 100_000  # kB; 60 calculators have 600 MB


@pytest.mark.parametrize("name", ["radius", "positions", "surface_points"])
def test_a_model_cannot_be_changed(calc, name):
    with pytest.raises(AttributeError):
        setattr(calc.hold_down_ropes, name, 1.0)


def test_a_model_without_items_has_empty_views(tmp_path):
    (tmp_path / "vessel.json").write_text((REFERENCE / "vessel.json").read_text())
    calc = zarn.Calculator(tmp_path)
    for name in VIEWS:
        assert len(view(calc, name)) == 0
