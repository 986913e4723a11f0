#pragma once

#include "du/geometry/SquareRoot.hpp"

namespace ZARN::DU {

/// Bands around the limits below, outside which an answer is sure. Formula and
/// algebra both round; u is the rounding error of the algebra, 2^-53 or 2^-24.
/// In single precision the path is rounded first.
///
/// 1. The comparison of squares here and that of lengths in the formula have an
///    error of at most 13 u radius^2, in single precision 8 u radius^2. kSide
///    is much wider, because it also limits the errors in step 2.
/// 2. The root in PassageOf is that of end^2 (start^2 - radius^2). If the start
///    is outside, its error is at most 3 u start end / sqrt(kSide), and that of
///    the formula's cosine, of the angle under which half of the cylinder is
///    seen, at most 5 * 2^-53 / sqrt(kSide). Their sum, with about 30 roundings
///    of the products and of the angle between the points, is 2.9e-11 start
///    end, in single precision 8e-6 start end. kPassing is at least 12 times
///    that.
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
/// @param distance2  squared distance of the point from the axis
/// @param radius2    squared radius of the cylinder
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
/// the cylinder if the angle between the points, seen from the axis, is smaller
/// than the angle under which half of the cylinder is seen from the first
/// point.
template <class Real>
struct Passage {
  /// Cosine of the first angle minus cosine of the second, times the distances
  /// of both points from the axis; band has the same factor.
  Real excess;
  Real band;
};

/// @param start2,end2  squared distances of the points from the axis
/// @param product      scalar product of the points in the plane
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
/// Whether it surely misses the cylinder.
template <class Real>
[[gnu::always_inline]] inline bool IsPassingBeside(
    const Passage<Real>& passage) {
  return passage.excess < -passage.band;
}

}  // namespace ZARN::DU
