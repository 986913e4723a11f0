#include "du/geometry/QuarteredBox.hpp"

#include <cmath>

namespace ZARN::DU {
namespace {

/// A step of h along both u and v is one of at most sqrt(6) h on the octahedron
/// (of sqrt(6) h or sqrt(2) h along the diagonals of a square).
constexpr double kDiagonal = 2.449489742783178;  // sqrt(6)

/// From the middle m of a square to another place m + d in it the direction
/// F = (m + d) / |m + d| turns away from m by s = |d| / (|m| - |d|) at most,
/// because |F'| is 1 / |p| at a place p. With a larger s nothing is known.
constexpr double kMostTurn = 1.0;

/// On one face of the octahedron the directions differ from the plane that
/// touches the sphere at the middle by at most kCurvature s^2. By Taylor's
/// formula it is half of the largest |F''(d, d)|. At a place p, for a part r of
/// d along p and a part t across, in units of |p|, F''(d, d) has the length
/// t sqrt(t^2 + 4 r^2), which is at most 2 / sqrt(3) (r^2 + t^2).
constexpr double kCurvature = 0.5774;  // 1 / sqrt(3), rounded up

/// A place of the octahedron, and the steps from it along u and v.
struct FacePlace {
  Point at;
  Point alongU;
  Point alongV;
};

FacePlace FacePlaceOf(double u, double v) {
  const double signU = u < 0 ? -1.0 : 1.0;
  const double signV = v < 0 ? -1.0 : 1.0;
  const double z = 1.0 - std::abs(u) - std::abs(v);
  if (z >= 0) return {{u, v, z}, {1.0, 0.0, -signU}, {0.0, 1.0, -signV}};
  // Folded outwards over the diagonal.
  return {{signU * (1.0 - std::abs(v)), signV * (1.0 - std::abs(u)), z},
          {0.0, -signU * signV, -signU},
          {-signU * signV, 0.0, -signV}};
}

/// The part of a step that is square to a direction.
Point Across(const Point& step, const Point& direction) {
  return step - Scaled(direction, Dot(step, direction));
}

}  // namespace

QuarteredBox BoxAround(const OctahedralSquare& square, const Shell& shell) {
  const double r = shell.radius;
  const double outside = shell.height + shell.aside;
  const FacePlace place = FacePlaceOf(square.u, square.v);
  const double perLength = 1.0 / std::sqrt(Squared(place.at));
  const double share = kDiagonal * square.half * perLength;  // |d| / |m|
  if (!(share < kMostTurn / (1.0 + kMostTurn))) {
    return {{}, {}, r + outside, r + outside};  // a ball around the sphere
  }
  const Point up = Scaled(place.at, perLength);
  const double turn = share / (1.0 - share);
  if (std::abs(place.at.z) < square.half) {
    // A fold line is a diagonal: a ball around the square, which is on two
    // faces. The line from its middle to any place is on one of them.
    const double radius = turn * r + outside;
    return {Scaled(up, r), {}, radius, radius};
  }
  const double step = square.half * perLength * r;
  const Point a = Scaled(Across(place.alongU, up), step);
  const Point b = Scaled(Across(place.alongV, up), step);
  // What is above the sphere is there along its own direction.
  const double margin =
      kCurvature * turn * turn * r + turn * shell.height + shell.aside;
  const double diagonal2 = Squared(a) + Squared(b) + 2.0 * std::abs(Dot(a, b));
  return {Scaled(up, r),
          {a, b, Scaled(up, shell.height)},
          margin,
          std::sqrt(diagonal2) / 2.0 + shell.height + margin};
}

}  // namespace ZARN::DU
