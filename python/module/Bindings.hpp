#pragma once

#include <nanobind/nanobind.h>

#include "python/module/Calculator.hpp"

namespace ZARN::Python {

// The operations of the class _core.Calculator. Their arguments are arrays of
// exactly the right type and shape: zarn/_calculator.py makes them from what
// users have.

/// Verdicts, critical tolerances and explanations of light paths.
void BindPaths(nanobind::class_<Calculator>& calculator);
/// Light paths from events to PMTs.
void BindLightPaths(nanobind::class_<Calculator>& calculator);
/// Verdicts on the light from events to PMTs.
void BindScan(nanobind::class_<Calculator>& calculator);
/// The models of the hardware, and which components are on.
void BindModels(nanobind::module_& module,
                nanobind::class_<Calculator>& calculator);
/// Where the C++ objects are, for ROOT's interpreter in the same process.
void BindAddresses(nanobind::module_& module,
                   nanobind::class_<Calculator>& calculator);

/// Reading tables from files, and checking them.
void BindTables(nanobind::module_& module);
/// Reading positions and writing ROOT files, as the command does.
void BindFiles(nanobind::module_& module);

}  // namespace ZARN::Python
