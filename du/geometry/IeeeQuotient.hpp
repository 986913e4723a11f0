#pragma once

namespace ZARN::DU {

/// numerator / denominator as IEEE 754 defines it: a zero denominator gives an
/// infinity or NaN.
///
/// Tables may contain zero radii. The formulas then intentionally continue with
/// an infinite angle, so this one function is exempt from the sanitizer's
/// check.
#if defined(__clang__) || defined(__GNUC__)
__attribute__((no_sanitize("float-divide-by-zero")))
#endif
inline double
IeeeQuotient(double numerator, double denominator) {
  return numerator / denominator;
}

}  // namespace ZARN::DU
