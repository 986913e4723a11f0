#pragma once

#include "du/geometry/SquareRoot.hpp"

namespace ZARN::DU {

/// Error bounds of a crossing, and the bands outside which they hold.
///
/// VectorToCylinderEdge, which uses cosine, arc cosine and tangent, and the
/// algebra below give the same result in exact arithmetic. Both round; the
/// bounds cover the errors of both together. u is the rounding error of the
/// algebra, 2^-53 or 2^-24; that of the formula is always 2^-53. In single
/// precision the path is rounded first. s^2 is the sum of the squared radius
/// and the squared distance of the start from the axis. The radius is at least
/// 1 mm, so underflow is negligible.
///
/// 1. The square root is taken of D = radius^2 - aside^2, which is at most s^2.
///    The error of the formula's cosine is at most 11 u (scalar product 2,
///    lengths and quotient 5, arc cosine and cosine 4), and so that of its D at
///    most 25 u s^2. The error of the algebra's D is at most 5 u s^2, of a
///    rounded path 9 u s^2, and kPathError adds 4.1 u s^2. Together this is
///    30 u s^2 in double and 13.1 u s^2 in single precision.
/// 2. The error of the root is at most half of that over sqrt(kLeastD) s:
///    1.7e-12 s and 1.24e-5 s. With up to 20 further roundings and 4 kPathError
///    the error of the way, which is the distance from the start to the
///    crossing, is at most kWayError s.
/// 3. The error of the crossing's position is at most that times the length of
///    the direction, which is below sqrt(2). The crossing is at least
///    sqrt(kLeastEdge2) s away from the axis, so the error of its azimuth is at
///    most kAzimuthError.
/// 4. The near crossing can be taken for the far one if the far one is less
///    than kWayError s away from the start. kWayBand excludes these cases.
/// 5. Whether way * tangent exceeds a limit is tested as way^2 sin^2 > limit^2
///    cos^2. The error of the cosine is at most kAzimuthError, and that of its
///    square twice that. The error of the squared way is at most 2 way times
///    the error of the way, which is below sqrt(2) kWayError (way^2 + s^2).
///    HeightBand is at least 3 times the sum.
/// 6. Seen from the centre, the direction of the crossing also depends on its
///    height. The error of the way is multiplied by the tangent, and so is that
///    of the angle; both together rotate the direction by up to 1.21
///    kAzimuthError times the tangent. kLeastCosine2InSpace limits the tangent
///    to 1,000, in single precision to 100. If the formula's angle is small, it
///    comes from an arc cosine with an error of up to 5e-8; over a way of up to
///    kLongestWay times the distance from the axis this becomes 2.5e-7. The
///    sum is below kSpaceError.
///
/// kLeastCosine2 excludes the discontinuity of the formula: a direction exactly
/// perpendicular to the crossing adds no height, and one bit away from that the
/// height is huge. kLeastFlat2 excludes a division by zero.
///
/// Measured by CylinderCrossingTest, with lines at each of these limits:
///
/// |               | double  | single  |
/// |---------------|---------|---------|
/// | kWayError     | 2.3e-13 | 1.9e-6  |
/// | kAzimuthError | 5.8e-12 | 3.0e-6  |
/// | kSpaceError   | 5.0e-8  | 2.3e-5  |
template <class Real>
struct CrossingBands;

template <>
struct CrossingBands<double> {
  static constexpr double kWayError = 2e-12;      // times s
  static constexpr double kAzimuthError = 3e-10;  // rad
  static constexpr double kSpaceError = 7e-7;     // rad

  static constexpr double kLeastD = 1e-6;        // times s^2
  static constexpr double kLeastEdge2 = 1e-4;    // times s^2, of the crossing
  static constexpr double kLeastFlat2 = 1e-6;    // sin^2 of the polar angle
  static constexpr double kLeastCosine2 = 1e-6;  // direction to crossing
  static constexpr double kLeastCosine2InSpace = kLeastCosine2;
  static constexpr double kLongestWay = 5.0;  // in space, times distance
  static constexpr double kWayBand = 1e-11;   // times s
  static constexpr double kHeightBand = 1e-8;
};

template <>
struct CrossingBands<float> {
  /// A path may also be wrong by this, relative to s, and its flattened
  /// direction by as many rad. The distance aside then changes by at most
  /// (s + q) kPathError, q the distance of the start from the axis. Where the
  /// line meets the cylinder, it is itself at most min(q, radius), so aside^2
  /// changes by at most 2.42 kPathError s^2: 4.1 u s^2 in step 1.
  static constexpr double kPathError = 1e-7;

  static constexpr float kWayError = 1.4e-5F;
  static constexpr float kAzimuthError = 1.6e-4F;
  static constexpr float kSpaceError = 2e-2F;

  static constexpr float kLeastD = 1e-3F;
  static constexpr float kLeastEdge2 = 1.7e-2F;
  static constexpr float kLeastFlat2 = 1e-3F;
  static constexpr float kLeastCosine2 = 1e-6F;
  static constexpr float kLeastCosine2InSpace = 1e-4F;
  static constexpr float kWayBand = 1.2e-4F;
  static constexpr float kHeightBand = 2e-3F;
};

/// The bands in double precision for a path that is only known within a bound.
struct BoundedBands {
  /// Bound on the error of the start, relative to s, and on that of the
  /// flattened direction, rad: so of the direction, times the sine of its polar
  /// angle.
  static constexpr double kPathError = 5e-12;

  // The error of the start and the turn of the direction change the distance
  // aside by at most 2 kPathError s, and D by twice that times s. With the
  // roundings that is 2.1e-11 s^2; the error of its root is half of that over
  // sqrt(kLeastD) s, 1.1e-8 s.
  static constexpr double kWayError = 1.3e-8;
  static constexpr double kAzimuthError = 2e-6;

  static constexpr double kLeastD = 1e-6;
  static constexpr double kLeastEdge2 = 1e-4;
  static constexpr double kLeastFlat2 = 1e-6;
  static constexpr double kLeastCosine2 = 1e-6;
  static constexpr double kWayBand = 6e-8;
  static constexpr double kHeightBand = 1.3e-5;
};

/// Whether the bands satisfy steps 3 to 5.
template <class Real, class Bands>
constexpr bool AreFlatBandsWideEnough() {
  return Bands::kAzimuthError * Bands::kAzimuthError * Bands::kLeastEdge2 >
             2 * Bands::kWayError * Bands::kWayError &&
         Bands::kWayBand > 3 * Real(1.42) * Bands::kWayError &&
         Bands::kHeightBand >
             3 * (2 * Bands::kAzimuthError + Real(1.42) * Bands::kWayError);
}
static_assert(AreFlatBandsWideEnough<double, BoundedBands>());

/// Whether they satisfy steps 3 to 6.
template <class Real>
constexpr bool AreBandsWideEnough() {
  using Bands = CrossingBands<Real>;
  return AreFlatBandsWideEnough<Real, Bands>() &&
         (Bands::kSpaceError - Real(2.5e-7)) *
                 (Bands::kSpaceError - Real(2.5e-7)) *
                 Bands::kLeastCosine2InSpace >
             Real(1.21) * Real(1.21) * Bands::kAzimuthError *
                 Bands::kAzimuthError;
}
static_assert(AreBandsWideEnough<double>() && AreBandsWideEnough<float>());

/// Where a line leaves a cylinder around the z axis: the result of
/// VectorToCylinderEdge without a shift, or an unsure answer.
template <class Real, class Bands = CrossingBands<Real>>
struct CylinderCrossing {
  bool isSure;
  Real x;         ///< mm
  Real y;         ///< mm
  Real across2;   ///< squared distance from the start, in the plane, times the
                  ///< squared sine of the angle between crossing and direction
  Real along2;    ///< squared cosine of that angle, in the same unit
  Real along;     ///< has the sign of the cosine
  Real scale;     ///< the unit: squared lengths of the crossing and direction
  Real way2;      ///< squared distance from the start, in the plane
  Real largest2;  ///< s^2 of CrossingBands

  /// Height above z = 0, mm; valid if isSure.
  [[gnu::always_inline]] Real Height() const {
    return SquareRoot(across2 / (isSure ? along2 : Real(1))) *
           (along < 0 ? Real(-1) : Real(1));
  }
};

/// Find the crossing with these bands. Code without branches: called in double
/// precision for one path, and in single precision for many, in loops that the
/// compiler vectorises.
///
/// @param px,py     start, mm
/// @param vx,vy,vz  direction; unsure unless its squared length is 0.5 to 2
/// @param radius2   squared radius, mm^2, 1 to 1e10
template <class Bands, class Real>
[[gnu::always_inline]] inline CylinderCrossing<Real, Bands> CrossCylinderWithin(
    Real px, Real py, Real vx, Real vy, Real vz, Real radius2) {
  const Real flat2 = vx * vx + vy * vy;
  const Real length2 = flat2 + vz * vz;
  const Real start2 = px * px + py * py;
  const Real toward = px * vx + py * vy;
  const Real aside = px * vy - py * vx;
  const Real largest2 = radius2 + start2;
  // All of these are multiplied by the length of the flattened direction; the
  // one division by it follows below.
  const Real discriminant = radius2 * flat2 - aside * aside;
  const bool isMissed = discriminant < 0;
  const Real root = SquareRoot(isMissed ? Real(0) : discriminant);
  const bool isFlat = flat2 > Bands::kLeastFlat2;
  const Real inverse = Real(1) / SquareRoot(isFlat ? flat2 : Real(1));
  const Real farT = (root - toward) * inverse;
  const Real nearT = (-root - toward) * inverse;
  const Real t = isMissed ? Real(0) : (farT > 0 ? farT : nearT);
  const Real x = px + t * vx;
  const Real y = py + t * vy;

  const Real along = x * vx + y * vy;
  const Real turn = x * vy - y * vx;
  const Real edge2 = x * x + y * y;
  const Real scale = edge2 * length2;
  // A line that misses has no way, and so no height, whatever its direction.
  const Real along2 = isMissed ? scale : along * along;
  const Real way2 = t * t * flat2;
  const Real sizeOfDiscriminant = isMissed ? -discriminant : discriminant;
  const bool isSure =
      (length2 > Real(0.5)) & (length2 < Real(2)) & (start2 < Real(1e10)) &
      isFlat & (sizeOfDiscriminant > Bands::kLeastD * largest2 * flat2) &
      (isMissed |
       (farT * farT > Bands::kWayBand * Bands::kWayBand * largest2)) &
      (edge2 > Bands::kLeastEdge2 * largest2) &
      (along2 > Bands::kLeastCosine2 * scale);
  return {isSure,  x,     y,     way2 * (edge2 * vz * vz + turn * turn),
          along2,  along, scale, way2,
          largest2};
}

template <class Real>
[[gnu::always_inline]] inline CylinderCrossing<Real> CrossCylinder(
    Real px, Real py, Real vx, Real vy, Real vz, Real radius2) {
  return CrossCylinderWithin<CrossingBands<Real>>(px, py, vx, vy, vz, radius2);
}

/// Bound on the error of the two sides of the comparisons below.
template <class Real, class Bands>
[[gnu::always_inline]] inline Real HeightBand(
    const CylinderCrossing<Real, Bands>& crossing, Real limit2) {
  return (Bands::kHeightBand * (crossing.way2 + limit2) +
          Bands::kWayBand * crossing.largest2) *
         crossing.scale;
}

/// Whether the crossing is surely farther from z = 0 than a limit: no rope
/// reaches it.
///
/// @param limit2  the squared limit, mm^2
template <class Real, class Bands>
[[gnu::always_inline]] inline bool IsAboveHeight(
    const CylinderCrossing<Real, Bands>& crossing, Real limit2) {
  return crossing.isSure & (crossing.across2 - limit2 * crossing.along2 >
                            HeightBand(crossing, limit2));
}
/// Whether it is surely not farther, so that a rope may be there.
template <class Real, class Bands>
[[gnu::always_inline]] inline bool IsWithinHeight(
    const CylinderCrossing<Real, Bands>& crossing, Real limit2) {
  return crossing.isSure & (crossing.across2 - limit2 * crossing.along2 <
                            -HeightBand(crossing, limit2));
}

}  // namespace ZARN::DU
