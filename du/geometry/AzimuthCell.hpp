#pragma once

namespace ZARN::DU {

/// How far outside its cell an azimuth can lie when AzimuthCell is evaluated in
/// single precision, rad. The ascent below has an error of 2 roundings.
/// Converting it to a position around the circle (below 4) and then to cells
/// adds up to 8 more. One unit of it is up to 2 rad.
inline constexpr double kAzimuthCellError = 20 * 0x1p-24;

/// The cell that contains an azimuth, among @p n cells around the z axis.
///
/// The cells are equal steps of y / (|x| + |y|), which is monotonic in the
/// angle over each half turn and needs no arc tangent.
///
/// @param x,y      not both zero
/// @param perUnit  n / 4
///
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
