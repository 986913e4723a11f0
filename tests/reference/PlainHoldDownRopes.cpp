#include <cmath>

#include "db/DB.hpp"
#include "tests/reference/PlainConstants.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

namespace ZARN::Reference {

void PlainShadowingCalculator::LoadAVHDRopeInfo() {
  std::string solidName =
      DB::Get().GetLink("GEO", "hold_down_ropes", -1)->GetS("solid_definition");
  AVHDRopeRadius = DB::Get().GetLink("SOLID", solidName, -1)->GetD("r_rope");
  solidName =
      DB::Get().GetLink("GEO", "hold_down_ropes", -1)->GetS("solid_definition");
  FillXYZPositions(AVHDRopePositions, "SOLID", solidName, "rope_x", "rope_y",
                   "rope_z");
  const std::string locationsName =
      DB::Get().GetLink("GEO", "hold_down_ropes", -1)->GetS("locations");
  AVHDRopeRolls =
      DB::Get().GetLink("GEO_LOCATIONS", locationsName, -1)->GetDArray("roll");
  if (AVHDRopePositions.size() < 6) {
    throw DBNotFoundError("a hold-down rope of fewer than six points");
  }

  for (float i = 0; i < Count(AVHDRopeRolls.size()); i += 1.0F) {
    AVHDRopeRolls[Index(i)] = AVHDRopeRolls[Index(i)] / kDegreesPerRadian;
  }
  const TVector3 p0 = AVHDRopePositions[0];
  const TVector3 p1 = AVHDRopePositions[1];
  const TVector3 p2 = AVHDRopePositions[2];
  const TVector3 p3 = AVHDRopePositions[3];
  const TVector3 p4 = AVHDRopePositions[4];
  const TVector3 p5 = AVHDRopePositions[5];
  const TVector3 zHat(0, 0, 1.0);

  for (float i = 0; i < Count(AVHDRopeRolls.size()); i += 1.0F) {
    TVector3 end1 = p1;
    end1.RotateZ(AVHDRopeRolls[Index(i)]);
    AVHDRopeEndPoints.push_back(end1);
    TVector3 end4 = p4;
    end4.RotateZ(AVHDRopeRolls[Index(i)]);
    AVHDRopeEndPoints.push_back(end4);
  }

  for (float i = 0; i < Count(AVHDRopeRolls.size()); i += 1.0F) {
    const double roll = AVHDRopeRolls[Index(i)];
    TVector3 t1 = p1;
    t1.RotateZ(roll);
    TVector3 t4 = p4;
    t4.RotateZ(roll);
    TVector3 t2 = p2;
    t2.RotateZ(roll);
    TVector3 t3 = p3;
    t3.RotateZ(roll);
    TVector3 t1Mirrored = t1;
    t1Mirrored.RotateZ(kPi);
    TVector3 t4Mirrored = t4;
    t4Mirrored.RotateZ(kPi);
    TVector3 t2Mirrored = t2;
    t2Mirrored.RotateZ(kPi);
    TVector3 t3Mirrored = t3;
    t3Mirrored.RotateZ(kPi);
    // The mirrored pair is not used later, but ROOT warns separately if one of
    // its vectors is zero.
    t1.SetMag(OuterAVRadius);
    t4.SetMag(OuterAVRadius);
    t4Mirrored.SetMag(OuterAVRadius);
    t1Mirrored.SetMag(OuterAVRadius);
    const double l12 = (t2 - t1).Mag();
    const double l43 = (t3 - t4).Mag();
    TVector3 m = t1 + (0.5 * (t4 - t1).Mag()) * (t4 - t1).Unit();
    m.SetMag(AVNeckRadius + 250.0);
    const double lm2 = (m - t2).Mag();
    const double lm3 = (m - t3).Mag();
    TVector3 v = t2;
    TVector3 w = t3;
    const double h = t2.Angle(t3Mirrored);

    double t = 0.1;
    for (int pass = 0; pass < 500; pass++) {
      const double f = t / 1000.0;
      const double phi = kTwoPi * f;
      v.SetPhi(phi);
      if (v.Angle(t2) < h && v.Angle(t3Mirrored) < h) {
        AVHDRopeSurfacePoints.push_back(
            VectorToSphereEdge(v, zHat, OuterAVRadius, false));
      }
      w.SetPhi(phi);
      if (w.Angle(t3) < h && w.Angle(t2Mirrored) < h) {
        AVHDRopeSurfacePoints.push_back(
            VectorToSphereEdge(w, zHat, OuterAVRadius, false));
      }
      const TVector3 q1 = t1 + (l12 * f) * (t2 - t1).Unit();
      const TVector3 q2 = t4 + (l43 * f) * (t3 - t4).Unit();
      const TVector3 q3 = t2 + (lm2 * f) * (m - t2).Unit();
      const TVector3 q4 = t3 + (lm3 * f) * (m - t3).Unit();
      AVHDRopeSurfacePoints.push_back(
          VectorToSphereEdge(q1, zHat, OuterAVRadius, false));
      AVHDRopeSurfacePoints.push_back(
          VectorToSphereEdge(q2, zHat, OuterAVRadius, false));
      AVHDRopeSurfacePoints.push_back(
          VectorToSphereEdge(q3, zHat, OuterAVRadius, false));
      AVHDRopeSurfacePoints.push_back(
          VectorToSphereEdge(q4, zHat, OuterAVRadius, false));
      t += 2.0;
    }
  }

  for (float i = 0; i < Count(AVHDRopeRolls.size()); i += 1.0F) {
    const double roll = AVHDRopeRolls[Index(i)];
    TVector3 a0 = p0;
    a0.RotateZ(roll);
    TVector3 a1 = p1;
    a1.RotateZ(roll);
    TVector3 a5 = p5;
    a5.RotateZ(roll);
    TVector3 a4 = p4;
    a4.RotateZ(roll);
    const float s1 = static_cast<float>((a0 - a1).Mag()) / 100.0F;
    const float s2 = static_cast<float>((a5 - a4).Mag()) / 100.0F;
    const TVector3 u1 = (a0 - a1).Unit();
    const TVector3 u2 = (a5 - a4).Unit();
    for (float k = 1.0F; k <= 99.0F; k += 1.0F) {
      const float along1 = s1 * k;
      const float along2 = s2 * k;
      AVHDRopeLegPoints.push_back(a1 + static_cast<double>(along1) * u1);
      AVHDRopeLegPoints.push_back(a4 + static_cast<double>(along2) * u2);
    }
  }
}

bool PlainShadowingCalculator::CheckForAVHDRopeShadowing(
    DU::LightPathCalculator& lightPath) {
  if (AVHDRopeEndPoints.empty() || AVHDRopePositions.size() < 5) {
    return false;
  }
  const double angTol =
      Divide(AVHDRopeTolerance + AVHDRopeRadius, AVHDRopeEndPoints[0].Mag());

  TVector3 s1(0, 0, 0);
  TVector3 v1(0, 0, 0);
  TVector3 s2(0, 0, 0);
  TVector3 v2(0, 0, 0);
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
    warn_ << "ShadowingCalculator::CheckAVHDRopeShadowing: LightPathCalculator "
             "object is uninitialised, call "
             "LightPathCalculator::CalcByPosition first before checking for "
             "shadowing!\n";
    return false;
  }

  if (name == "Water" || name == "LightPath Uninitialised") {
    if (name == "Water") {
      return IsAVHDRopeWaterHit(lightPath.GetStartPos(), lightPath.GetEndPos(),
                                v1, v2, angTol);
    }
    warn_ << "ShadowingCalculator::CheckForAVHDRopeShadowing: Error! Cannot "
             "calculate shadowing for this light light path type: "
          << name << "\n";
    return false;
  }
  if (IsAVHDRopeSegmentHit(s1, v1, angTol)) {
    return true;
  }
  if (name == "Scint/InnerAV->AV->Water" ||
      name == "AV->Scint/InnerAV->AV->Water" || name == "AV->Water") {
    return false;
  }
  if (name == "Water->AV->Scint/InnerAV->AV->Water" ||
      name == "Water->AV->Water" || name == "Water->Reflection->Water") {
    return IsAVHDRopeSegmentHit(s2, v2, angTol);
  }
  warn_ << "ShadowingCalculator::CheckForAVHDRopeShadowing: Error! Cannot "
           "calculate shadowing for this light light path type: "
        << name << "\n";
  return false;
}

bool PlainShadowingCalculator::IsAVHDRopeSegmentHit(const TVector3& s,
                                                    const TVector3& v,
                                                    double angTol) {
  const TVector3 origin(0, 0, 0);
  const TVector3 down(0, 0, -1.0);
  const TVector3 e0 = AVHDRopeEndPoints[0];
  const double h = e0.Mag();
  if (e0.Z() > s.Z()) {
    TVector3 x = VectorToCylinderEdge(s, v, origin, h);
    const TVector3 t = VectorToSphereEdge(e0, down, kRopeSphere, false);
    if (t.Z() > -std::abs(x.Z())) {
      return false;
    }
    x.SetZ(0);
    bool hit = false;
    for (float i = 0; Count(AVHDRopeRolls.size()) > i; i += 1.0F) {
      TVector3 q = AVHDRopePositions[4];
      q.RotateZ(AVHDRopeRolls[Index(i)]);
      TVector3 p = AVHDRopePositions[1];
      p.RotateZ(kPi + AVHDRopeRolls[Index(i)]);
      if (angTol > std::abs(x.Angle(q))) {
        hit = true;
      } else if (angTol > std::abs(x.Angle(p))) {
        hit = true;
      }
    }
    return hit;
  }
  bool hit = false;
  for (float i = 0; Count(AVHDRopeSurfacePoints.size()) > i; i += 1.0F) {
    const TVector3& k = AVHDRopeSurfacePoints[Index(i)];
    if ((AVHDRopeRadius + AVHDRopeTolerance) > std::abs((s - k).Mag())) {
      hit = true;
    }
  }
  return hit;
}

bool PlainShadowingCalculator::IsAVHDRopeWaterHit(const TVector3& startPos,
                                                  const TVector3& endPos,
                                                  const TVector3& v1,
                                                  const TVector3& v2,
                                                  double angTol) {
  const TVector3 origin(0, 0, 0);
  const TVector3 down(0, 0, -1.0);
  const TVector3 e0 = AVHDRopeEndPoints[0];
  const double h = e0.Mag();
  TVector3 y1 = startPos;
  y1.SetZ(0);
  TVector3 y2 = endPos;
  y2.SetZ(0);
  const TVector3 t = VectorToSphereEdge(e0, down, kRopeSphere, false);
  if (h > y1.Mag()) {
    if (h > y2.Mag()) {
      return false;
    }
  }
  if (y1.Mag() < h) {
    if (y2.Mag() > h) {
      const TVector3 x = VectorToCylinderEdge(startPos, v1, origin, h);
      return IsAVHDRopeCrossingHit(x, t, angTol);
    }
  }
  if (y1.Mag() > h) {
    if (y2.Mag() < h) {
      const TVector3 x = VectorToCylinderEdge(endPos, v2, origin, h);
      return IsAVHDRopeCrossingHit(x, t, angTol);
    }
  }
  if (y1.Mag() > h) {
    if (y2.Mag() > h) {
      if (ClosestAngle(y1, h) <= y1.Angle(y2)) {
        return false;
      }
      const TVector3 p1 = VectorToCylinderEdge(startPos, v1, origin, h);
      const TVector3 p2 = VectorToCylinderEdge(endPos, v2, origin, h);
      if (IsAVHDRopeCrossingHit(p1, t, angTol)) {
        return true;
      }
      return IsAVHDRopeCrossingHit(p2, t, angTol);
    }
  }
  return false;
}

bool PlainShadowingCalculator::IsAVHDRopeCrossingHit(TVector3 x,
                                                     const TVector3& t,
                                                     double angTol) {
  if (t.Z() > -std::abs(x.Z())) {
    return false;
  }
  x.SetZ(0);
  for (float i = 0; Count(AVHDRopeRolls.size()) > i; i += 1.0F) {
    TVector3 q = AVHDRopePositions[4];
    q.RotateZ(AVHDRopeRolls[Index(i)]);
    TVector3 p = AVHDRopePositions[1];
    p.RotateZ(kPi + AVHDRopeRolls[Index(i)]);
    if (angTol > std::abs(x.Angle(q))) {
      return true;
    } else if (angTol > std::abs(x.Angle(p))) {
      return true;
    }
  }
  return false;
}

}  // namespace ZARN::Reference
