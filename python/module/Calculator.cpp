#include "python/module/Calculator.hpp"

#include "db/JsonTables.hpp"

namespace ZARN::Python {

Calculator::Calculator(const std::string& source, int run, double tolerance) {
  auto tables = std::make_shared<TableSet>();
  LoadJsonTables(*tables, source);
  tables->SetRun(run);
  shadowing_.BeginOfRun(*tables);
  shadowing_.SetAllGeometryTolerances(tolerance);
  tables_ = std::move(tables);
}

Calculator Calculator::WithTolerance(double tolerance) const {
  Calculator copy = *this;
  copy.shadowing_.SetAllGeometryTolerances(tolerance);
  return copy;
}

DU::LightPathCalculator Calculator::LightPaths(double wavelength) const {
  DU::LightPathCalculator lightPath;
  lightPath.SetWavelength(wavelength);
  lightPath.BeginOfRun(*tables_);
  return lightPath;
}

}  // namespace ZARN::Python
