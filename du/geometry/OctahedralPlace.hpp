#pragma once

namespace ZARN::DU {

/// Directions from the origin, divided into n x n cells: the sphere is drawn
/// onto an octahedron and that unfolded into a square, whose middle is +z and
/// whose four corners are -z.
///
/// Source: E. Praun, H. Hoppe, Spherical parametrization and remeshing (2003).
///
/// The lines at which the square is folded, and the axes, are edges or
/// diagonals of cells where n is even. So a cell is one or two triangles of
/// great circles, and its corners are the points farthest from its middle.
template <class Real>
struct OctahedralPlace {
  Real u;  ///< from -1 to 1
  Real v;  ///< from -1 to 1
};

/// By how much u and v may be off in single precision, with what CellAlong adds
/// to them. In units of 2^-24, of numbers up to 1: each coordinate is rounded
/// by 1, and so is their sum, which two additions round by 2 more; with the
/// division by it and the product that is 1 + 3 + 1 + 1 = 6. The fold adds 1,
/// the sum with 1 in CellAlong another, and the product with half the number of
/// cells, of a number up to 2, another 2.
inline constexpr double kPlaceError = 10 * 0x1p-24;

/// The place of a direction of any length above 0, also in single precision.
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

/// The row or column of a place among @p n, where @p half is n / 2. Rounding
/// may carry a place of 1 onto the border.
template <class Real>
[[gnu::always_inline]] inline int CellAlong(Real place, Real half, int n) {
  const int cell = static_cast<int>((place + Real(1)) * half);
  return cell < n ? cell : n - 1;
}

}  // namespace ZARN::DU
