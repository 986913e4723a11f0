#include "lightpath/OpticalMedium.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "db/DBErrors.hpp"
#include "db/ReadField.hpp"

namespace ZARN::DU {
namespace {

constexpr const char* kTable = "OPTICS";
constexpr const char* kIndexField = "refractive_index";
constexpr const char* kWavelengthField = "wavelength";

/// The derivative at entry @p at of a table, from it and its neighbours.
double DerivativeAt(const std::vector<double>& x, const std::vector<double>& y,
                    std::size_t at) {
  const auto chord = [&](std::size_t i) {
    return (y[i + 1] - y[i]) / (x[i + 1] - x[i]);
  };
  const std::size_t last = x.size() - 1;
  if (last == 0) return 0.0;
  if (last == 1) return chord(0);
  // The derivative of the parabola through three points is linear, and equals
  // the slope of a chord at its middle.
  const std::size_t middle = std::clamp<std::size_t>(at, 1, last - 1);
  const double before = chord(middle - 1);
  const double after = chord(middle);
  const double bend =
      (after - before) / (0.5 * (x[middle + 1] - x[middle - 1]));
  return before + bend * (x[at] - 0.5 * (x[middle - 1] + x[middle]));
}

void CheckRefractiveIndices(const std::string& index,
                            const std::vector<double>& values) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (values[i] >= 1.0 && std::isfinite(values[i])) continue;
    const std::string place =
        values.size() > 1 ? " at position " + std::to_string(i + 1) : "";
    throw DBValueError(kTable, index, kIndexField,
                       "is not a finite number >= 1" + place);
  }
}

void CheckWavelengths(const std::string& index,
                      const std::vector<double>& values) {
  double before = 0.0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!(values[i] > before) || !std::isfinite(values[i])) {
      throw DBValueError(kTable, index, kWavelengthField,
                         "is not positive and increasing at position " +
                             std::to_string(i + 1));
    }
    before = values[i];
  }
}

}  // namespace

OpticalMedium::OpticalMedium(double refractiveIndex)
    : wavelengths_{0.0, std::numeric_limits<double>::infinity()},
      refractiveIndices_(2, refractiveIndex),
      groupIndices_(2, refractiveIndex) {}

OpticalMedium::OpticalMedium(std::vector<double> wavelengths,
                             std::vector<double> refractiveIndices)
    : wavelengths_(std::move(wavelengths)),
      refractiveIndices_(std::move(refractiveIndices)) {
  for (std::size_t i = 0; i < wavelengths_.size(); ++i) {
    groupIndices_.push_back(
        refractiveIndices_[i] -
        wavelengths_[i] * DerivativeAt(wavelengths_, refractiveIndices_, i));
  }
}

OpticalMedium OpticalMedium::Read(const TableSet& tables,
                                  const std::string& index) {
  if (IsNumber(tables, kTable, index, kIndexField)) {
    const double value = ReadNumber(tables, kTable, index, kIndexField);
    CheckRefractiveIndices(index, {value});
    return OpticalMedium(value);
  }
  const auto indices = ReadNumbers(tables, kTable, index, kIndexField);
  const auto wavelengths = ReadNumbers(tables, kTable, index, kWavelengthField);
  if (wavelengths.empty()) {
    throw DBValueError(kTable, index, kWavelengthField, "is empty");
  }
  if (indices.size() != wavelengths.size()) {
    throw DBValueError(kTable, index, kIndexField,
                       "has " + std::to_string(indices.size()) +
                           " values for " + std::to_string(wavelengths.size()) +
                           " wavelengths");
  }
  CheckWavelengths(index, wavelengths);
  CheckRefractiveIndices(index, indices);
  return {wavelengths, indices};
}

double OpticalMedium::RefractiveIndexAt(double wavelength) const {
  return Interpolated(refractiveIndices_, wavelength);
}

double OpticalMedium::GroupIndexAt(double wavelength) const {
  return Interpolated(groupIndices_, wavelength);
}

bool OpticalMedium::Reaches(double wavelength) const {
  return wavelength >= FirstWavelength() && wavelength <= LastWavelength();
}

double OpticalMedium::Interpolated(const std::vector<double>& values,
                                   double wavelength) const {
  const auto next =
      std::upper_bound(wavelengths_.begin(), wavelengths_.end(), wavelength);
  if (next == wavelengths_.begin()) return values.front();
  if (next == wavelengths_.end()) return values.back();
  const auto i = static_cast<std::size_t>(next - wavelengths_.begin());
  const double share = (wavelength - wavelengths_[i - 1]) /
                       (wavelengths_[i] - wavelengths_[i - 1]);
  return values[i - 1] + share * (values[i] - values[i - 1]);
}

}  // namespace ZARN::DU
