"""Scans of events and PMTs."""

import numpy as np
import pytest
import zarn
from support import REFERENCE, column, command, rows_of, write_positions
from zarn import _calculator

TOLERANCES = [0.0, 80.0, 150.0, 290.0]


@pytest.fixture(scope="module")
def result(calc, events, pmts):
    return calc.scan(events, pmts, reflections=True)


@pytest.fixture(scope="module")
def scan_by_command(events, pmts, tmp_path_factory):
    """Scan the same pairs with the command, which refuses no position."""
    folder = tmp_path_factory.mktemp("scan")
    files = ("--events", write_positions(folder / "events.csv", "event", events),
             "--pmts", write_positions(folder / "pmts.csv", "pmt", pmts))
    return lambda *options: command("scan", "--geometry", REFERENCE, *files, *options)


def arrays_of(result):
    return {name: getattr(result, name) for name in (
        "events", "pmts", "codes", "reflected_codes", "smeared", "smeared_reflected",
        "tolerances", "event_counts", "pmt_counts")}


def assert_same(one, other):
    for name, array in arrays_of(one).items():
        np.testing.assert_array_equal(array, getattr(other, name), err_msg=name, strict=True)
    assert one.origin == other.origin


def test_codes_are_those_of_the_command(result, events, pmts, scan_by_command):
    rows = scan_by_command("--columns", "code")
    assert result.codes.shape == (len(events), len(pmts))
    assert result.codes.dtype == np.uint8
    assert np.array_equal(result.codes.reshape(-1), column(rows, "code", int))
    assert set(result.codes.flat) >= {*range(7), zarn.Verdict.POSITION_NOT_FINITE}


def test_codes_of_reflections_are_those_of_the_command(result, scan_by_command):
    rows = scan_by_command("--reflections", "--columns", "code")
    codes = np.stack([result.codes.reshape(-1), result.reflected_codes.reshape(-1)], axis=-1)
    reflected = np.array([row["type"] == "Water->Reflection->Water" for row in rows])
    by_command = column(rows, "code", int)
    assert np.array_equal(codes[:, 0], by_command[~reflected])
    assert np.array_equal(codes[:, 1][codes[:, 1] < 7], by_command[reflected])


def test_codes_are_verdicts_on_the_light_paths(calc, result, paths):
    codes = np.stack([result.codes, result.reflected_codes], axis=-1)
    there_is_a_path = paths["type"] > 0
    assert np.array_equal(codes <= 6, there_is_a_path)
    assert np.array_equal(codes[there_is_a_path], calc.check(paths)[there_is_a_path])


def test_reasons_for_no_path_are_told_apart(calc):
    at = [[8300.0, 0.0, 0.0], [0.0, 0.0, 0.0]]
    codes = calc.scan([[np.inf, 0, 0], [8300, 0, 0], [0, 0, 0]], at, reflections=True)
    assert [[zarn.Verdict(code).name for code in row] for row in codes.codes] == [
        ["POSITION_NOT_FINITE", "POSITION_NOT_FINITE"],
        ["EVENT_AT_PMT", "PMT_NOT_IN_WATER"],
        [zarn.Verdict(codes.codes[2, 0]).name, "PMT_NOT_IN_WATER"],
    ]
    assert codes.reflected_codes[2, 0] == zarn.Verdict.NO_REFLECTED_PATH


@pytest.mark.parametrize("threads", [1, 2, 7])
def test_threads_do_not_change_a_scan(calc, events, pmts, result, threads):
    assert_same(calc.scan(events, pmts, reflections=True, threads=threads), result)


@pytest.mark.parametrize("shape", [(0, 5), (5, 0), (0, 0)])
def test_a_scan_without_pairs_is_empty(calc, shape):
    result = calc.scan(np.zeros((shape[0], 3)), np.zeros((shape[1], 3)), smear=5.0,
                       reflections=True, tolerances=[10.0])
    assert result.codes.shape == shape
    assert result.counts().paths == 0
    assert np.isnan(result.counts().fraction)
    assert result.at_tolerances().paths.tolist() == [0]


# ---- counts


def test_counts_are_those_of_the_command(calc, events, pmts, scan_by_command, tmp_path):
    result = calc.scan(events, pmts)
    scan_by_command("--per-pmt", tmp_path / "pmts.csv", "--per-event", tmp_path / "events.csv")
    for counts, file in ((result.per_pmt(), "pmts.csv"), (result.per_event(), "events.csv")):
        rows = rows_of((tmp_path / file).read_text())
        assert np.array_equal(counts.paths, column(rows, "paths", int))
        assert np.array_equal(counts.shadowed, column(rows, "shadowed", int))
        fractions = [float(row["fraction"] or "nan") for row in rows]
        assert np.allclose(counts.fraction, fractions, rtol=1e-5, equal_nan=True)
        most = np.argmax([counts.of(c) for c in zarn.COMPONENTS], axis=0)
        assert all(zarn.COMPONENTS[i].label == row["by"] for i, row in zip(most, rows) if row["by"])
        table = counts.to_pandas()
        assert table.index.name == file[:-5]
        assert table["shadowed"].tolist() == counts.shadowed.tolist()
        assert table["AVPipe"].tolist() == counts.of(zarn.Verdict.AV_PIPE).tolist()


def test_the_total_is_the_sum_of_direct_and_reflected_light(result):
    total = result.counts()
    codes = np.concatenate([result.codes, result.reflected_codes], axis=None)
    assert total.paths == (codes < 7).sum()
    assert total.shadowed == ((codes > 0) & (codes < 7)).sum()
    assert total.of(zarn.Verdict.NO_REFLECTED_PATH) == (codes == 11).sum()
    assert total.fraction == total.shadowed / total.paths
    error = (total.fraction * (1 - total.fraction) / total.paths) ** 0.5
    assert np.isclose(total.fraction_error, error, rtol=1e-14)
    for parts in (result.per_event(), result.per_pmt()):
        assert np.array_equal(parts.numbers.sum(axis=0), total.numbers)
    assert np.isnan(result.per_event().fraction[-1])


def test_counts_at_tolerances_are_those_of_scans(calc, events, pmts):
    result = calc.scan(events, pmts, reflections=True, tolerances=TOLERANCES)
    for i, tolerance in enumerate(TOLERANCES):
        one = calc.with_tolerance(tolerance).scan(events, pmts, reflections=True)
        for of_all, of_one in (
            (result.at_tolerances().numbers[i], one.counts()),
            (result.per_event_at_tolerances().numbers[:, i], one.per_event()),
            (result.per_pmt_at_tolerances().numbers[:, i], one.per_pmt()),
        ):
            assert np.array_equal(of_all, of_one.numbers[..., :7])


def test_counts_at_tolerances_are_those_of_the_command(
        calc, events, pmts, scan_by_command, tmp_path):
    result = calc.scan(events, pmts, tolerances=TOLERANCES)
    scan_by_command("--tolerances", ",".join(map(str, TOLERANCES)), "--per-pmt",
                    tmp_path / "pmts.csv", "--per-event", tmp_path / "events.csv")
    for counts, file in ((result.per_pmt_at_tolerances(), "pmts.csv"),
                         (result.per_event_at_tolerances(), "events.csv")):
        rows = rows_of((tmp_path / file).read_text())
        assert np.array_equal(counts.paths.reshape(-1), column(rows, "paths", int))
        assert np.array_equal(counts.shadowed.reshape(-1), column(rows, "shadowed", int))
        table = counts.to_pandas()
        assert table.index.names == [file[:-5], "tolerance"]
        tolerances = table.index.get_level_values("tolerance")
        assert np.array_equal(tolerances, column(rows, "tolerance"))
        assert np.array_equal(table["shadowed"], column(rows, "shadowed", int))
    assert result.at_tolerances().to_pandas().index.tolist() == TOLERANCES


def test_what_was_not_asked_for_is_not_there(result):
    for call in (result.at_tolerances, result.per_event_at_tolerances,
                 result.per_pmt_at_tolerances):
        with pytest.raises(ValueError, match="the scan was made without tolerances"):
            call()
    with pytest.raises(ValueError, match="the scan was made without smear"):
        _ = result.smeared_fraction
    with pytest.raises(ValueError, match="the scan was made without smear and reflections"):
        _ = result.smeared_reflected_fraction


# ---- smearing


def test_smeared_positions_are_those_of_the_command(calc, events, pmts, scan_by_command):
    result = calc.scan(events, pmts, smear=40.0, samples=9, seed=-3)
    rows = scan_by_command("--smear", 40, "--samples", 9, "--seed", -3)
    assert np.array_equal(result.smeared[..., 0].reshape(-1), column(rows, "smeared_paths", int))
    wanted = [float(row["smeared_fraction"] or "nan") for row in rows]
    assert np.array_equal(result.smeared_fraction.reshape(-1), wanted, equal_nan=True)
    assert len(np.unique(result.smeared[..., 1])) > 5


def test_smeared_reflections_are_those_of_the_command(calc, events, pmts, scan_by_command):
    result = calc.scan(events, pmts, smear=40.0, samples=9, reflections=True)
    rows = scan_by_command("--smear", 40, "--samples", 9, "--reflections")
    rows = [row for row in rows if row["type"] == "Water->Reflection->Water"]
    found = result.smeared_reflected[result.reflected_codes < 7]
    assert np.array_equal(found[:, 0], column(rows, "smeared_paths", int))
    wanted = [float(row["smeared_fraction"] or "nan") for row in rows]
    fractions = result.smeared_reflected_fraction[result.reflected_codes < 7]
    assert np.array_equal(fractions, wanted, equal_nan=True)


# ---- arguments


@pytest.mark.parametrize(
    "wrong",
    [{"smear": -1.0}, {"smear": np.nan}, {"samples": 0}, {"samples": 65536}, {"seed": 2**63},
     {"tolerances": [np.nan]}, {"tolerances": [[1.0]]}, {"threads": 0}, {"wavelength": -1.0}],
    ids=str,
)
def test_a_wrong_argument_is_named(calc, wrong):
    with pytest.raises(ValueError, match=f"{next(iter(wrong))}"):
        calc.scan([[0.0, 0.0, 0.0]], [[8300.0, 0.0, 0.0]], **wrong)


@pytest.mark.parametrize("wrong", [{"samples": 1.5}, {"seed": "1"}, {"threads": 2.0}], ids=str)
def test_an_argument_that_is_no_whole_number_is_refused(calc, wrong):
    with pytest.raises(TypeError):
        calc.scan([[0.0, 0.0, 0.0]], [[8300.0, 0.0, 0.0]], **wrong)


# ---- chunks and progress


@pytest.mark.parametrize("numbers", [1, 1000, 10**9])
def test_chunks_are_the_whole_in_order(calc, events, pmts, monkeypatch, numbers):
    asked = {"reflections": True, "smear": 20.0, "samples": 3, "tolerances": TOLERANCES}
    whole = calc.scan(events, pmts, **asked)
    chunks = []
    monkeypatch.setattr(_calculator, "_NUMBERS_IN_CHUNK", numbers)
    rest = calc.scan(events, pmts, on_chunk=chunks.append, **asked)
    assert len(chunks) == {1: 24, 1000: 12, 10**9: 1}[numbers]
    for name, array in arrays_of(whole).items():
        if name == "pmt_counts":
            assert np.array_equal(rest.pmt_counts, array)
        elif name in ("pmts", "tolerances"):
            assert all(np.array_equal(getattr(chunk, name), array) for chunk in chunks)
        else:
            parts = [getattr(chunk, name) for chunk in chunks]
            np.testing.assert_array_equal(np.concatenate(parts), array, err_msg=name, strict=True)
    assert rest.codes.shape == (0, len(pmts))
    assert np.array_equal(rest.at_tolerances().numbers, whole.at_tolerances().numbers)


def test_chunks_number_their_events_as_the_whole(calc, events, pmts, monkeypatch):
    chunks = []
    monkeypatch.setattr(_calculator, "_NUMBERS_IN_CHUNK", 1000)
    calc.scan(events, pmts, on_chunk=chunks.append, tolerances=[10.0])
    numbers = list(range(len(events)))
    for table in (lambda chunk: chunk.per_event().to_pandas().index.tolist(),
                  lambda chunk: chunk.to_pandas()["event"].unique().tolist(),
                  lambda chunk: chunk.per_event_at_tolerances().to_pandas()
                  .index.get_level_values("event").tolist()):
        assert sum(map(table, chunks), []) == numbers


def test_a_result_keeps_its_positions(calc, events, pmts):
    mine, tolerances = np.array(events), np.array([10.0])
    result = calc.scan(mine, pmts, tolerances=tolerances)
    mine[:], tolerances[:] = 0, 0
    np.testing.assert_array_equal(result.events, events)
    assert result.tolerances.tolist() == [10.0]


def test_a_flag_can_be_any_truth_value(calc, events, pmts):
    few = pmts[:3]
    assert calc.light_paths(events[0], few, reflections=np.True_).shape == (1, 3, 2)
    assert str(calc.explain(event=events[0], pmt=few[0], reflection=1)) == str(
        calc.explain(event=events[0], pmt=few[0], reflection=True))


def test_a_chunk_is_small_also_with_few_pmts_and_many_tolerances(calc, pmts, monkeypatch):
    monkeypatch.setattr(_calculator, "_NUMBERS_IN_CHUNK", 7000)
    sizes = []
    calc.scan(np.zeros((25, 3)), pmts[:1], tolerances=range(100),
              on_chunk=lambda chunk: sizes.append(chunk.event_counts.size))
    assert sizes == [7000, 7000, 3500]


def test_an_exception_of_the_callback_ends_the_scan_and_arrives(calc, events, pmts, monkeypatch):
    monkeypatch.setattr(_calculator, "_NUMBERS_IN_CHUNK", 1)
    seen = []

    def fail_at_the_third(chunk):
        seen.append(chunk)
        if len(seen) == 3:
            raise LookupError("no third")

    with pytest.raises(LookupError, match="no third"):
        calc.scan(events, pmts, on_chunk=fail_at_the_third)
    assert len(seen) == 3


def test_a_callback_can_use_the_calculator(calc, events, pmts, monkeypatch):
    monkeypatch.setattr(_calculator, "_NUMBERS_IN_CHUNK", 1000)

    def scan_again(chunk):
        assert np.array_equal(calc.scan(chunk.events, pmts).codes, chunk.codes)

    calc.scan(events, pmts, on_chunk=scan_again)


def test_progress_shows_a_bar_to_the_last_event(calc, events, pmts, capfd):
    calc.scan(events, pmts, progress=True)
    assert "24/24" in capfd.readouterr().err
    calc.scan(events, pmts)
    assert capfd.readouterr() == ("", "")


def test_progress_needs_no_tqdm(calc, events, pmts, monkeypatch, result):
    monkeypatch.setitem(__import__("sys").modules, "tqdm.auto", None)
    found = calc.scan(events, pmts, reflections=True, progress=True)
    assert np.array_equal(found.codes, result.codes)
