#pragma once

#include <cmath>

#include "TVector3.h"

namespace ZARN::Testing {

inline bool AreSame(bool a, bool b) { return a == b; }

/// Whether two numbers are the same to the last bit. A NaN equals a NaN; -0 is
/// not 0.
inline bool AreSame(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return a == b && std::signbit(a) == std::signbit(b);
}

inline bool AreSame(const TVector3& a, const TVector3& b) {
  return AreSame(a.X(), b.X()) && AreSame(a.Y(), b.Y()) &&
         AreSame(a.Z(), b.Z());
}

}  // namespace ZARN::Testing
