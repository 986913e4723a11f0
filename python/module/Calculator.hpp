#pragma once

#include <memory>

#include "db/TableSet.hpp"
#include "du/ShadowingCalculator.hpp"
#include "lightpath/LightPathCalculator.hpp"

namespace ZARN::Python {

/// A detector at one run and tolerance: what zarn.Calculator works with. Never
/// changes, so any number of threads can use it.
class Calculator {
 public:
  /// Read the geometry for @p run.
  ///
  /// @param tolerance  mm
  /// @throws ZARN::DBNotFoundError, ZARN::DBValueError
  Calculator(const TableSet& tables, int run, double tolerance);

  /// The same detector at another tolerance; models and tables are copied or
  /// shared, not read again.
  Calculator WithTolerance(double tolerance) const;

  const DU::ShadowingCalculator& Shadowing() const { return shadowing_; }
  const TableSet& Tables() const { return *tables_; }

  /// Computes light paths of this detector.
  ///
  /// @param wavelength  nm
  /// @throws ZARN::DBNotFoundError, ZARN::DBValueError if the tables do not
  ///         describe the media; std::invalid_argument for the wavelength
  DU::LightPathCalculator LightPaths(double wavelength) const;

 private:
  std::shared_ptr<const TableSet> tables_;
  DU::ShadowingCalculator shadowing_;
};

}  // namespace ZARN::Python
