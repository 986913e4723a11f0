#include "du/fast/AVPipeBands.hpp"

#include <cmath>

#include "TVector3.h"
#include "du/geometry/Constants.hpp"

namespace ZARN::DU {
namespace {

/// The half-width of the bands around 90 degrees of azimuth at a polar angle,
/// both in degrees.
double BandHalfWidth(double theta) {
  if (theta < 30.0) return 15.0;
  return theta < 120.0 ? 10.0 : 5.0;
}

}  // namespace

eAnswer AVPipeBands::Judge(const Ball& ball, const Items& /*items*/,
                           Items& /*open*/) const {
  // In mm: for coordinates up to 1e5, with a rounding error of 1e-11, and for
  // the quotients below. In degrees: for two arc tangents and an arc sine, with
  // an error of 1e-13.
  constexpr double kRounding = 1e-6;
  const double radius = ball.radius + kRounding;
  const TVector3 centre = AsTVector3(ball.centre);
  const double distance = centre.Mag();
  const double fromAxis = centre.Perp();
  if (fromAxis > radius) {
    const double theta = kDegreesPerRadian * centre.Theta();
    const double spread =
        kDegreesPerRadian * std::asin(radius / distance) + kRounding;
    const double phiSpread =
        kDegreesPerRadian * std::asin(radius / fromAxis) + kRounding;
    const double fromMiddle = std::abs(
        std::remainder(kDegreesPerRadian * centre.Phi() - 90.0, 360.0));
    // The bands get narrower towards the bottom.
    const double widest = BandHalfWidth(theta - spread);
    const double narrowest = BandHalfWidth(theta + spread);
    if (fromMiddle + phiSpread < narrowest) return eAnswer::kBlocks;
    if (fromMiddle - phiSpread > widest) return eAnswer::kClear;
  }
  return eAnswer::kUnsure;
}

}  // namespace ZARN::DU
