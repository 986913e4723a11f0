#pragma once

#include <limits>

namespace ZARN::DU {

/// Estimate of the t at which a function has a value, from the function and
/// three derivatives at another t (Householder's method of order 3, whose error
/// falls with the fourth power). Rays are searched with it: the order of
/// operations decides their last bits.
///
/// @param miss  by how much the function exceeds the value at @p t
/// @return NaN if the derivatives give no estimate
inline double NextByHouseholder(double t, double miss, double slope,
                                double curve, double third) {
  const double squared = slope * slope;
  const double divisor =
      6 * slope * (squared - miss * curve) + miss * miss * third;
  if (divisor == 0) return std::numeric_limits<double>::quiet_NaN();
  return t - 3 * miss * (2 * squared - miss * curve) / divisor;
}

}  // namespace ZARN::DU
