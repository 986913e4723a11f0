#pragma once

#include "TVector3.h"

namespace ZARN::DU {

/// Whether a vector has a length, mm, for which the angle of ROOT's vectors
/// neither overflows nor underflows; the angle to a shorter vector is 0.
inline bool HasOrdinaryLength(const TVector3& v) {
  constexpr double kShortest = 1e-3;
  constexpr double kLongest = 1e6;
  const double length = v.Mag();
  return length > kShortest && length < kLongest;
}

}  // namespace ZARN::DU
