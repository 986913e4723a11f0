#pragma once

namespace ZARN::DU {

/// A direction from the origin as a place in a square of n x n cells: the
/// sphere is projected onto an octahedron, which is unfolded into the square.
/// The middle of the square is +z and its four corners are -z.
///
/// Source: E. Praun, H. Hoppe, Spherical parametrization and remeshing (2003).
///
/// For even n the fold lines of the square, and the axes, are edges or
/// diagonals of cells. So a cell consists of one or two spherical triangles,
/// and its corners are the points farthest from its middle.
template <class Real>
struct OctahedralPlace {
  Real u;  ///< from -1 to 1
  Real v;  ///< from -1 to 1
};

/// Bound on the error of u and v in single precision, including the error that
/// CellAlong adds. In units of 2^-24, for numbers up to 1: each coordinate is
/// rounded by 1, and so is their sum, to which its two additions add 2. With
/// the division by the sum and the product that is 1 + 3 + 1 + 1 = 6. The fold
/// adds 1, the addition of 1 in CellAlong another, and its product with half
/// the number of cells, of a number up to 2, another 2.
inline constexpr double kPlaceError = 10 * 0x1p-24;

/// The place of a direction of any length above 0.
template <class Real>
[[gnu::always_inline]] inline OctahedralPlace<Real> PlaceOf(Real x, Real y,
                                                            Real z) {
  const Real ax = x < 0 ? -x : x;
  const Real ay = y < 0 ? -y : y;
  const Real az = z < 0 ? -z : z;
  const Real scale = Real(1) / (ax + ay + az);
  const Real u = ax * scale;
  const Real v = ay * scale;
  // Below the equator the triangle is folded outwards over its diagonal.
  const Real a = z < 0 ? Real(1) - v : u;
  const Real b = z < 0 ? Real(1) - u : v;
  return {x < 0 ? -a : a, y < 0 ? -b : b};
}

/// The row or column, among @p n, of a coordinate of a place; @p half is n / 2.
/// Rounding can move a coordinate to 1, which belongs to the last cell.
template <class Real>
[[gnu::always_inline]] inline int CellAlong(Real place, Real half, int n) {
  const int cell = static_cast<int>((place + Real(1)) * half);
  return cell < n ? cell : n - 1;
}

}  // namespace ZARN::DU
