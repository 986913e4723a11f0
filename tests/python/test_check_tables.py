"""Findings about geometry tables, as values and as an exception."""

import dataclasses
import json
import pickle
import shutil

import numpy as np
import pandas as pd
import pytest
import zarn
from support import MINIMAL, REFERENCE, command_json, import_tables
from zarn import Severity

#: The fields of a finding that the command writes as JSON, too.
FIELDS = [field.name for field in dataclasses.fields(zarn.TableFinding) if field.name != "text"]


@pytest.fixture
def tables(tmp_path):
    return shutil.copytree(MINIMAL, tmp_path / "tables")


def edit(file, old, new):
    text = file.read_text()
    assert old in text
    file.write_text(text.replace(old, new))


@pytest.fixture
def typo(tables):
    """An error: a field is missing; and a warning: a radius is negative."""
    edit(tables / "support_ropes.json", '"r_rope"', '"r_rop"')
    edit(tables / "hold_down_ropes.json", '"r_rope": 10', '"r_rope": -10')
    return tables


def test_a_sound_detector_has_no_findings():
    findings = zarn.check_tables(MINIMAL)
    assert findings == () and str(findings) == ""
    findings.raise_for_errors(strict=True)


def test_a_finding_has_its_place_its_value_and_what_would_be_right(typo):
    error, warning = zarn.check_tables(typo)
    assert (error.severity, error.component) == (Severity.ERROR, zarn.Verdict.SUPPORT_ROPE)
    assert (error.table, error.index, error.field) == ("SOLID", "support_rope", "")
    assert error.place.startswith(f"{typo / 'support_ropes.json'}:4:")
    assert error.problem == "there is no field r_rope" and "r_rop" in error.remedy
    assert (warning.severity, warning.component) == (Severity.WARNING, zarn.Verdict.AVHD_ROPE)
    assert warning.value == "-10" and warning.field == "r_rope"
    for finding in (error, warning):
        for part in (finding.severity, finding.place, finding.problem, finding.remedy):
            assert part in str(finding)


def test_findings_compare_with_words_and_can_be_pickled(typo):
    findings = zarn.check_tables(typo)
    assert [finding.severity for finding in findings] == ["error", "warning"]
    again = pickle.loads(pickle.dumps(findings))
    assert again == findings
    with pytest.raises(zarn.TableCheckError):
        again.raise_for_errors()


def test_an_exception_has_the_findings_that_are_refused(typo):
    findings = zarn.check_tables(typo)
    with pytest.raises(zarn.TableCheckError) as raised:
        findings.raise_for_errors()
    assert raised.value.findings == findings[:1]
    assert str(raised.value) == f"{typo}: the tables are wrong:\n{findings[0]}"
    with pytest.raises(zarn.Error) as raised:
        findings.raise_for_errors(strict=True)
    assert raised.value.findings == findings[:]
    again = pickle.loads(pickle.dumps(raised.value))
    assert str(again) == str(raised.value) and again.findings == raised.value.findings


def test_warnings_raise_only_where_it_is_strict_and_notes_never(tables):
    edit(tables / "hold_down_ropes.json", '"r_rope": 10', '"r_rope": -10')
    findings = zarn.check_tables(tables)
    findings.raise_for_errors()
    with pytest.raises(zarn.TableCheckError):
        findings.raise_for_errors(strict=True)
    notes = zarn.check_tables(REFERENCE)
    assert {note.severity for note in notes} == {Severity.NOTE}
    notes.raise_for_errors(strict=True)


def test_no_error_means_that_every_component_is_on(typo):
    for source in (MINIMAL, REFERENCE, typo):
        errors = {found.component for found in zarn.check_tables(source)
                  if found.severity is Severity.ERROR}
        assert set(zarn.COMPONENTS) - set(zarn.Calculator(source).components) == errors


def test_nothing_is_logged(typo, caplog):
    with caplog.at_level("DEBUG"):
        zarn.check_tables(typo)
    assert caplog.records == []


def test_tables_without_a_vessel_have_findings_too(tables):
    (tables / "vessel.json").unlink()
    with pytest.raises(zarn.DBNotFoundError):
        zarn.Calculator(tables)
    error, *_ = zarn.check_tables(tables)
    assert error.severity is Severity.ERROR and error.component is None


@pytest.mark.parametrize("kind", ["files", "database"])
def test_tables_are_those_of_the_run_the_override_and_the_time(tmp_path, tables, kind):
    source = tables
    if kind == "database":
        source = f"sqlite:{tmp_path / 'tables.db'}"
        import_tables(tables, source)
        before = zarn.Calculator(source).as_of
    bad = tmp_path / "bad.json"
    bad.write_text(json.dumps([{"table": "SOLID", "index": "support_rope", "pass": 1,
                                "runs": [10, 20], "fields": {"r_rope": 0, "z_rope": 3900}}]))
    for run, count in ((9, 0), (10, 1), (20, 1), (21, 0)):
        assert len(zarn.check_tables(source, run, overrides=bad)) == count
    if kind == "files":
        shutil.copy(bad, tables)
    else:
        import_tables(bad, source)
        assert zarn.check_tables(source, 10, as_of=before) == ()
    (finding,) = zarn.check_tables(source, 10)
    assert finding.value == "0"
    assert ("pass 1" in finding.place and "10 to 20" in finding.place) == (kind == "database")


def test_pmts_are_checked_beside_the_vessel():
    pmts = pd.DataFrame({"x": [5000.0, 0.0], "y": 0.0, "z": [0.0, 1000.0]}, index=["far", "near"])
    (finding,) = zarn.check_tables(MINIMAL, pmts=pmts)
    assert (finding.severity, finding.table, finding.index) == ("warning", "PMT", "near")
    (finding,) = zarn.check_tables(MINIMAL, pmts=pmts.to_numpy())
    assert finding.index == "1"
    (finding,) = zarn.check_tables(MINIMAL, pmts=pmts.to_numpy().tolist())
    assert finding.index == "1"


def test_what_matters_most_comes_first(typo):
    found = zarn.check_tables(typo, pmts=np.zeros((1, 3)))
    assert [finding.severity for finding in found] == ["error", "warning", "warning"]
    found = zarn.check_tables(REFERENCE, pmts=np.zeros((1, 3)))
    assert [finding.severity for finding in found][:2] == ["warning", "note"]


def test_findings_are_those_of_the_command(typo):
    status, rows = command_json("tables", "check", typo, "--json")
    assert status == 3
    assert [{name: row[name] for name in FIELDS} for row in rows] == [
        {**{name: getattr(found, name) for name in FIELDS},
         "component": found.component.label} for found in zarn.check_tables(typo)]


def test_what_cannot_be_read_is_a_table_file_error(tmp_path):
    with pytest.raises(zarn.TableFileError, match="none.json"):
        zarn.check_tables(tmp_path / "none.json")
