#include "db/DB.hpp"
#include "tests/reference/PlainConstants.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

namespace ZARN::Reference {

void PlainShadowingCalculator::LoadNCDAnchorInfo() {
  std::string name =
      DB::Get().GetLink("GEO", "inner_av", -1)->GetS("ncd_anchor_definition");
  NCDAnchorHalfZ = DB::Get().GetLink("SOLID", name, -1)->GetD("half_z");
  name =
      DB::Get().GetLink("GEO", "inner_av", -1)->GetS("ncd_anchor_definition");
  NCDAnchorRadius = DB::Get().GetLink("SOLID", name, -1)->GetD("r_max");
  name = DB::Get().GetLink("GEO", "inner_av", -1)->GetS("ncd_anchor_locations");
  FillXYZPositions(NCDAnchorPositions, "GEO_LOCATIONS", name, "x", "y", "z");
}

bool PlainShadowingCalculator::CheckForNCDAnchorShadowing(
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
  } else if (name == "Water->Reflection->Water") {
    p1 = lightPath.GetAVPoint1();
    p2 = lightPath.GetAVPoint1();
  } else if (name == "Water") {
    return false;
  } else if (name == "Light Path Uninitialised") {
    // The text names the support rope test.
    warn_ << "ShadowingCalculator::CheckForSupportRopeShadowing: LightPath is "
             "uninitialised, call CalcByPosition first before checking for "
             "shadowing!\n";
    return false;
  }

  const double reach = NCDAnchorHalfZ + NCDAnchorTolerance;
  for (float k = 0; k < Count(NCDAnchorPositions.size()); k += 1.0F) {
    const double d = (p1 - NCDAnchorPositions[Index(k)]).Mag();
    if (reach > d) {
      return true;
    }
  }
  if (name == "Scint/InnerAV->AV->Water") {
    return false;
  } else if (name == "AV->Scint/InnerAV->AV->Water") {
    return false;
  } else if (name == "AV->Water") {
    return false;
  } else if (name == "Water->AV->Scint/InnerAV->AV->Water") {
  } else if (name == "Water->AV->Water") {
  } else if (name == "Water->Reflection->Water") {
  } else {
    return false;
  }
  for (float k = 0; k < Count(NCDAnchorPositions.size()); k += 1.0F) {
    const double d = (p2 - NCDAnchorPositions[Index(k)]).Mag();
    if (reach > d) {
      return true;
    }
  }
  return false;
}

}  // namespace ZARN::Reference
