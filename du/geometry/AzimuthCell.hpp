#pragma once

namespace ZARN::DU {

/// How far beside a cell an azimuth may lie that AzimuthCell finds in it, in
/// single precision, rad: the ascent below is right to 2 roundings, its place
/// around the circle, below 4, and that in cells to 8 more, and one unit of it
/// is up to 2 rad.
inline constexpr double kAzimuthCellError = 20 * 0x1p-24;

/// The cell of an azimuth among @p n around the z axis, n / 4 = @p perUnit.
///
/// In place of the angle itself, which costs an arc tangent, the cells divide
/// y / (|x| + |y|), which grows with it through each half turn.
///
/// @param x,y  not both zero
template <class Real>
[[gnu::always_inline]] inline int AzimuthCell(Real x, Real y, Real perUnit,
                                              int n) {
  const Real ax = x < 0 ? -x : x;
  const Real ay = y < 0 ? -y : y;
  const Real ascent = y / (ax + ay);
  const Real around = x < 0 ? Real(3) - ascent : ascent + Real(1);
  const int cell = static_cast<int>(around * perUnit);
  return cell < n ? cell : n - 1;
}

}  // namespace ZARN::DU
