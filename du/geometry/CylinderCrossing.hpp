#pragma once

#include "du/geometry/SquareRoot.hpp"

namespace ZARN::DU {

/// How right a crossing is, and the bands outside which it is that right.
///
/// VectorToCylinderEdge, through cosine, arc cosine and tangent, and the
/// algebra below are the same in exact arithmetic. Both round; the errors are
/// those of both together. u is the algebra's rounding, 2^-53 or 2^-24; the
/// formula's is always 2^-53, and single precision rounds the path first. s^2
/// is the squared radius and the squared distance of the start from the axis
/// together. A radius is 1 mm or more, so what underflows does not matter
/// beside it.
///
/// 1. Under the square root stands D = radius^2 - aside^2, which is up to s^2.
///    The formula's cosine is right to 11 u (scalar product 2, lengths and
///    quotient 5, arc cosine and cosine 4), and D to 25 u s^2. The algebra's D
///    is right to 5 u s^2, of a rounded path to 9 u s^2. Together this is 30 u
///    s^2 in double and 9 u s^2 in single precision.
/// 2. The root is right to half of that over sqrt(kLeastD) s: 1.7e-12 s and
///    8.5e-6 s. With up to 20 further roundings the way is right to kWayError
///    s.
/// 3. The place is right to that times the length of the direction, which is
///    below sqrt(2). It is sqrt(kLeastEdge2) s or more from the axis, so its
///    azimuth is right to kAzimuthError.
/// 4. The near crossing may be taken for the far one where that is nearer than
///    kWayError s to the start: kWayBand keeps away from there.
/// 5. Whether way * tangent is above a limit is asked as
///    way^2 sin^2 > limit^2 cos^2. The cosine is right to kAzimuthError, and
///    its square to twice that. The square of the way is right to 2 way times
///    its error, below sqrt(2) kWayError (way^2 + s^2). HeightBand is at least
///    3 times the sum.
/// 6. Seen from the centre the crossing's direction also depends on its height.
///    The way's error is multiplied by the tangent, and so is that of the
///    angle; both together turn the direction by up to 1.21 kAzimuthError times
///    the tangent. kLeastCosine2InSpace limits the tangent to 1,000, in single
///    precision to 100. A small angle of the formula comes from an arc cosine
///    and is right to 5e-8 only, which a way of up to kLongestWay distances
///    from the axis makes 2.5e-7. All of this is below kSpaceError.
///
/// kLeastCosine2 keeps from the formula's jump: exactly square to the crossing
/// the height is kept, one bit beside it is huge. kLeastFlat2 keeps from a
/// division by zero.
///
/// Measured by CylinderCrossingTest, on lines at every limit:
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
  static constexpr double kWayError = 2e-12;      // of s
  static constexpr double kAzimuthError = 3e-10;  // rad
  static constexpr double kSpaceError = 4e-7;     // rad

  static constexpr double kLeastD = 1e-6;        // of s^2
  static constexpr double kLeastEdge2 = 1e-4;    // distance^2 from the axis
  static constexpr double kLeastFlat2 = 1e-6;    // sin^2 of the polar angle
  static constexpr double kLeastCosine2 = 1e-6;  // to the crossing
  static constexpr double kLeastCosine2InSpace = kLeastCosine2;
  static constexpr double kLongestWay = 5.0;  // in space, of the distance
  static constexpr double kWayBand = 1e-11;   // of s
  static constexpr double kHeightBand = 1e-8;
};

template <>
struct CrossingBands<float> {
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

/// Whether steps 3 to 5 hold.
template <class Real>
constexpr bool AreBandsWideEnough() {
  using Bands = CrossingBands<Real>;
  return Bands::kAzimuthError * Bands::kAzimuthError * Bands::kLeastEdge2 >
             2 * Bands::kWayError * Bands::kWayError &&
         Bands::kWayBand > 3 * Real(1.42) * Bands::kWayError &&
         Bands::kHeightBand >
             3 * (2 * Bands::kAzimuthError + Real(1.42) * Bands::kWayError);
}
static_assert(AreBandsWideEnough<double>() && AreBandsWideEnough<float>());

/// Where a line leaves a cylinder around the z axis, as VectorToCylinderEdge
/// has it without a shift, or an unsure answer.
template <class Real>
struct CylinderCrossing {
  bool isSure;
  Real x;         ///< mm
  Real y;         ///< mm
  Real across2;   ///< squared distance from the start, in the plane, times the
                  ///< squared sine between the crossing and the direction
  Real along2;    ///< the squared cosine between them, in the same unit
  Real along;     ///< in the sign of the cosine
  Real scale;     ///< the unit: squared lengths of the crossing and direction
  Real way2;      ///< squared distance from the start, in the plane
  Real largest2;  ///< s^2 of CrossingBands

  /// Above the horizon, mm; where the crossing is sure.
  [[gnu::always_inline]] Real Height() const {
    return SquareRoot(across2 / (isSure ? along2 : Real(1))) *
           (along < 0 ? Real(-1) : Real(1));
  }
};

/// Straight-line code without branches: called for one path in double precision
/// and, in loops that the compiler turns into vector operations, for many in
/// single precision.
///
/// @param px,py     start, mm
/// @param vx,vy,vz  direction; unsure unless its squared length is from 0.5 to
/// 2
/// @param radius2   the squared radius, mm^2, 1 to 1e10
template <class Real>
[[gnu::always_inline]] inline CylinderCrossing<Real> CrossCylinder(
    Real px, Real py, Real vx, Real vy, Real vz, Real radius2) {
  using Bands = CrossingBands<Real>;
  const Real flat2 = vx * vx + vy * vy;
  const Real length2 = flat2 + vz * vz;
  const Real start2 = px * px + py * py;
  const Real toward = px * vx + py * vy;
  const Real aside = px * vy - py * vx;
  const Real largest2 = radius2 + start2;
  // All of this times the length of the flattened direction, which divides
  // once, below.
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
  // Where there is no way there is no height, whatever the direction.
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

/// By how much the two sides of the height's comparison may be wrong.
template <class Real>
[[gnu::always_inline]] inline Real HeightBand(
    const CylinderCrossing<Real>& crossing, Real limit2) {
  using Bands = CrossingBands<Real>;
  return (Bands::kHeightBand * (crossing.way2 + limit2) +
          Bands::kWayBand * crossing.largest2) *
         crossing.scale;
}

/// Whether the crossing's height, up or down, surely is above a limit: no rope
/// reaches there.
///
/// @param limit2  the squared limit, mm^2
template <class Real>
[[gnu::always_inline]] inline bool IsAboveHeight(
    const CylinderCrossing<Real>& crossing, Real limit2) {
  return crossing.isSure & (crossing.across2 - limit2 * crossing.along2 >
                            HeightBand(crossing, limit2));
}
/// Whether it surely is not above: a rope may be there.
template <class Real>
[[gnu::always_inline]] inline bool IsWithinHeight(
    const CylinderCrossing<Real>& crossing, Real limit2) {
  return crossing.isSure & (crossing.across2 - limit2 * crossing.along2 <
                            -HeightBand(crossing, limit2));
}

}  // namespace ZARN::DU
