#include "display/Mollweide.hpp"

#include <algorithm>
#include <cmath>

#include "du/geometry/Constants.hpp"

namespace ZARN::Display {

using DU::kPi;

namespace {

// Solve psi - sin(psi) = k for psi from 0 to pi. The difference vanishes like
// psi^3 / 6 at a pole, where it is computed from its series.
double SolveParallel(double k) {
  // From above: the function is convex, so that Newton's steps go down to the
  // root and never beyond it.
  double psi = std::min(kPi, 1.25 * std::cbrt(6.0 * k));
  constexpr int kMaxSteps = 60;
  for (int step = 0; step < kMaxSteps && psi > 0.0; ++step) {
    const double square = psi * psi;
    const double value =
        psi < 0.1
            ? psi * square / 6.0 * (1.0 - square / 20.0 * (1.0 - square / 42.0))
            : psi - std::sin(psi);
    const double half = std::sin(0.5 * psi);
    const double next = psi - (value - k) / (2.0 * half * half);
    if (!(next < psi)) break;
    psi = next;
  }
  return psi;
}

}  // namespace

bool HasDirection(const TVector3& direction) {
  const double length = std::hypot(direction.X(), direction.Y(), direction.Z());
  return std::isfinite(length) && length > 0.0;
}

MapPoint ProjectDirection(const TVector3& direction) {
  const double length = std::hypot(direction.X(), direction.Y(), direction.Z());
  const double up = std::abs(direction.Z()) / length;
  const double across = std::hypot(direction.X(), direction.Y()) / length;
  // 1 - up, without its cancellation near a pole.
  const double fromPole = across * across / (1.0 + up);
  const double psi = SolveParallel(kPi * fromPole);  // pi - 2 theta
  const double azimuth = std::atan2(direction.Y(), direction.X());
  return {-2.0 / kPi * azimuth * std::sin(0.5 * psi),
          std::copysign(std::cos(0.5 * psi), direction.Z())};
}

std::optional<TVector3> FindDirection(const MapPoint& point) {
  const double halfWidth = std::sqrt(std::max(0.0, 1.0 - point.y * point.y));
  if (!(std::abs(point.y) <= 1.0 && std::abs(point.x) <= 2.0 * halfWidth)) {
    return std::nullopt;
  }
  const double theta = std::asin(point.y);
  const double up = (2.0 * theta + std::sin(2.0 * theta)) / kPi;
  const double across = std::sqrt(std::max(0.0, (1.0 - up) * (1.0 + up)));
  const double azimuth =
      halfWidth > 0.0 ? -0.5 * kPi * point.x / halfWidth : 0.0;
  return TVector3(across * std::cos(azimuth), across * std::sin(azimuth), up);
}

std::optional<TVector3> MapGrid::FindDirection(std::size_t column,
                                               std::size_t row) const {
  const double x =
      (static_cast<double>(column) + 0.5) / static_cast<double>(columns);
  const double y = (static_cast<double>(row) + 0.5) / static_cast<double>(rows);
  return Display::FindDirection({4.0 * x - 2.0, 1.0 - 2.0 * y});
}

}  // namespace ZARN::Display
