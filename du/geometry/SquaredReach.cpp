#include "du/geometry/SquaredReach.hpp"

#include <cmath>
#include <limits>

namespace ZARN::DU {

double SquaredReach(double reach) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  if (!(reach > 0.0)) return 0.0;
  // The limit is a few last bits away from the square, which may have
  // underflowed to 0 or overflowed to infinity.
  double limit = reach * reach;
  while (limit > 0.0 && std::sqrt(limit) >= reach) {
    limit = std::nextafter(limit, 0.0);
  }
  while (std::sqrt(limit) < reach) limit = std::nextafter(limit, kInfinity);
  return limit;
}

}  // namespace ZARN::DU
