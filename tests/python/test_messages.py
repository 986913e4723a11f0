"""What the library logs arrives at the logger "zarn", and nowhere else."""

import logging
import shutil
import threading

import pytest
import zarn
from support import REFERENCE, run_python

NAMES = ["AV hold-down rope", "AV support rope", "belly plate", "NCD anchor", "AV pipe",
         "neck boss"]


@pytest.fixture
def without_pipes(tmp_path):
    tables = shutil.copytree(REFERENCE, tmp_path / "tables")
    (tables / "av_pipes.json").unlink()
    return tables


def test_a_loaded_component_is_an_info_and_one_that_is_not_a_warning(without_pipes, caplog):
    caplog.set_level(logging.DEBUG)
    zarn.Calculator(without_pipes)
    assert {record.name for record in caplog.records} == {"zarn"}
    levels = {record.getMessage(): record.levelno for record in caplog.records}
    for name in NAMES:
        loaded = f"ShadowingCalculator: Loaded {name} shadowing information."
        if name == "AV pipe":
            assert loaded not in levels
        else:
            assert levels[loaded] == logging.INFO
    assert [message for message, level in levels.items() if level == logging.WARNING] == [
        "ShadowingCalculator: Cannot load AV pipe parameters, these will not be loaded."]


def test_messages_arrive_before_the_call_returns(without_pipes, caplog):
    """Also on another thread, while the main thread waits."""
    arrived = []

    def call():
        caplog.clear()
        zarn.Calculator(without_pipes)
        arrived.append("AV pipe parameters" in caplog.text)

    thread = threading.Thread(target=call)
    thread.start()
    thread.join()
    call()
    assert arrived == [True, True]


def test_messages_arrive_from_any_thread(without_pipes, caplog):
    threads = [threading.Thread(target=zarn.Calculator, args=(without_pipes,)) for _ in range(5)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert caplog.text.count("AV pipe parameters") == 5


def test_a_percent_sign_is_no_format(tmp_path, caplog):
    shutil.copytree(REFERENCE, tmp_path / "100%s")
    caplog.set_level(logging.DEBUG)
    zarn.Calculator(tmp_path / "100%s")
    assert len(caplog.records) == len(NAMES)


def test_nothing_goes_to_standard_error_past_logging(without_pipes, capfd):
    """Also not at the end of the interpreter, while views are still alive."""
    done = run_python(
        "import logging, sys, zarn\n"
        "logging.getLogger('zarn').addHandler(logging.NullHandler())\n"
        "calc = zarn.Calculator(sys.argv[1])\n"
        "points = calc.hold_down_ropes.surface_points\n"
        "paths = calc.light_paths([[0, 0, float('nan')]], [[8300, 0, 0]])\n"
        "codes = calc.check(paths), calc.scan([[0, 0, 0]], [[8300, 0, 0]])\n"
        "calc.explain(event=[0, 0, 0], pmt=[0, 0, 0]), calc.critical_tolerance(paths)\n"
        "paths['type'] = 7; calc.check(paths); calc.explain(paths[0, 0])\n", without_pipes)
    assert (done.stdout, done.stderr) == ("", "")


def test_warnings_reach_someone_who_has_not_configured_logging(without_pipes):
    done = run_python("import sys, zarn; zarn.Calculator(sys.argv[1])", without_pipes)
    assert done.stderr == (
        "ShadowingCalculator: Cannot load AV pipe parameters, these will not be loaded.\n")


def test_an_error_comes_after_the_messages_before_it(without_pipes, caplog):
    (without_pipes / "vessel.json").unlink()
    with pytest.raises(zarn.DBNotFoundError):
        zarn.Calculator(without_pipes)
    assert "AV pipe" not in caplog.text
