#pragma once

namespace ZARN::DU {

/// The number by which a squared distance tells what the distance itself would:
///
///     a < SquaredReach(reach)  exactly where  std::sqrt(a) < reach
///
/// for every a >= 0, as a double and with the square root rounded to nearest.
/// No guard band is needed: the square root of IEEE 754 grows with its
/// argument, so there is one number at which the comparison turns.
///
/// @param reach  any; nothing is below one that is not above 0, or NaN
double SquaredReach(double reach);

}  // namespace ZARN::DU
