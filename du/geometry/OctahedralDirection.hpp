#pragma once

#include <cmath>

#include "du/geometry/OctahedralPlace.hpp"
#include "du/geometry/Point.hpp"

namespace ZARN::DU {

/// The unit vector of a place of the square.
inline Point DirectionAt(double u, double v) {
  const double z = 1.0 - std::abs(u) - std::abs(v);
  const double x = z < 0 ? (u < 0 ? -1.0 : 1.0) * (1.0 - std::abs(v)) : u;
  const double y = z < 0 ? (v < 0 ? -1.0 : 1.0) * (1.0 - std::abs(u)) : v;
  return Unit({x, y, z});
}

}  // namespace ZARN::DU
