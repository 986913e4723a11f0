#pragma once

#include <cstddef>

#include "TVector3.h"

namespace ZARN::Reference {

inline constexpr double kPi = 3.141592653589793;
inline constexpr double kTwoPi = 6.283185307179586;
inline constexpr double kHalfPi = 1.5707963267948966;
inline constexpr double kDegreesPerRadian = 57.29577951308232;
inline constexpr double kTwoThirds = 0.6666666666666666;
inline constexpr double kRopeSphere = 8500.0;  // mm

/// Division by a number that may be a zero radius from the tables: the
/// resulting infinity or NaN is intentional, so the sanitizer must not stop it.
#if defined(__clang__) || defined(__GNUC__)
__attribute__((no_sanitize("float-divide-by-zero")))
#endif
inline double
Divide(double numerator, double denominator) {
  return numerator / denominator;
}

/// The list index for a floating-point loop counter.
inline std::size_t Index(float counter) {
  return static_cast<std::size_t>(counter);
}

/// The upper bound of a floating-point loop counter.
inline float Count(std::size_t size) { return static_cast<float>(size); }

}  // namespace ZARN::Reference
