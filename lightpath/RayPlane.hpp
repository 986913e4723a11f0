#pragma once

#include "lightpath/RayKernel.hpp"

namespace ZARN::DU {

// Parts of RayKernel.cpp. It is compiled for several processors, so every
// function here is always inlined.

/// Where event, PMT and centre are nearer to one line, the sine of the angle
/// between both is not known well enough.
inline constexpr double kLeastSine = 1e-4;

/// The angle, at most pi / 2, with this sine and cosine.
[[gnu::always_inline]] inline double AngleOf(double sine, double cosine) {
  const double half = sine / (1.0 + cosine);  // the tangent of half of it
  const double quarter = half / (1.0 + __builtin_sqrt(1.0 + half * half));
  const double eighth =
      quarter / (1.0 + __builtin_sqrt(1.0 + quarter * quarter));
  // The series of the arc tangent; eighth^2 is below 0.04.
  const double x = -eighth * eighth;
  double sum = 1.0 / 23.0;
  sum = 1.0 / 21.0 + x * sum;
  sum = 1.0 / 19.0 + x * sum;
  sum = 1.0 / 17.0 + x * sum;
  sum = 1.0 / 15.0 + x * sum;
  sum = 1.0 / 13.0 + x * sum;
  sum = 1.0 / 11.0 + x * sum;
  sum = 1.0 / 9.0 + x * sum;
  sum = 1.0 / 7.0 + x * sum;
  sum = 1.0 / 5.0 + x * sum;
  sum = 1.0 / 3.0 + x * sum;
  return 8.0 * eighth * (1.0 + x * sum);
}

/// The plane of an event and a PMT.
struct Plane {
  double sine;  ///< of the angle between both
  double inverseSine;
  double acrossX, acrossY, acrossZ;  ///< perpendicular to the event's direction
};

/// The same sums as for a single path (PathBetween.cpp). If event, PMT and
/// centre are almost on one line, rounding turns the plane, but then it turns
/// both in the same way.
[[gnu::always_inline]] inline Plane PlaneOf(const RayOrigin& e, double x,
                                            double y, double z) {
  const double normalX = e.y * z - y * e.z;
  const double normalY = e.z * x - z * e.x;
  const double normalZ = e.x * y - x * e.y;
  const double sine =
      __builtin_sqrt(normalX * normalX + normalY * normalY + normalZ * normalZ);
  const double inverse = 1.0 / (sine > kLeastSine ? sine : kLeastSine);
  return {sine, inverse, inverse * (normalY * e.z - e.y * normalZ),
          inverse * (normalZ * e.x - e.z * normalX),
          inverse * (normalX * e.y - e.x * normalY)};
}

}  // namespace ZARN::DU
