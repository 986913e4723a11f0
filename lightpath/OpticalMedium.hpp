#pragma once

#include <string>
#include <vector>

#include "db/TableSet.hpp"

namespace ZARN::DU {

/// The refractive index of a medium as a function of the wavelength.
///
/// Between the wavelengths of its table, values are interpolated linearly;
/// outside, the value at the nearer end is used.
class OpticalMedium {
 public:
  /// The same index at every wavelength.
  explicit OpticalMedium(double refractiveIndex = 1.0);

  /// @param wavelengths        nm, > 0 and increasing, at least one
  /// @param refractiveIndices  one for each, >= 1
  OpticalMedium(std::vector<double> wavelengths,
                std::vector<double> refractiveIndices);

  /// Read a medium from an entry of table OPTICS with one number in the field
  /// refractive_index, or with arrays in the fields wavelength (nm) and
  /// refractive_index.
  ///
  /// @throws ZARN::DBNotFoundError  if it is missing
  /// @throws ZARN::DBValueError     for an index below 1, wavelengths that do
  ///         not increase, or lengths that differ
  static OpticalMedium Read(const TableSet& tables, const std::string& index);

  double RefractiveIndexAt(double wavelength) const;

  /// The index that gives the speed of a pulse: n - wavelength dn/dwavelength.
  ///
  /// The derivative at a wavelength of the table is that of the parabola
  /// through it and its neighbours, so that the group index is continuous.
  double GroupIndexAt(double wavelength) const;

  /// Whether the table covers the wavelength.
  bool Reaches(double wavelength) const;

  double FirstWavelength() const { return wavelengths_.front(); }
  double LastWavelength() const { return wavelengths_.back(); }

 private:
  double Interpolated(const std::vector<double>& values,
                      double wavelength) const;

  std::vector<double> wavelengths_;
  std::vector<double> refractiveIndices_;
  std::vector<double> groupIndices_;
};

}  // namespace ZARN::DU
