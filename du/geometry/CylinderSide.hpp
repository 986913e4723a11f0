#pragma once

#include "du/geometry/SquareRoot.hpp"

namespace ZARN::DU {

/// How far the questions below trust their numbers. Squares are right to 4
/// roundings; kSide keeps them that much apart, and also the root in
/// IsPassing, which is right to 4 roundings / (2 sqrt(kSide)).
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

/// Whether a path between two points outside a cylinder can meet it, seen from
/// above: whether the angle between them is smaller than the one under which
/// the first sees the cylinder's half. Compared by their cosines.
///
/// @param start2,end2  squared distances of the points from the axis
/// @param product      of the points in the plane
/// @return above 1: surely; below -1: surely not; in between, or NaN: unsure
template <class Real>
[[gnu::always_inline]] inline Real Passing(Real start2, Real end2, Real product,
                                           Real radius2) {
  const Real over = product - SquareRoot(end2 * (start2 - radius2));
  const Real band = SideBands<Real>::kPassing * SquareRoot(start2 * end2);
  return over / (band > 0 ? band : Real(1));
}

}  // namespace ZARN::DU
