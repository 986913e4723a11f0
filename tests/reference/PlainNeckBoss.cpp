#include "db/DB.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

namespace ZARN::Reference {

void PlainShadowingCalculator::LoadNeckBossInfo() {
  const double neckBossZ =
      DB::Get().GetLink("GEO", "av", -1)->GetD("neck_boss_z");
  const double halfHeight1 =
      DB::Get().GetLink("SOLID", "neck_boss", -1)->GetD("half_height1");
  const double halfHeight2 =
      DB::Get().GetLink("SOLID", "neck_boss", -1)->GetD("half_height2");
  const double s = halfHeight1 + halfHeight2;
  const double baseZ = neckBossZ - (s + s) * 0.5;
  const TVector3 base(0, 0, baseZ);
  const TVector3 direction(1.0, 0, 0);
  const TVector3 edge =
      VectorToSphereEdge(base, direction, InnerAVRadius, false);
  NeckBossAngle = edge.Theta();
}

bool PlainShadowingCalculator::CheckForNeckBossShadowing(
    DU::LightPathCalculator& lightPath) {
  TVector3 p1(0, 0, 0);
  TVector3 p2(0, 0, 0);
  const std::string name =
      lightPath.LightPathTypeNames()[lightPath.GetLightPathType()];
  if (name == "Scint/InnerAV->AV->Water") {
    p1 = lightPath.GetAVPoint2();
  } else if (name == "AV->Scint/InnerAV->AV->Water") {
    p1 = lightPath.GetAVPoint3();
  } else if (name == "AV->Water") {
    p1 = lightPath.GetAVPoint1();
  } else if (name == "Water->AV->Scint/InnerAV->AV->Water") {
    p1 = lightPath.GetAVPoint1();
    p2 = lightPath.GetAVPoint4();
  } else if (name == "Water->AV->Water") {
    p1 = lightPath.GetAVPoint1();
    p2 = lightPath.GetAVPoint2();
  } else if (name == "Water") {
    return false;
  } else if (name == "Water->Reflection->Water") {
    p1 = lightPath.GetAVPoint1();
    p2 = lightPath.GetAVPoint1();
  } else if (name == "Light Path Uninitialised") {
    // The text names another test, as in all but two tests.
    warn_ << "ShadowingCalculator::CheckForAVHDRopeShadowing: LightPath is "
             "uninitialised, call CalcByPosition first before checking for "
             "shadowing!\n";
    return false;
  }

  if (NeckBossAngle > p1.Theta()) {
    return true;
  }
  if (name == "Scint/InnerAV->AV->Water") {
    return false;
  } else if (name == "AV->Scint/InnerAV->AV->Water") {
    return false;
  } else if (name == "AV->Water") {
    return false;
  } else if (name == "Water") {
    return false;
  } else if (name == "Water->AV->Scint/InnerAV->AV->Water") {
    return NeckBossAngle > p2.Theta();
  } else if (name == "Water->AV->Water") {
    return NeckBossAngle > p2.Theta();
  } else if (name == "Water->Reflection->Water") {
    return NeckBossAngle > p2.Theta();
  }
  return false;
}

}  // namespace ZARN::Reference
