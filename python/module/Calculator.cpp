#include "python/module/Calculator.hpp"

#include <utility>

namespace ZARN::Python {

Calculator::Calculator(const TableSet& tables, int run, double tolerance) {
  auto ofRun = std::make_shared<TableSet>(tables);
  ofRun->SetRun(run);
  shadowing_.BeginOfRun(*ofRun);
  shadowing_.SetAllGeometryTolerances(tolerance);
  tables_ = std::move(ofRun);
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
