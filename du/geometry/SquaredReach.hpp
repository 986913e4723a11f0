#pragma once

namespace ZARN::DU {

/// The limit for squared distances that is equivalent to the limit @p reach for
/// distances:
///
///     a < SquaredReach(reach)  exactly where  std::sqrt(a) < reach
///
/// for every double a >= 0, with the square root rounded to nearest. No guard
/// band is needed: the square root of IEEE 754 is monotonic, so the comparison
/// changes at exactly one number.
///
/// @param reach  any value; if it is NaN or not above 0, no distance is below
///               it
double SquaredReach(double reach);

}  // namespace ZARN::DU
