"""Why a light path is blocked or clear."""

import json
import os
import subprocess

import numpy as np
import pytest
import zarn
from support import REFERENCE, as_columns

EVENT = [0.0, 0.0, 3000.0]


def by_command(event, pmt, *options):
    """What the command explains: in words, and as JSON."""
    found = []
    for form in ((), ("--json",)):
        done = subprocess.run(
            [os.environ["ZARN_SHADOW"], "explain", "--geometry", str(REFERENCE),
             "--at", ",".join(map(repr, event)), "--to", ",".join(map(repr, pmt)),
             *options, *form], capture_output=True, text=True, check=False)
        assert done.returncode == 0, done.stderr
        found.append(done.stdout)
    return found[0], json.loads(found[1])


@pytest.mark.parametrize("pmt", [[8300.0, 0.0, 0.0], [0.0, 8300.0, 0.0], [0.0, 0.0, 8300.0],
                                 [0.0, 0.0, 100.0]], ids=str)
def test_an_explanation_is_that_of_the_command(calc, pmt):
    explanation = calc.explain(event=EVENT, pmt=pmt)
    text, parts = by_command(EVENT, pmt)
    assert str(explanation) == repr(explanation) == text.rstrip("\n")
    assert explanation.to_dict() == parts


def test_reflected_light_is_explained(calc):
    event, pmt = [0.0, 7000.0, 0.0], [0.0, 5000.0, 6000.0]
    explanation = calc.explain(event=event, pmt=pmt, reflection=True)
    text, parts = by_command(event, pmt, "--reflections")
    assert str(explanation) in text
    assert explanation.to_dict() != calc.explain(event=event, pmt=pmt).to_dict()
    nothing = calc.explain(event=EVENT, pmt=pmt, reflection=True)
    assert "no reflected path" in str(nothing)


def test_the_verdict_is_that_of_check(calc, paths):
    some = paths[::3, ::40].reshape(-1)
    for path, code in zip(some[some["type"] > 0], calc.check(some[some["type"] > 0])):
        by = calc.explain(path).to_dict()["by"]
        assert (by or "clear") == zarn.Verdict(code).label


def test_a_path_can_be_a_table_of_one_row_or_an_element(calc, paths):
    path = paths[0, 0, 0]
    texts = {str(calc.explain(p)) for p in (path, paths[0, :1, 0], as_columns(paths[0, :1, 0]))}
    assert len(texts) == 1


@pytest.mark.parametrize("count", [0, 2])
def test_only_one_path_is_explained(calc, paths, count):
    with pytest.raises(ValueError, match="expected one path"):
        calc.explain(paths[0, :count, 0])
    with pytest.raises(ValueError, match="expected one event and one pmt"):
        calc.explain(event=np.zeros((count, 3)), pmt=EVENT)


def test_either_a_path_or_two_positions_are_given(calc, paths):
    for wrong in ({}, {"event": EVENT}, {"pmt": EVENT}, {"path": paths[0, 0, 0], "pmt": EVENT},
                  {"path": paths[0, 0, 0], "event": EVENT, "pmt": EVENT}):
        with pytest.raises(TypeError, match="give either a path, or an event and a pmt"):
            calc.explain(**wrong)
