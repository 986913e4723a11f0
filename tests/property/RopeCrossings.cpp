#include "tests/property/Paths.hpp"

#include <cmath>

#include "tests/reference/PlainConstants.hpp"

namespace ZARN::Testing {

using Reference::Divide;
using Reference::kPi;

/// Rotate a point and give it a direction so that it crosses the cylinder
/// behind a rope at exactly a right angle between crossing and direction: then
/// no height is added, while one bit away the crossing is beyond all ropes.
/// Only a direction that is not a unit vector as seen from above can do that.
bool PathMaker::TurnToSquareCrossing(TVector3& point, TVector3& direction,
                                     const Ropes& ropes) {
  const double ratio = Divide(ropes.cylinder, point.Perp());
  const double flat =
      ratio > 1.0 ? random_.Uniform(0.05, 0.49) : random_.Uniform(0.55, 0.97);
  // This follows from the far crossing, whose product with the direction is 0.
  const double share = 1.0 / flat - 1.0;
  const double cosine2 = Divide(1.0 - ratio * ratio, 1.0 - share * share);
  if (!(cosine2 <= 1.0)) return false;
  const double sign = random_.Chance(0.5) ? 1.0 : -1.0;
  const double turned = sign * std::acos(-std::sqrt(cosine2));
  const double height = (random_.Chance(0.5) ? 1.0 : -1.0) *
                        std::sqrt(1.0 - flat * flat) *
                        (random_.Chance(0.5) ? 1.0 : random_.Uniform(0.7, 1.3));
  const auto setDirection = [&](double phi) {
    direction.SetXYZ(flat * std::cos(phi), flat * std::sin(phi), height);
  };
  setDirection(point.Phi() + turned);
  const TVector3 crossing = CrossingOf(point, direction, ropes.cylinder).flat;
  point.RotateZ(random_.Pick(ropes.directions).Phi() - crossing.Phi() +
                random_.Uniform(-0.9, 0.9) * ropes.tolerance);
  constexpr double kRightAngle = 1.5707963267948966;
  constexpr int kAttempts = 60;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    const double aside =
        closeness_ > kAtLimit ? Aside() : random_.Uniform(-4e-15, 4e-15);
    setDirection(point.Phi() + turned + aside);
    if (closeness_ > kAtLimit) break;
    const TVector3 edge = CrossingOf(point, direction, ropes.cylinder).flat;
    if (edge.Unit().Angle(direction) == kRightAngle) return true;
  }
  return true;
}

/// Where a line meets a cylinder by the formulas: a direction that is shorter
/// in the plane does not reach the cylinder.
PathMaker::Crossing PathMaker::CrossingOf(const TVector3& point,
                                          const TVector3& direction,
                                          double radius) {
  const TVector3 p(point.X(), point.Y(), 0.0);
  const TVector3 u(direction.X(), direction.Y(), 0.0);
  const double b = 2.0 * p.Mag() * std::cos(p.Angle(u));
  const double c = p.Mag2() - radius * radius;
  const double discriminant = b * b - 4.0 * c;
  TVector3 flat = p;
  if (discriminant >= 0.0) {
    const double root = std::sqrt(discriminant);
    flat += (root > b ? 0.5 * (root - b) : 0.5 * (-b - root)) * u;
  }
  return {flat, (flat - p).Mag() * std::tan(flat.Unit().Angle(direction))};
}

/// The angle by which a crossing must be rotated about the z axis to be at the
/// edge of a rope; NaN if there is none.
double PathMaker::TurnToEdge(const TVector3& crossing, const Ropes& ropes,
                             double tolerance) {
  const TVector3& rope = random_.Pick(ropes.directions);
  const double cosine =
      Divide(std::cos(tolerance) * crossing.Mag() * rope.Mag() -
                 crossing.Z() * rope.Z(),
             crossing.Perp() * rope.Perp());
  const double sign = random_.Chance(0.5) ? 1.0 : -1.0;
  return rope.Phi() + sign * std::acos(cosine) - crossing.Phi() + Aside();
}

/// A direction as long as the given one and with the same sign of z that
/// crosses the cylinder at @p height; if there is none, the steepest one that
/// was tried.
TVector3 PathMaker::SlopedForHeight(const TVector3& point, TVector3 direction,
                                    double radius, double height) {
  const double length = direction.Mag();
  const double phi = direction.Phi();
  const double sign = direction.Z() < 0.0 ? -1.0 : 1.0;
  double low = 0.0;
  double high = kPi / 2.0;
  for (int step = 0; step < 54; ++step) {
    const double slope = 0.5 * (low + high);
    const double flat = length * std::cos(slope);
    direction.SetXYZ(flat * std::cos(phi), flat * std::sin(phi),
                     sign * length * std::sin(slope));
    const double reached = CrossingOf(point, direction, radius).height;
    (std::abs(reached) < height ? low : high) = slope;
  }
  return direction;
}

}  // namespace ZARN::Testing
