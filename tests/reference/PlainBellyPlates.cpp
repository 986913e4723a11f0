#include "db/DB.hpp"
#include "tests/reference/PlainConstants.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

namespace ZARN::Reference {

void PlainShadowingCalculator::LoadBellyPlateInfo() {
  BellyPlateHalfHeight = DB::Get()
                             .GetLink("SOLID", "belly_plate_vintar", -1)
                             ->GetD("octahedron_half_height");
  const std::string locationsName =
      DB::Get().GetLink("GEO", "inner_av", -1)->GetS("belly_plate_locations");
  FillXYZPositions(BellyPlatePositions, "GEO_LOCATIONS", locationsName, "x",
                   "y", "z");
  const double n = BellyPlateTolerance;
  const TVector3 zHat(0, 0, 1);
  for (float k = 0; Count(BellyPlatePositions.size()) > k; k += 1.0F) {
    const TVector3 p = BellyPlatePositions[Index(k)];
    const double r = p.Mag();
    TVector3 top = p + BellyPlateHalfHeight * zHat;
    top.SetMag(r);
    TVector3 bottom = p - BellyPlateHalfHeight * zHat;
    bottom.SetMag(r);
    const double w = top.Angle(bottom);
    const double phiStart = p.Phi() - 0.5 * w;
    if (n > 0) {
      for (double a = 0; n > a; a += 1.0) {
        TVector3 v = bottom;
        v.SetPhi(a / n * w + phiStart);
        for (double b = 0; n > b; b += 1.0) {
          TVector3 q = v + (2 * (b / n) * BellyPlateHalfHeight) * zHat;
          q.SetMag(r);
          BellyPlateGridPoints.push_back(q);
        }
      }
    }
  }
}

bool PlainShadowingCalculator::CheckForBellyPlateShadowing(
    DU::LightPathCalculator& lightPath) {
  TVector3 q1(0, 0, 0);
  TVector3 u1(0, 0, 0);
  TVector3 q2(0, 0, 0);
  TVector3 u2(0, 0, 0);
  const std::string name =
      lightPath.LightPathTypeNames()[lightPath.GetLightPathType()];
  if (name == "Scint/InnerAV->AV->Water") {
    q1 = lightPath.GetAVPoint2();
    u1 = lightPath.GetFinalDirection();
  } else if (name == "AV->Scint/InnerAV->AV->Water") {
    q1 = lightPath.GetAVPoint3();
    u1 = lightPath.GetFinalDirection();
  } else if (name == "AV->Water") {
    q1 = lightPath.GetAVPoint1();
    u1 = lightPath.GetFinalDirection();
  } else if (name == "Water->AV->Scint/InnerAV->AV->Water") {
    q1 = lightPath.GetAVPoint1();
    u1 = -lightPath.GetInitialDirection();
    q2 = lightPath.GetAVPoint4();
    u2 = lightPath.GetFinalDirection();
  } else if (name == "Water->AV->Water") {
    q1 = lightPath.GetAVPoint1();
    u1 = -lightPath.GetInitialDirection();
    q2 = lightPath.GetAVPoint2();
    u2 = lightPath.GetFinalDirection();
  } else if (name == "Water") {
    u1 = lightPath.GetInitialDirection();
    u2 = -lightPath.GetInitialDirection();
  } else if (name == "Water->Reflection->Water") {
    q1 = lightPath.GetAVPoint1();
    u1 = -lightPath.GetInitialDirection();
    q2 = lightPath.GetAVPoint1();
    u2 = lightPath.GetFinalDirection();
  } else if (name == "Light Path Uninitialised") {
    warn_ << "ShadowingCalculator::CheckForBellyPlateShadowing: LightPath is "
             "uninitialised, call CalcByPosition first before checking for "
             "shadowing!\n";
    return false;
  }
  // The directions are chosen as in the other tests but not used.
  static_cast<void>(u1);
  static_cast<void>(u2);

  const double h = BellyPlateHalfHeight;
  const double t = BellyPlateTolerance;
  const double r = OuterAVRadius;
  if (name == "Water") {
    return false;
  }
  if (name == "LightPath Uninitialised") {
    warn_ << "ShadowingCalculator::CheckForBellyPlateShadowing: Error! Cannot "
             "calculate shadowing for this light light path type: "
          << name << "\n";
    return false;
  }
  const double hz = h + t;
  const double dphi = Divide(t, r);
  if (q1.Z() < hz && q1.Z() > -hz) {
    if (IsBellyPlateHit(q1, dphi)) {
      return true;
    }
  }
  if (name == "Scint/InnerAV->AV->Water" ||
      name == "AV->Scint/InnerAV->AV->Water" || name == "AV->Water") {
    return false;
  }
  if (name == "Water->AV->Scint/InnerAV->AV->Water" ||
      name == "Water->AV->Water" || name == "Water->Reflection->Water") {
    if (q2.Z() < hz && q2.Z() > -hz) {
      return IsBellyPlateHit(q2, dphi);
    }
    return false;
  }
  if (name == "Water") {
    return false;
  }
  warn_ << "ShadowingCalculator::CheckForBellyPlateShadowing: Error! Cannot "
           "calculate shadowing for this light light path type: "
        << name << "\n";
  return false;
}

bool PlainShadowingCalculator::IsBellyPlateHit(const TVector3& x, double dphi) {
  const TVector3 zHat(0, 0, 1);
  for (float k = 0; Count(BellyPlatePositions.size()) > k; k += 1.0F) {
    const TVector3 p = BellyPlatePositions[Index(k)];
    const double r = p.Mag();
    TVector3 top = p + BellyPlateHalfHeight * zHat;
    top.SetMag(r);
    TVector3 bottom = p - BellyPlateHalfHeight * zHat;
    bottom.SetMag(r);
    const double w = top.Angle(bottom);
    const double phiStart = p.Phi() - 0.5 * w;
    TVector3 left = p;
    left.SetPhi(phiStart - dphi);
    TVector3 right = p;
    right.SetPhi(dphi + (w + phiStart));
    TVector3 level = x;
    level.SetZ(p.Z());
    const double alpha = level.Angle(p);
    if (left.Angle(p) > alpha) {
      if (right.Angle(p) > alpha) {
        return true;
      }
    }
  }
  return false;
}

}  // namespace ZARN::Reference
