#pragma once

#include "du/geometry/SquareRoot.hpp"

namespace ZARN::DU {

/// How far the algebra below trusts its numbers, by their precision.
///
/// The formulas of VectorToCylinderEdge, through cosine, arc cosine and
/// tangent, and the algebra here are the same in exact arithmetic; both round.
/// With u the rounding of one operation (2^-53 or 2^-24) and s^2 the sum of the
/// squared radius and the squared distance of the start from the axis:
///
/// - what stands under the square root is right to 15 u s^2, so the root, as
///   kDiscriminant keeps it from 0, and with it the way to the crossing to
///   7.5 u / sqrt(kDiscriminant) s: 1e-12 s or 1.4e-5 s;
/// - kFar is 8 times that or more; nearer than it to the cylinder the near and
///   the far crossing may be taken for each other;
/// - kEdge2 makes the crossing's azimuth, and the cosine between it and the
///   direction, right to that over sqrt(kEdge2), times the direction's length,
///   which is below sqrt(2): 1.5e-10 or 1.6e-4;
/// - the height's two sides are right to twice that; kHeight covers it at least
///   6 times;
/// - kSquare keeps from directions square to the crossing, where the formula
///   has a jump: exactly there the height is kept, one bit beside it is huge.
///   It also limits the tangent by which an error of the way becomes one of the
///   height, to 1000.
template <class Real>
struct CrossingBands;

template <>
struct CrossingBands<double> {
  static constexpr double kDiscriminant = 1e-6;
  static constexpr double kFar = 1e-11;
  static constexpr double kFlat2 = 1e-6;  // least sin^2 of the polar angle
  static constexpr double kEdge2 = 1e-4;  // least distance^2 from the axis
  static constexpr double kHeight = 1e-8;
  static constexpr double kSquare = 1e-6;  // least cos^2 to the crossing
};

template <>
struct CrossingBands<float> {
  static constexpr float kDiscriminant = 1e-3F;
  static constexpr float kFar = 1.2e-4F;
  static constexpr float kFlat2 = 1e-3F;
  static constexpr float kEdge2 = 1.7e-2F;
  static constexpr float kHeight = 2e-3F;
  static constexpr float kSquare = 1e-6F;
};

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
  const bool isFlat = flat2 > Bands::kFlat2;
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
      isFlat & (sizeOfDiscriminant > Bands::kDiscriminant * largest2 * flat2) &
      (isMissed | (farT * farT > Bands::kFar * Bands::kFar * largest2)) &
      (edge2 > Bands::kEdge2 * largest2) & (along2 > Bands::kSquare * scale);
  return {isSure,  x,     y,     way2 * (edge2 * vz * vz + turn * turn),
          along2,  along, scale, way2,
          largest2};
}

/// By how much the two sides of the height's comparison may be wrong.
template <class Real>
[[gnu::always_inline]] inline Real HeightBand(
    const CylinderCrossing<Real>& crossing, Real limit2) {
  using Bands = CrossingBands<Real>;
  return (Bands::kHeight * (crossing.way2 + limit2) +
          Bands::kFar * crossing.largest2) *
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
