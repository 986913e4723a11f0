"""Verdicts and light paths as columns of ROOT's data frames (ROOT.RDataFrame).

A vector in a frame is either three columns, NAME_x, NAME_y and NAME_z, all float or all
double; or one column NAME of ROOT.Math.XYZVector, XYZVectorF, XYZPoint or XYZPointF, or of
ROOT.TVector3. Columns with other names can be given these with the frame's Alias.

Importing this module imports ROOT; importing zarn does not.
"""

from __future__ import annotations

import os
import pathlib
from collections.abc import Callable, Mapping
from typing import Any

import ROOT

from . import _core
from ._calculator import Calculator

#: A frame, or a node of its graph: what Define and Filter return.
Frame = Any

_LIBRARY = pathlib.Path(__file__).parent / "lib" / "libzarn_root.so"
if ROOT.gSystem.Load(str(_LIBRARY)) < 0:
    raise ImportError(f"{_LIBRARY} cannot be loaded")
_RDF = ROOT.ZARN.RDF


def define_shadowing(
    df: Frame, calc: Calculator, columns: Mapping[str, str] | None = None, *, code: str = "code"
) -> Frame:
    """Add a column with the verdict on each light path.

    Args:
        df: a frame with the columns type (an integer, or the name of a type: PathType),
            and the vectors start, end, initial, final, av1, av2, av3 and av4.
        calc: the detector.
        columns: other names of these, such as {"start": "vertex"}.
        code: the name of the new column: int, the number of a Verdict, 0 to 6.

    Returns:
        The frame with the column. A path without a type is clear: nothing blocks it.

    Raises:
        ValueError: a column is missing or has another type, or the new one exists.
    """
    names = _names(_RDF.PathColumns(), columns, code)
    return _define(_RDF.DefineShadowing, df, _shadowing(calc), names)


def define_light_path(
    df: Frame,
    calc: Calculator,
    columns: Mapping[str, str] | None = None,
    *,
    wavelength: float = 400.0,
    reflection: bool = False,
) -> Frame:
    """Add columns with the light path from each event to its PMT.

    Args:
        df: a frame with the vectors event and pmt: positions, mm.
        calc: the detector.
        columns: other names of these, such as {"event": "vertex"}.
        wavelength: nm.
        reflection: the light that is reflected at the vessel.

    Returns:
        The frame with the columns of zarn.LIGHT_PATH, among them those that
        define_shadowing takes. The type is 0 where there is no path.

    Raises:
        ValueError: a column is missing or has another type, or a new one exists.
    """
    light = _light(calc, wavelength)
    names = _names(_RDF.PairColumns(), columns)
    return _define(_RDF.DefineLightPath, df, _bound(light), names, _kind(reflection))


def define_scan(
    df: Frame,
    calc: Calculator,
    columns: Mapping[str, str] | None = None,
    *,
    code: str = "code",
    wavelength: float = 400.0,
    reflection: bool = False,
) -> Frame:
    """Add a column with the verdict on the light from each event to its PMT.

    Args:
        df, columns, wavelength, reflection: as in define_light_path.
        calc: the detector.
        code: the name of the new column: int, the number of a Verdict, also of those that
            tell why there is no path.
    """
    light = _light(calc, wavelength)
    names = _names(_RDF.PairColumns(), columns, code)
    return _define(
        _RDF.DefineScan, df, _shadowing(calc), _bound(light), names, _kind(reflection)
    )


def from_paths(
    file: str | os.PathLike[str],
    calc: Calculator | None = None,
    columns: Mapping[str, str] | None = None,
    *,
    code: str = "code",
) -> Frame:
    """Make a frame of the light paths in a ROOT file, and of the verdicts on them.

    It reads a TTree or an RNTuple in bulk and judges in batches: several times faster than
    define_shadowing on ROOT's own frame of the file. With ROOT.EnableImplicitMT each cluster
    of the file is read by one thread, and results are not in the order of the rows.

    Args:
        file: "paths.root", or "paths.root:tree" if it has several trees.
        calc: the detector; None for no verdicts.
        columns: what columns are called in the file, such as {"start_x": "vertex.x"}.
        code: the name of the column of verdicts.

    Returns:
        A frame with the columns row (the entry), type (int), start_x to av4_z (double), and
        event and pmt if the file has them; with a calculator also the verdicts: int, the
        number of a Verdict.

    Raises:
        Error: the file is damaged, or a column is missing or holds something else.
        ValueError: the column of verdicts exists.
    """
    names = ROOT.std.map["std::string", "std::string"]()
    for ours, name in (columns or {}).items():
        names[ours] = name
    shadowing = ROOT.nullptr if calc is None else _shadowing(calc)
    return _call(_RDF.FromPaths, os.fspath(file), shadowing, names, code)


def declare(name: str, calc: Calculator) -> None:
    """Make the verdict on a light path a function of ROOT's interpreter.

    For frames that take only expressions in strings, such as those of
    ROOT.RDF.Distributed: declare it in every process, once.

    Args:
        name: of the function.
        calc: the detector; kept for the rest of the process.

    Raises:
        ValueError: there is such a function, or this is no name of one.
    """
    values = {"name": name, "address": calc._core.shadowing_address}
    is_new = name.isidentifier() and not hasattr(ROOT, name)
    if not is_new or not ROOT.gInterpreter.Declare(_JUDGE % values):
        raise ValueError(f"{name!r} cannot be declared: it exists, or is not a name")
    _declared.append(calc)


def expression(name: str, columns: Mapping[str, str] | None = None) -> str:
    """Give the expression with which a frame's Define uses a declared function.

    Args:
        name: of the function.
        columns: other names of columns, as in define_shadowing. A vector is three columns of
            numbers.
    """
    names = _names(_RDF.PathColumns(), columns)
    vectors = (names.start, names.end, names.initial, names.final)
    points = (names.av1, names.av2, names.av3, names.av4)
    coordinates = [f"{vector}_{axis}" for vector in (*vectors, *points) for axis in "xyz"]
    return f"{name}({names.type}, {', '.join(coordinates)})"


# The calculators of functions, which live as long as the interpreter.
_declared: list[Calculator] = []

_JUDGE = """
template <class Type, class... Numbers>
int %(name)s(const Type& type, Numbers... numbers) {
  static_assert(sizeof...(Numbers) == 24);
  const double values[] = {static_cast<double>(numbers)...};
  ZARN::DU::LightPath path;
  if constexpr (std::is_integral_v<Type>) {
    const int number = static_cast<int>(type);
    const bool isSame = static_cast<Type>(number) == type && (type < 0) == (number < 0);
    path.LightPathType = static_cast<ZARN::DU::eLightPathType>(
        isSame ? number : int{ZARN::DU::kNumberOfLightPathTypes});
  } else {
    const auto& names = ZARN::DU::kLightPathTypeNames;
    const auto found = std::find(names.begin(), names.end(), type);
    path.LightPathType = static_cast<ZARN::DU::eLightPathType>(found - names.begin());
  }
  const double* value = values;
  for (TVector3* vector : {&path.StartPos, &path.EndPos, &path.InitialDirection,
                           &path.FinalDirection, &path.AVPoint1, &path.AVPoint2,
                           &path.AVPoint3, &path.AVPoint4}) {
    vector->SetXYZ(value[0], value[1], value[2]);
    value += 3;
  }
  const auto& calculator = *reinterpret_cast<const ZARN::DU::ShadowingCalculator*>(%(address)d);
  return static_cast<int>(calculator.FindShadowing(path));
}
"""


def _shadowing(calc: Calculator) -> Any:
    address = calc._core.shadowing_address
    return ROOT.bind_object(address, ROOT.ZARN.DU.ShadowingCalculator)


def _light(calc: Calculator, wavelength: float) -> _core.LightPathCalculator:
    try:
        return calc._core.light_path_calculator(float(wavelength))
    finally:
        _core.deliver_messages()


def _bound(light: _core.LightPathCalculator) -> Any:
    return ROOT.bind_object(light.address, ROOT.ZARN.DU.LightPathCalculator)


def _kind(reflection: bool) -> Any:
    kinds = ROOT.ZARN.DU.eLight
    return kinds.kReflected if reflection else kinds.kDirect


def _names(names: Any, columns: Mapping[str, str] | None, code: str | None = None) -> Any:
    for ours, name in (columns or {}).items():
        if ours == "code" or not hasattr(names, ours):
            raise ValueError(f"columns: there is no column {ours!r} to be named")
        setattr(names, ours, name)
    if code is not None:
        names.code = code
    return names


def _define(function: Callable[..., Frame], df: Frame, *arguments: Any) -> Frame:
    return _call(function, ROOT.RDF.AsRNode(df), *arguments)


def _call(function: Callable[..., Frame], *arguments: Any) -> Frame:
    """Call a function of C++; its exceptions become those of the package."""
    try:
        return function(*arguments)
    except ROOT.std.invalid_argument as error:
        raise ValueError(error.what()) from None
    except ROOT.std.runtime_error as error:
        raise _core.Error(error.what()) from None
