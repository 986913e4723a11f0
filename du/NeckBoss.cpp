#include "du/NeckBoss.hpp"

#include <cmath>

#include "db/ReadField.hpp"
#include "du/geometry/Primitives.hpp"

namespace ZARN::DU {

void LoadNeckBossInfo(NeckBossModel& model, double innerAVRadius) {
  const double neckBossZ = ReadNumber("GEO", "av", "neck_boss_z");
  const double halfHeight1 = ReadNumber("SOLID", "neck_boss", "half_height1");
  const double halfHeight2 = ReadNumber("SOLID", "neck_boss", "half_height2");
  const double s = halfHeight1 + halfHeight2;
  const TVector3 base(0, 0, neckBossZ - (s + s) * 0.5);
  const TVector3 edge =
      VectorToSphereEdge(base, TVector3(1.0, 0, 0), innerAVRadius, false);
  model.NeckBossAngle = edge.Theta();
}

bool CheckForNeckBossShadowing(const NeckBossModel& model,
                               const WaterSegments& path) {
  if (path.kind == ePathKind::kWater ||
      path.kind == ePathKind::kUninitialised) {
    return false;
  }
  if (IsUnderNeckBoss(model, path.first.point)) return true;
  return path.kind == ePathKind::kTwoCrossings &&
         IsUnderNeckBoss(model, path.second.point);
}

eAnswer NeckBossCap::Judge(const Ball& ball, const Items& items,
                           Items& open) const {
  constexpr double kRounding = 1e-9;  // rad
  const TVector3 centre = AsTVector3(ball.centre);
  const double distance = centre.Mag();
  if (distance > ball.radius) {
    const double theta = centre.Theta();
    const double spread = std::asin(ball.radius / distance) + kRounding;
    if (theta + spread < model_.NeckBossAngle) return eAnswer::kBlocks;
    // A boss whose angle is NaN blocks nothing.
    if (!(theta - spread < model_.NeckBossAngle)) return eAnswer::kClear;
  }
  open = items;
  return eAnswer::kUnsure;
}

}  // namespace ZARN::DU
