#include <nanobind/nanobind.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include <exception>
#include <string>
#include <vector>

#include "TSystem.h"

#include "db/DBErrors.hpp"
#include "db/Fingerprint.hpp"
#include "du/Verdict.hpp"
#include "io/Errors.hpp"
#include "io/LightPathColumns.hpp"
#include "lightpath/LightPathType.hpp"
#include "python/module/Bindings.hpp"
#include "python/module/Messages.hpp"
#include "python/module/Text.hpp"
#include "python/module/Unlocked.hpp"

namespace ZARN::Python {
namespace {

namespace nb = nanobind;
using DU::eShadowingComponent;

std::vector<std::string> VerdictNames() {
  std::vector<std::string> names;
  for (int code = 0; code <= static_cast<int>(DU::eVerdict::kNoReflectedPath);
       ++code) {
    names.emplace_back(DU::NameOf(static_cast<DU::eVerdict>(code)));
  }
  return names;
}

std::string WhyOff(const DU::ShadowingCalculator& shadowing,
                   eShadowingComponent component) {
  if (!shadowing.IsInfoLoaded(component)) {
    return shadowing.GetLoadError(component);
  }
  const bool hasTests = shadowing.IsReady(component) &&
                        !shadowing.GetHardware().HasNothingToTest(component);
  return hasTests ? "" : "nothing to test";
}

void BindCalculator(nb::module_& module) {
  nb::class_<Calculator> calculator(module, "Calculator",
                                    "A detector at one run and tolerance.");
  calculator
      .def(
          "__init__",
          [](Calculator* self, const TableSet& tables, int run,
             double tolerance) {
            const Unlocked unlocked;
            new (self) Calculator(tables, run, tolerance);
          },
          nb::arg("tables"), nb::arg("run"), nb::arg("tolerance"))
      .def("with_tolerance", &Calculator::WithTolerance, nb::arg("tolerance"),
           nb::call_guard<Unlocked>())
      .def_prop_ro(
          "fingerprint",
          [](const Calculator& self) { return Fingerprint(self.Tables()); })
      .def_prop_ro(
          "tables",
          [](const Calculator& self) { return CanonicalText(self.Tables()); })
      .def(
          "why_off",
          [](const Calculator& self, int component) {
            return WhyOff(self.Shadowing(),
                          static_cast<eShadowingComponent>(component));
          },
          nb::arg("component"),
          "Why a component, 1 to 6, blocks no path; empty if it can.");
  BindPaths(calculator);
  BindLightPaths(calculator);
  BindScan(calculator);
  BindModels(module, calculator);
  BindAddresses(module, calculator);
}

nb::object AddExceptionType(nb::module_& module, const char* name,
                            nb::handle base) {
  const std::string fullName =
      nb::cast<std::string>(module.attr("__name__")) + '.' + name;
  nb::object type =
      nb::steal(PyErr_NewException(fullName.c_str(), base.ptr(), nullptr));
  module.attr(name) = type;
  return type;
}

/// Makes C++ errors of a class Python exceptions of a new one.
template <class Error>
nb::object AddError(nb::module_& module, const char* name, nb::handle base) {
  nb::object type = AddExceptionType(module, name, base);
  nb::register_exception_translator(
      [](const std::exception_ptr& error, void* asType) {
        try {
          std::rethrow_exception(error);
        } catch (const Error& found) {
          PyErr_SetObject(static_cast<PyObject*>(asType),
                          TextOf(found.what()).ptr());
        }
      },
      type.ptr());
  return type;
}

void BindErrors(nb::module_& module) {
  const nb::object error =
      AddError<std::runtime_error>(module, "Error", PyExc_RuntimeError);
  AddError<DBNotFoundError>(module, "DBNotFoundError", error);
  AddError<DBValueError>(module, "DBValueError", error);
  AddError<TableFileError>(module, "TableFileError", error);
  // Raised by the module _sql, without which it can be caught, too.
  AddExceptionType(module, "StoreError", error);
  nb::register_exception_translator(
      [](const std::exception_ptr& failure, void*) {
        try {
          std::rethrow_exception(failure);
        } catch (const IO::OutputFailure& found) {
          PyErr_SetObject(PyExc_OSError, TextOf(found.what()).ptr());
        }
      });
}

void BindNames(nb::module_& module) {
  module.def("verdict_names", &VerdictNames);
  module.def("path_columns", &IO::LightPathColumns);
  module.def("path_types", [] {
    return std::vector<std::string>(DU::kLightPathTypeNames.begin(),
                                    DU::kLightPathTypeNames.end());
  });
}

/// Give the process's signals back to whoever had them: ROOT takes them when
/// its library is loaded. Once ROOT's Python module is imported, they are its.
void KeepSignals() {
  const nb::dict modules = nb::module_::import_("sys").attr("modules");
  if (modules.contains("ROOT") || modules.contains("cppyy")) return;
  gSystem->ResetSignals();
}

void BindMessages(nb::module_& module) {
  module.def("deliver_messages", &DeliverMessages);
  QueueMessages();
  nb::module_::import_("atexit").attr("register")(
      nb::cpp_function(&StopQueueingMessages));
}

}  // namespace
}  // namespace ZARN::Python

NB_MODULE(_core, module) {
  module.doc() = "The compiled part of zarn; use zarn.Calculator.";
  ZARN::Python::BindErrors(module);
  ZARN::Python::BindTables(module);
  ZARN::Python::BindCalculator(module);
  ZARN::Python::BindNames(module);
  ZARN::Python::BindFiles(module);
  ZARN::Python::BindMessages(module);
  ZARN::Python::KeepSignals();
}
