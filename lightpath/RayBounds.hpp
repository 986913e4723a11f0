#pragma once

#include "lightpath/SweptAngle.hpp"

namespace ZARN::DU {

/// The bounds of a value.
struct Range {
  double Low;
  double High;
  bool IsSigned() const { return Low >= 0 || High <= 0; }
};

/// Bounds of the slope between two rays of a family, ordered by t.
inline Range SlopesBetween(const SweptAngle::Ray& first,
                           const SweptAngle::Ray& last) {
  return {last.Growing - first.Shrinking, first.Growing - last.Shrinking};
}

/// Bounds of d(Slope)/d(cos t), which has the opposite sign of the second
/// derivative by t.
inline Range CurvesBetween(const SweptAngle::Ray& first,
                           const SweptAngle::Ray& last) {
  return {first.GrowingCurve - last.ShrinkingCurve,
          last.GrowingCurve - first.ShrinkingCurve};
}

}  // namespace ZARN::DU
