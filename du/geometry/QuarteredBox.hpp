#pragma once

#include <array>
#include <cstddef>

#include "du/geometry/Point.hpp"

namespace ZARN::DU {

/// All points within a distance of a centre, mm.
struct Ball {
  Point centre;
  double radius;
};

/// All points within a margin of a skew box, mm:
///
///     middle + p edges[0] + q edges[1] + r edges[2]
///
/// with p, q and r from -1 to 1. Its quarters, the points within the margin of
/// one quarter of the box, are numbered row by row: p > 0 in quarters 1 and 3,
/// q > 0 in quarters 2 and 3.
struct QuarteredBox {
  static constexpr std::size_t kQuarters = 4;

  Point middle;
  std::array<Point, 3> edges;  ///< half of each
  double margin;
  double quarterRadius;  ///< of a ball around a quarter and its margin

  Ball BallAround(std::size_t quarter) const {
    const double a = quarter % 2 == 0 ? -0.5 : 0.5;
    const double b = quarter / 2 == 0 ? -0.5 : 0.5;
    return {middle + Scaled(edges[0], a) + Scaled(edges[1], b), quarterRadius};
  }
};

/// A part of the octahedral square (OctahedralPlace). No axis and no fold line
/// passes through it except along a diagonal, unless it is as wide as a third
/// of the octahedral square.
struct OctahedralSquare {
  double u;  ///< of the middle
  double v;
  double half;  ///< half the length of a side
};

/// How far from its square on a sphere a point can be that is assigned to it.
struct Shell {
  double radius;  ///< of the sphere, mm
  double height;  ///< above or below the sphere, mm
  double aside;   ///< along the sphere, mm
};

/// A box around all points of a shell that are assigned to a square; the
/// quarters of the box hold those assigned to the quarters of the square. It is
/// so for exact numbers: rounding adds less than 1e-14 of the radius, which a
/// BoxTest covers.
QuarteredBox BoxAround(const OctahedralSquare& square, const Shell& shell);

}  // namespace ZARN::DU
