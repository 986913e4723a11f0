#pragma once

#include "du/geometry/SquareRoot.hpp"

namespace ZARN::DU {

/// Bands around the limits below, outside which an answer is sure. Formula and
/// algebra both round; u is the algebra's rounding, 2^-53 or 2^-24, and single
/// precision rounds the path first.
///
/// 1. A comparison of squares here, and one of lengths in the formula, are
/// right
///    to 13 u of the radius^2, in single precision to 8 u: kSide is wide for
///    what follows.
/// 2. The root in PassageOf, of end^2 (start^2 - radius^2), is right to 3 u
/// start
///    end / sqrt(kSide) where the start is outside, and the formula's cosine of
///    the angle under which the cylinder's half is seen to 5 * 2^-53 /
///    sqrt(kSide).
///    Their sum, and some 30 roundings of the products and the angle between
///    the points, are 2.9e-11 start end, in single precision 8e-6: kPassing is
///    at least 12 times that.
template <class Real>
struct SideBands;
template <>
struct SideBands<double> {
  static constexpr double kSide = 1e-9;
  static constexpr double kPassing = 1e-9;
};
template <>
struct SideBands<float> {
  static constexpr float kSide = 1e-3F;
  static constexpr float kPassing = 1e-4F;
};

/// Whether a point surely lies inside a cylinder around the z axis.
///
/// @param distance2  of the point from the axis, squared
/// @param radius2    of the cylinder, squared
template <class Real>
[[gnu::always_inline]] inline bool IsInside(Real distance2, Real radius2) {
  return distance2 < radius2 * (Real(1) - SideBands<Real>::kSide);
}
/// Whether it surely lies outside.
template <class Real>
[[gnu::always_inline]] inline bool IsOutside(Real distance2, Real radius2) {
  return distance2 > radius2 * (Real(1) + SideBands<Real>::kSide);
}

/// A path between two points outside a cylinder, seen from above. It can meet
/// the cylinder where the angle between the points is smaller than the one
/// under which the first sees the cylinder's half.
template <class Real>
struct Passage {
  /// By how much the cosine of the first angle is larger than that of the
  /// second; times the distances of both points from the axis, as the band is.
  Real excess;
  Real band;
};

/// @param start2,end2  squared distances of the points from the axis
/// @param product      of the points in the plane
template <class Real>
[[gnu::always_inline]] inline Passage<Real> PassageOf(Real start2, Real end2,
                                                      Real product,
                                                      Real radius2) {
  return {product - SquareRoot(end2 * (start2 - radius2)),
          SideBands<Real>::kPassing * SquareRoot(start2 * end2)};
}

/// Whether a path surely can meet the cylinder.
template <class Real>
[[gnu::always_inline]] inline bool IsMeeting(const Passage<Real>& passage) {
  return passage.excess > passage.band;
}
/// Whether it surely passes beside it.
template <class Real>
[[gnu::always_inline]] inline bool IsPassingBeside(
    const Passage<Real>& passage) {
  return passage.excess < -passage.band;
}

}  // namespace ZARN::DU
