"""Sky maps drawn by matplotlib."""

import dataclasses
import html
import json
import os
import pathlib
import re
import shutil
import subprocess

import numpy as np
import pytest
import zarn
from support import DATA, REFERENCE, SOURCE, run_python

matplotlib = pytest.importorskip("matplotlib")
matplotlib.use("Agg")

import zarn.draw  # noqa: E402
from matplotlib import pyplot  # noqa: E402
from matplotlib.collections import PolyCollection  # noqa: E402
from matplotlib.colors import to_hex  # noqa: E402

PALETTE = json.loads((SOURCE / "display" / "palette.json").read_text())
WALL = [[4600.0, 0.0, 3000.0]]
LONG = "a detector with a name that is longer than any other name in this test"
SHARES = ["0–20 %", "20–40 %", "40–60 %", "60–80 %", "80–100 %"]


@pytest.fixture(autouse=True)
def closed_figures():
    yield
    pyplot.close("all")


@pytest.fixture(scope="module")
def all_pmts():
    return np.loadtxt(DATA / "pmts.csv", delimiter=",", skiprows=1, usecols=(1, 2, 3))


@pytest.fixture(scope="module")
def wall(calc, all_pmts):
    return calc.scan(WALL, all_pmts)


@pytest.fixture(scope="module")
def several(calc, pmts):
    source = np.loadtxt(DATA / "source-scan.csv", delimiter=",", skiprows=1, usecols=(1, 2, 3))
    return calc.scan(source, pmts)


def marks_of(axes):
    """The marks of PMTs by their kind, in the order of drawing."""
    marks = [c for c in axes.collections if isinstance(c, PolyCollection)]
    marks.sort(key=lambda c: c.get_zorder())
    return {c.get_gid(): c for c in marks
            if not c.get_gid().startswith("legend") and c.get_gid() != "event"}


def numbers_of(axes):
    return {kind: len(c.get_paths()) for kind, c in marks_of(axes).items()}


def words_of(axes):
    return [text.get_text() for text in axes.texts]


# ---- the projection


def test_directions_are_where_the_closed_form_puts_them():
    # Each parallel and meridian by its place: sin(latitude) = (2t + sin 2t) / pi.
    theta, azimuth = np.meshgrid(np.radians(np.linspace(-89.9, 89.9, 61)),
                                 np.radians(np.linspace(-179.9, 179.9, 61)))
    up = (2 * theta + np.sin(2 * theta)) / np.pi
    across = np.sqrt((1 - up) * (1 + up))
    directions = np.stack([across * np.cos(azimuth), across * np.sin(azimuth), up], axis=-1)
    placed = zarn.draw.project(7e3 * directions.reshape(-1, 3))
    wanted = np.stack([-2 / np.pi * azimuth * np.cos(theta), np.sin(theta)], axis=-1)
    # Next to a pole the given direction itself has fewer digits.
    np.testing.assert_allclose(placed, wanted.reshape(-1, 2), rtol=0, atol=1e-9)


def test_poles_and_sides_are_exact():
    placed = zarn.draw.project([[0, 0, 1], [0, 0, -2], [3, 0, 0], [0, 1, 0], [0, -1, 0]])
    np.testing.assert_allclose(placed, [[0, 1], [0, -1], [0, 0], [-1, 0], [1, 0]], atol=1e-15)
    assert zarn.draw.project([1, 0, 0]).shape == (2,)


@pytest.mark.filterwarnings("error")
def test_what_is_no_direction_has_no_place():
    none = [[0, 0, 0], [np.nan, 0, 1], [np.inf, 0, 1], [-np.inf, np.inf, np.nan]]
    assert np.isnan(zarn.draw.project(none)).all()
    with pytest.raises(ValueError, match=r"shape \(2,\), expected \(3,\) or \(n, 3\)"):
        zarn.draw.project([1, 2])


# ---- one event


@pytest.mark.parametrize("theme", ["light", "dark"])
def test_each_PMT_has_one_mark_in_the_colour_of_its_verdict(wall, theme):
    axes = zarn.draw.map(wall, theme=theme)
    counts = wall.counts()
    labels = [c.label for c in zarn.COMPONENTS]
    wanted = {"clear": int(counts.of(zarn.Verdict.CLEAR)),
              "no path": int(counts.of(zarn.Verdict.TOTAL_REFLECTION)),
              **{c.label: int(counts.of(c)) for c in zarn.COMPONENTS}}
    assert numbers_of(axes) == wanted
    assert list(numbers_of(axes)) == ["clear", "no path", *labels]  # the rare on top
    colours = {kind: to_hex(c.get_facecolor()[0]) for kind, c in marks_of(axes).items()}
    ground = PALETTE["themes"][theme]
    assert colours == {"clear": ground["clear"], "no path": ground["noPath"],
                       **{name: PALETTE["components"][name][theme] for name in labels}}
    assert to_hex(axes.get_facecolor()) == ground["view"]
    assert to_hex(axes.figure.get_facecolor()) == ground["view"]


def test_marks_are_the_shapes_of_the_palette_at_their_directions(wall, all_pmts):
    paths = marks_of(zarn.draw.map(wall))["AVPipe"].get_paths()
    middles = zarn.draw.project(all_pmts[wall.codes[0] == zarn.Verdict.AV_PIPE])
    # In the shape's units, y downwards; a mark covers 0.93 of what a PMT has across.
    size = 0.93 * np.sqrt(2 * np.pi / len(all_pmts))
    bar = np.array(PALETTE["shapes"]["bar"]) * (size, -size)
    for path, middle in zip(paths, middles, strict=True):
        np.testing.assert_allclose(path.vertices[:-1], middle + bar, atol=1e-12)


def test_a_ring_is_open_inside():
    ring = zarn.draw._ring(10.0, 2.0)
    assert np.hypot(*ring.T) == pytest.approx(np.r_[np.full(33, 11), np.full(33, 9)])
    x, y = ring.T
    around = np.sum(x * np.roll(y, -1) - y * np.roll(x, -1)) / 2
    assert around == pytest.approx(np.pi * (11**2 - 9**2), rel=0.01)


def test_the_legend_counts_with_percents_of_what_has_a_path(wall):
    words = words_of(zarn.draw.map(wall))
    assert words[0] == "What hides the PMTs from an event at (4600, 0, 3000) mm"
    assert [part.strip() for part in words[1].split("\u00b7")] == [
        "1,825 of 5,748 PMTs with a light path shadowed (31.8 %)", "run 0", "tolerance 150 mm",
        "400 nm", "reference-detector"]
    at = words.index("Hold-down ropes")
    assert words[at:at + 3] == ["Hold-down ropes", "893", "15.5 %"]
    at = words.index("No path")
    assert words[at:at + 4] == ["No path", "2,252", "28.1 %", "(total reflection)"]
    assert words[-1] == "Percent of the 5,748 PMTs with a light path; no path: of all 8,000 PMTs."


def test_the_view_from_the_event_has_no_mark_for_it(wall, all_pmts):
    assert "event" in words_of(zarn.draw.map(wall))
    axes = zarn.draw.map(wall, view="event")
    assert "event" not in words_of(axes)
    paths = marks_of(axes)["NeckBoss"].get_paths()
    is_boss = wall.codes[0] == zarn.Verdict.NECK_BOSS
    np.testing.assert_allclose([p.vertices[:-1].mean(axis=0) for p in paths],
                               zarn.draw.project(all_pmts[is_boss] - WALL[0]), atol=1e-12)


def test_the_largest_marks_have_the_same_size(calc, all_pmts):
    few = marks_of(zarn.draw.map(calc.scan(WALL, all_pmts[6000:6010])))
    width = [np.ptp(c.get_paths()[0].vertices[:, 0]) for k, c in few.items() if k == "clear"]
    circle = 14 / 192 * 0.5 / 0.93  # 1 on the map is 192 units
    assert width == pytest.approx([circle], rel=0.01)


def test_many_PMTs_are_squares_below_the_graticule(calc):
    points = np.random.default_rng(1).normal(size=(20_001, 3))
    points *= 8300 / np.linalg.norm(points, axis=1, keepdims=True)
    result = calc.scan(WALL, points)
    axes = zarn.draw.map(result)
    marks = marks_of(axes)
    assert sum(numbers_of(axes).values()) == 20_001
    assert to_hex(marks["clear"].get_facecolor()[0]) == PALETTE["themes"]["light"]["clearArea"]
    assert {len(c.get_paths()[0].vertices) for c in marks.values()} == {5}
    lines = [c.get_zorder() for c in axes.collections if c.get_gid() == "graticule"]
    assert min(lines) > max(c.get_zorder() for c in marks.values())


# ---- several events


@pytest.mark.parametrize("theme", ["light", "dark"])
def test_several_events_colour_each_PMT_by_its_share(several, theme):
    axes = zarn.draw.map(several, theme=theme)
    per_pmt = several.per_pmt()
    steps = np.minimum(per_pmt.shadowed * 5 // per_pmt.paths, 4)
    assert numbers_of(axes) == dict(zip(SHARES, np.bincount(steps).tolist(), strict=True))
    assert [to_hex(c.get_facecolor()[0]) for c in marks_of(axes).values()] == (
        PALETTE["themes"][theme]["share"])
    words = words_of(axes)
    assert words[0] == "How often PMTs are hidden from 50 events"
    assert words[1].startswith(f"{int(several.counts().shadowed):,} of ")
    at = words.index("Shadowed from")
    assert words[at:at + 7] == ["Shadowed from", *SHARES, "of the events"]
    assert words[-1].endswith("; no path: of all 20,000 pairs of event and PMT.")


def test_a_share_of_a_fifth_begins_the_second_step(several):
    codes = np.array([[1, 1, 0], [0, 1, 0], [0, 1, 0], [0, 1, 7], [0, 1, 0]], np.uint8)
    codes[:, 2] = 7
    result = dataclasses.replace(
        several, events=several.events[:5], pmts=several.pmts[:3], codes=codes)
    assert numbers_of(zarn.draw.map(result)) == {"no path": 1, "20–40 %": 1, "80–100 %": 1}


# ---- the command


@pytest.mark.parametrize(
    ("arguments", "theme"),
    [(["--at", "4600,0,3000"], "dark"),
     (["--events", DATA / "source-scan.csv", "--tolerances", "0,150"], "light")],
)
def test_the_command_draws_the_same_map(calc, all_pmts, wall, arguments, theme):
    source = np.loadtxt(DATA / "source-scan.csv", delimiter=",", skiprows=1, usecols=(1, 2, 3))
    result = wall if theme == "dark" else calc.scan(source, all_pmts)
    axes = zarn.draw.map(result, theme=theme)
    picture = subprocess.run(
        [os.environ["ZARN_SHADOW"], "map", *arguments, "--pmts", DATA / "pmts.csv",
         "--geometry", REFERENCE, "--theme", theme],
        capture_output=True, text=True, check=True,
    ).stdout
    words = [html.unescape(w) for w in re.findall(r"<text[^>]*>([^<]*)</text>", picture)]
    assert set(words_of(axes)) - set(words) == set()
    # In each group of marks there are as many polygons, of the same colour.
    (marks,) = re.findall(r'<g id="pmts">\n(.*?)</g>', picture, re.DOTALL)
    drawn = [(colour, path.count("z")) for path, colour in re.findall(
        r'<path d="([^"]*)"[^>]* (?:fill|stroke)="(#[^"]*)"', marks)]
    assert drawn == [(to_hex(c.get_facecolor()[0]), len(c.get_paths()))
                     for c in marks_of(axes).values()]


# ---- edges


def test_little_is_not_nothing(wall):
    codes = np.zeros((1, 8000), np.uint8)
    codes[0, :3] = [1, 2, 2]
    words = words_of(zarn.draw.map(dataclasses.replace(wall, codes=codes)))
    shares = [words[words.index(name) + 2]
              for name in ("Hold-down ropes", "Support ropes", "Belly plates")]
    assert shares == ["< 0.1 %", "< 0.1 %", "0.0 %"]


def test_a_result_without_any_path_is_drawn(calc, all_pmts):
    axes = zarn.draw.map(calc.scan([[np.nan, 0, 0]], all_pmts[:5]))
    assert numbers_of(axes) == {"no path": 5}
    words = words_of(axes)
    assert words[1].startswith("No light path to any of the PMTs")
    assert "(position not finite)" in words
    assert words[words.index("Clear") + 2] == "–"


def test_PMTs_without_a_direction_are_counted_but_not_drawn(calc):
    pmts = [[0.0, 0.0, 0.0], [8300.0, 0.0, 0.0], [np.nan, 0.0, 0.0]]
    axes = zarn.draw.map(calc.scan([[0, 0, 3000]], pmts))
    assert sum(numbers_of(axes).values()) == 1
    assert words_of(axes)[-1] == "Not drawn, because without a direction: 2 PMTs."


def test_a_result_without_PMTs_says_so(calc):
    axes = zarn.draw.map(calc.scan([[0, 0, 3000]], np.empty((0, 3))))
    assert numbers_of(axes) == {}
    words = words_of(axes)
    assert "No PMTs" in words
    assert words[1].startswith("No PMTs")


def test_components_without_a_test_have_no_counts(tmp_path, all_pmts):
    for file in REFERENCE.iterdir():
        shutil.copy(file, tmp_path)
    (tmp_path / "av_pipes.json").unlink()
    anchors = tmp_path / "ncd_anchors.json"
    anchors.write_text(re.sub(r'("[xyz]": )\[[^]]*\]', r"\1[]", anchors.read_text()))
    result = zarn.Calculator(tmp_path).scan(WALL, all_pmts[::10])
    axes = zarn.draw.map(result)
    words = words_of(axes)
    assert words[words.index("AV pipes") + 1] == "not loaded"
    assert words[words.index("NCD anchors") + 1] == "nothing to test"
    assert words[words.index("Neck boss") + 2].endswith(" %")
    swatches = {c.get_gid(): c for c in axes.collections}
    for kind, is_filled in (("AVPipe", False), ("NCDAnchor", False), ("NeckBoss", True)):
        swatch = swatches[f"legend {kind}"]
        assert (len(swatch.get_facecolor()) > 0) is is_filled
        assert (len(swatch.get_edgecolor()) > 0) is not is_filled
    picture = subprocess.run(
        [os.environ["ZARN_SHADOW"], "map", "--at", "4600,0,3000", "--pmts", DATA / "pmts.csv",
         "--geometry", tmp_path], capture_output=True, text=True, check=True).stdout
    for word in ("not loaded", "nothing to test"):
        assert f">{word}<" in picture


def test_one_PMT_is_not_several(calc):
    words = words_of(zarn.draw.map(calc.scan([[0, 0, 3000]], [[8300.0, 0.0, 0.0]])))
    assert " of 1 PMT shadowed " in words[1]
    assert words[-1] == "Percent of the 1 PMT."
    words = words_of(zarn.draw.map(calc.scan([[np.nan, 0, 0]], [[8300.0, 0.0, 0.0]])))
    assert words[-1] == "Percent of the 0 PMTs with a light path; no path: of all 1 PMT."


@pytest.mark.parametrize(("number", "word"), [
    (0.0, "0"), (-0.0001, "0"), (-12.3456, "\u221212.346"), (999_999_999.5, "999999999.5"),
    (1e9, "1e+09"), (-1e200, "\u22121e+200"), (123456789012.0, "1.23457e+11"),
    (np.nan, "nan"), (-np.inf, "\u2212inf")])
def test_long_numbers_are_powers_of_ten(wall, number, word):
    events = np.array([[number, 0.0, 3000.0]])
    title = words_of(zarn.draw.map(dataclasses.replace(wall, events=events)))[0]
    assert title == f"What hides the PMTs from an event at ({word}, 0, 3000) mm"


def test_an_empty_title_is_none(wall):
    assert words_of(zarn.draw.map(wall, title=""))[0] == words_of(zarn.draw.map(wall))[0]


@pytest.mark.filterwarnings("error")
def test_what_is_no_text_is_replaced(wall):
    # Names of files can have bytes that are no text.
    axes = zarn.draw.map(wall, title="a\udcffb", detector="\ud800")
    assert words_of(axes)[0] == "a?b"
    assert words_of(axes)[1].endswith("\u00b7\u00a0\u00a0 ?")
    axes.figure.canvas.draw()


def test_wrong_arguments_are_refused(wall, several):
    none = dataclasses.replace(wall, events=wall.events[:0], codes=wall.codes[:0])
    with pytest.raises(ValueError, match="at least one event"):
        zarn.draw.map(none)
    with pytest.raises(ValueError, match='view="event" needs one event, the result has 50'):
        zarn.draw.map(several, view="event")
    with pytest.raises(ValueError, match="theme is 'blue', expected light or dark"):
        zarn.draw.map(wall, theme="blue")
    with pytest.raises(ValueError, match="projection polar"):
        zarn.draw.map(wall, pyplot.figure().add_subplot(projection="polar"))
    assert len(pyplot.get_fignums()) == 1  # only that of the last line


def test_a_map_is_drawn_into_given_axes(wall):
    figure, (left, right) = pyplot.subplots(1, 2, figsize=(16, 7))
    axes = zarn.draw.map(wall, right, title="from $5 to $6,\nin two lines", detector=LONG)
    assert axes is right
    assert (left.collections[:], len(figure.axes)) == ([], 2)
    assert words_of(axes)[0] == "from $5 to $6, in two lines"
    assert not axes.texts[0].get_parse_math()
    assert words_of(axes)[1].endswith(LONG)
    figure.canvas.draw()
    inside = axes.get_window_extent()
    for text in axes.texts:
        box = text.get_window_extent()
        assert inside.x0 <= box.x0 and box.x1 <= inside.x1, text.get_text()


def test_a_result_made_by_hand_needs_no_origin(wall):
    result = zarn.ScanResult(events=wall.events, pmts=wall.pmts, codes=wall.codes)
    assert words_of(zarn.draw.map(result))[1] == (
        "1,825 of 5,748 PMTs with a light path shadowed (31.8 %)")


def test_the_palette_is_that_of_the_command():
    assert zarn.draw.palette() == PALETTE
    file = pathlib.Path(zarn.__file__).parent / "palette.json"
    assert file.resolve() == (SOURCE / "display" / "palette.json").resolve()


def test_without_matplotlib_the_import_says_what_to_install():
    said = run_python(
        "import sys, zarn\n"
        "assert not any('matplotlib' in name for name in sys.modules)\n"
        "sys.modules['matplotlib'] = None\n"
        "try:\n"
        "    import zarn.draw\n"
        "except ImportError as error:\n"
        "    print(error)")
    assert said.stdout == (
        'zarn.draw needs the package matplotlib: pip install "zarn[draw]"\n')
