#include "du/fast/NeckBossCap.hpp"

#include <cmath>

#include "TVector3.h"

namespace ZARN::DU {

eAnswer NeckBossCap::Judge(const Ball& ball, const Items& /*items*/,
                           Items& /*open*/) const {
  // For two arc tangents, with an error of 1e-15, and an arc sine whose
  // argument is rounded, which near 1 changes it by up to 3e-9; rad.
  constexpr double kRounding = 1e-8;
  const TVector3 centre = AsTVector3(ball.centre);
  const double distance = centre.Mag();
  if (distance > ball.radius) {
    const double theta = centre.Theta();
    const double spread = std::asin(ball.radius / distance) + kRounding;
    if (theta + spread < model_.NeckBossAngle) return eAnswer::kBlocks;
    // A boss whose angle is NaN blocks nothing.
    if (!(theta - spread < model_.NeckBossAngle)) return eAnswer::kClear;
  }
  return eAnswer::kUnsure;
}

}  // namespace ZARN::DU
