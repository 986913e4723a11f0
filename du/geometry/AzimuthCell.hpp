#pragma once

namespace ZARN::DU {

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
