#pragma once

#include "db/TableSet.hpp"
#include "du/hardware/ShadowingTest.hpp"
#include "du/hardware/WaterSegments.hpp"

namespace ZARN::DU {

/// The fitting where the neck joins the top of the vessel: a cap around +z.
struct NeckBossModel {
  double NeckBossAngle = 0.0;  ///< polar angle of the cap's edge, rad
};

/// Compute the angle from GEO/av neck_boss_z and SOLID/neck_boss half_height1
/// and half_height2 (mm): where a horizontal ray from the base of the boss
/// meets the inner vessel sphere.
///
/// @param innerAVRadius  radius of the inner vessel sphere, mm
/// @throws ZARN::DBNotFoundError for a missing field; the model is unchanged
void LoadNeckBossInfo(const TableSet& tables, NeckBossModel& model,
                      double innerAVRadius);

/// Tell whether a path crosses the vessel under the neck boss: strictly inside
/// the cap, at either of its crossings. Paths wholly in water never do. A path
/// of unknown type is judged at the origin, whose polar angle is 0, and so is
/// shadowed by any boss.
bool CheckForNeckBossShadowing(const NeckBossModel& model,
                               const WaterSegments& path);

/// Visit every test of CheckForNeckBossShadowing.
void VisitNeckBossTests(const NeckBossModel& model, const WaterSegments& path,
                        const ShadowingTestVisitor& visitor);

/// The test of one crossing point.
inline ShadowingTest NeckBossTest(
    const NeckBossModel& model, const TVector3& point,
    eWaterSegment segment = eWaterSegment::kFirst) {
  return {eShadowingRule::kNeckBossCap, segment, point.Theta(),
          model.NeckBossAngle};
}
inline bool IsUnderNeckBoss(const NeckBossModel& model, const TVector3& point) {
  return NeckBossTest(model, point).IsBlocking();
}

}  // namespace ZARN::DU
