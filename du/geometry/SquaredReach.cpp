#include "du/geometry/SquaredReach.hpp"

#include <cmath>
#include <limits>

namespace ZARN::DU {

double SquaredReach(double reach) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  if (!(reach > 0.0)) return 0.0;
  // The turn is a few last bits from the square, which may have become 0 or
  // infinite.
  double turn = reach * reach;
  while (turn > 0.0 && std::sqrt(turn) >= reach) {
    turn = std::nextafter(turn, 0.0);
  }
  while (std::sqrt(turn) < reach) turn = std::nextafter(turn, kInfinity);
  return turn;
}

}  // namespace ZARN::DU
