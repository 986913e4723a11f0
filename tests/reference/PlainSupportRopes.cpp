#include <cmath>

#include "db/DB.hpp"
#include "tests/reference/PlainConstants.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

namespace ZARN::Reference {

void PlainShadowingCalculator::LoadSupportRopeInfo() {
  std::string solidName =
      DB::Get().GetLink("GEO", "hold_up_ropes", -1)->GetS("solid_definition");
  SupportRopeRadius = DB::Get().GetLink("SOLID", solidName, -1)->GetD("r_rope");
  solidName =
      DB::Get().GetLink("GEO", "hold_up_ropes", -1)->GetS("solid_definition");
  SupportRopeLength = DB::Get().GetLink("SOLID", solidName, -1)->GetD("z_rope");
  const double plateHalfHeight = DB::Get()
                                     .GetLink("SOLID", "belly_plate_vintar", -1)
                                     ->GetD("octahedron_half_height");
  const std::string locationsName =
      DB::Get().GetLink("GEO", "hold_up_ropes", -1)->GetS("locations");
  std::vector<TVector3> anchors;
  FillXYZPositions(anchors, "GEO_LOCATIONS", locationsName, "x", "y", "z");
  const double spread = Divide(kTwoThirds * plateHalfHeight, OuterAVRadius);
  const TVector3 zHat(0, 0, 1);
  for (float k = 0; Count(anchors.size()) > k; k += 1.0F) {
    const TVector3 a = anchors[Index(k)];
    TVector3 p1 = a;
    p1.SetPhi(a.Phi() + spread);
    TVector3 p2 = a;
    p2.SetPhi(a.Phi() - spread);
    SupportRopePositions.push_back(p1);
    SupportRopePositions.push_back(p2);
    const double step = SupportRopeLength / 100.0;
    for (int i = 1; i < 100; i++) {
      const double d = i * step;
      SupportRopeLinePoints.push_back(p1 + d * zHat);
      SupportRopeLinePoints.push_back(p2 + d * zHat);
    }
  }
}

bool PlainShadowingCalculator::CheckForSupportRopeShadowing(
    DU::LightPathCalculator& lightPath) {
  TVector3 s1(0, 0, 0);
  TVector3 v1(0, 0, 0);
  TVector3 s2(0, 0, 0);
  TVector3 v2(0, 0, 0);
  if (SupportRopePositions.empty()) {
    return false;
  }
  const TVector3 r0 = SupportRopePositions[0];
  const double r = r0.Mag();
  const double angTol = Divide(SupportRopeTolerance + SupportRopeRadius, r);

  const std::string name =
      lightPath.LightPathTypeNames()[lightPath.GetLightPathType()];
  if (name == "Scint/InnerAV->AV->Water") {
    s1 = lightPath.GetAVPoint2();
    v1 = lightPath.GetFinalDirection();
  } else if (name == "AV->Scint/InnerAV->AV->Water") {
    s1 = lightPath.GetAVPoint3();
    v1 = lightPath.GetFinalDirection();
  } else if (name == "AV->Water") {
    s1 = lightPath.GetAVPoint1();
    v1 = lightPath.GetFinalDirection();
  } else if (name == "Water->AV->Scint/InnerAV->AV->Water") {
    s1 = lightPath.GetAVPoint1();
    v1 = -lightPath.GetInitialDirection();
    s2 = lightPath.GetAVPoint4();
    v2 = lightPath.GetFinalDirection();
  } else if (name == "Water->AV->Water") {
    s1 = lightPath.GetAVPoint1();
    v1 = -lightPath.GetInitialDirection();
    s2 = lightPath.GetAVPoint2();
    v2 = lightPath.GetFinalDirection();
  } else if (name == "Water") {
    v1 = lightPath.GetInitialDirection();
    v2 = -lightPath.GetInitialDirection();
  } else if (name == "Water->Reflection->Water") {
    s1 = lightPath.GetAVPoint1();
    v1 = -lightPath.GetInitialDirection();
    s2 = lightPath.GetAVPoint1();
    v2 = lightPath.GetFinalDirection();
  } else if (name == "Light Path Uninitialised") {
    warn_ << "ShadowingCalculator::CheckForSupportRopeShadowing: LightPath is "
             "uninitialised, call CalcByPosition first before checking for "
             "shadowing!\n";
    return false;
  }

  if (name == "Water") {
    return IsSupportRopeWaterHit(lightPath.GetStartPos(), lightPath.GetEndPos(),
                                 v1, v2, angTol);
  }
  if (name == "LightPath Uninitialised") {
    warn_ << "ShadowingCalculator::CheckForSupportRopeShadowing: Error! Cannot "
             "calculate shadowing for this light light path type: "
          << name << "\n";
    return false;
  }
  const TVector3 origin(0, 0, 0);
  if (s1.Z() > r0.Z()) {
    if (IsSupportRopeCrossingHit(VectorToCylinderEdge(s1, v1, origin, r),
                                 angTol)) {
      return true;
    }
  }
  if (name == "Scint/InnerAV->AV->Water" ||
      name == "AV->Scint/InnerAV->AV->Water" || name == "AV->Water") {
    return false;
  }
  if (name == "Water->AV->Scint/InnerAV->AV->Water" ||
      name == "Water->AV->Water" || name == "Water->Reflection->Water") {
    if (s2.Z() > r0.Z()) {
      return IsSupportRopeCrossingHit(VectorToCylinderEdge(s2, v2, origin, r),
                                      angTol);
    }
    return false;
  }
  warn_ << "ShadowingCalculator::CheckForSupportRopeShadowing: Error! Cannot "
           "calculate shadowing for this light light path type: "
        << name << "\n";
  return false;
}

bool PlainShadowingCalculator::IsSupportRopeCrossingHit(TVector3 p,
                                                        double angTol) {
  const TVector3 r0 = SupportRopePositions[0];
  const TVector3 zHat(0, 0, 1);
  const TVector3 t = VectorToSphereEdge(r0, 1.0 * zHat, kRopeSphere, false);
  if (std::abs(p.Z()) > t.Z()) {
    return false;
  }
  p.SetZ(0);
  bool hit = false;
  for (float k = 0; Count(SupportRopePositions.size()) > k; k += 1.0F) {
    if (angTol > std::abs(p.Angle(SupportRopePositions[Index(k)]))) {
      hit = true;
    }
  }
  return hit;
}

bool PlainShadowingCalculator::IsSupportRopeWaterHit(const TVector3& startPos,
                                                     const TVector3& endPos,
                                                     const TVector3& v1,
                                                     const TVector3& v2,
                                                     double angTol) {
  const TVector3 origin(0, 0, 0);
  const TVector3 r0 = SupportRopePositions[0];
  const double r = r0.Mag();
  TVector3 y1 = startPos;
  y1.SetZ(0);
  TVector3 y2 = endPos;
  y2.SetZ(0);
  if (r > y1.Mag() && r > y2.Mag()) {
    return false;
  }
  if (y1.Mag() < r && y2.Mag() > r) {
    return IsSupportRopeCrossingHit(
        VectorToCylinderEdge(startPos, v1, origin, r), angTol);
  }
  if (y1.Mag() > r && y2.Mag() < r) {
    return IsSupportRopeCrossingHit(VectorToCylinderEdge(endPos, v2, origin, r),
                                    angTol);
  }

  // Both ends outside: tested against the hold-down ropes, with this test's
  // tolerance.
  if (AVHDRopeEndPoints.empty() || AVHDRopePositions.size() < 5) {
    return false;
  }
  const double h = AVHDRopeEndPoints[0].Mag();
  if (y1.Mag() <= h || y2.Mag() <= h) {
    return false;
  }
  if (ClosestAngle(y1, h) <= y1.Angle(y2)) {
    return false;
  }
  TVector3 p1 = VectorToCylinderEdge(startPos, v1, origin, h);
  const TVector3 p2 = VectorToCylinderEdge(endPos, v2, origin, h);
  const TVector3 zHat(0, 0, 1);
  const TVector3 t = VectorToSphereEdge(r0, 1.0 * zHat, kRopeSphere, false);
  if (!(std::abs(p1.Z()) > t.Mag())) {
    p1.SetZ(0);
    for (float k = 0; Count(AVHDRopeRolls.size()) > k; k += 1.0F) {
      TVector3 e1 = AVHDRopePositions[4];
      e1.RotateZ(AVHDRopeRolls[Index(k)]);
      TVector3 e2 = AVHDRopePositions[1];
      e2.RotateZ(AVHDRopeRolls[Index(k)] + kPi);
      if (angTol > std::abs(p1.Angle(e1))) {
        return true;
      } else if (angTol > std::abs(p1.Angle(e2))) {
        return true;
      }
    }
  }
  if (!(std::abs(p2.Z()) > t.Mag())) {
    // This point keeps its z.
    for (float k = 0; Count(AVHDRopeRolls.size()) > k; k += 1.0F) {
      TVector3 e1 = AVHDRopePositions[4];
      e1.RotateZ(AVHDRopeRolls[Index(k)]);
      TVector3 e2 = AVHDRopePositions[1];
      e2.RotateZ(AVHDRopeRolls[Index(k)] + kPi);
      if (angTol > std::abs(p2.Angle(e1))) {
        return true;
      } else if (angTol > std::abs(p2.Angle(e2))) {
        return true;
      }
    }
  }
  return false;
}

}  // namespace ZARN::Reference
