#include "du/hardware/NeckBoss.hpp"

#include "db/ReadField.hpp"
#include "du/geometry/Primitives.hpp"

namespace ZARN::DU {
namespace {

template <class Visitor>
bool Walk(const NeckBossModel& model, const WaterSegments& path,
          const Visitor& visit) {
  if (path.kind == ePathKind::kWater ||
      path.kind == ePathKind::kUninitialised) {
    return false;
  }
  return visit(NeckBossTest(model, path.first.point, eWaterSegment::kFirst)) ||
         (path.kind == ePathKind::kTwoCrossings &&
          visit(
              NeckBossTest(model, path.second.point, eWaterSegment::kSecond)));
}

}  // namespace

void LoadNeckBossInfo(const TableSet& tables, NeckBossModel& model,
                      double innerAVRadius) {
  const double neckBossZ = ReadNumber(tables, "GEO", "av", "neck_boss_z");
  const double halfHeight1 =
      ReadNumber(tables, "SOLID", "neck_boss", "half_height1");
  const double halfHeight2 =
      ReadNumber(tables, "SOLID", "neck_boss", "half_height2");
  const double s = halfHeight1 + halfHeight2;
  const TVector3 base(0, 0, neckBossZ - (s + s) * 0.5);
  const TVector3 edge =
      VectorToSphereEdge(base, TVector3(1.0, 0, 0), innerAVRadius, false);
  model.NeckBossAngle = edge.Theta();
}

bool CheckForNeckBossShadowing(const NeckBossModel& model,
                               const WaterSegments& path) {
  return Walk(model, path, StopAtBlocking());
}

void VisitNeckBossTests(const NeckBossModel& model, const WaterSegments& path,
                        const ShadowingTestVisitor& visitor) {
  Walk(model, path, VisitAll{visitor, nullptr});
}

}  // namespace ZARN::DU
