#include "tests/property/Paths.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include "tests/reference/PlainConstants.hpp"

namespace ZARN::Testing {

namespace {

using Reference::Divide;
using Reference::kPi;

constexpr double kRadiansPerDegree = kPi / 180.0;

TVector3 Spherical(double r, double theta, double phi) {
  return {r * std::sin(theta) * std::cos(phi),
          r * std::sin(theta) * std::sin(phi), r * std::cos(theta)};
}

/// A point @p distance away from @p centre along its longest axis, where the
/// sums and differences that the tests compute are most likely exact.
TVector3 BesideAlongLongestAxis(TVector3 centre, double distance) {
  int longest = 0;
  for (int i = 1; i < 3; ++i) {
    if (std::abs(centre(i)) > std::abs(centre(longest))) longest = i;
  }
  centre(longest) += distance;
  return centre;
}

}  // namespace

void PathMaker::AimSegments(TestPath& path) {
  const bool second = random_.Chance(0.4);
  Segment segment = AimedSegment();
  // A missing component has no limits: try another one.
  for (int attempt = 0; attempt < 3 && !segment.isAtLimit; ++attempt) {
    if (random_.Chance(0.2)) break;
    segment = AimedSegment();
  }
  SetSegment(path.path, second, segment);
  path.isAtLimit = segment.isAtLimit;
  if (random_.Chance(0.3)) SetSegment(path.path, !second, AimedSegment());
}

void PathMaker::SetSegment(DU::LightPath& path, bool second,
                           const Segment& segment) {
  if (second) {
    path.FinalDirection = segment.direction;
    (path.LightPathType == DU::kWaterThroughAV ? path.AVPoint2
                                               : path.AVPoint4) = segment.point;
    return;
  }
  switch (path.LightPathType) {
    case DU::kInnerAVToWater:
      path.AVPoint2 = segment.point;
      path.FinalDirection = segment.direction;
      return;
    case DU::kAVThroughInnerAVToWater:
      path.AVPoint3 = segment.point;
      path.FinalDirection = segment.direction;
      return;
    case DU::kAVToWater:
      path.AVPoint1 = segment.point;
      path.FinalDirection = segment.direction;
      return;
    default:
      path.AVPoint1 = segment.point;
      path.InitialDirection = -segment.direction;
  }
}

PathMaker::Segment PathMaker::AimedSegment() {
  // The ropes are chosen more often: they have the most limits.
  switch (random_.Below(17)) {
    case 0:
    case 1:
      return AtRopeSurface();
    case 2:
      return AtVerticalRope();
    case 3:
      return AtSupportRope();
    case 4:
      return OnRopeCylinder();
    case 5:
      return AtBellyPlate();
    case 6:
      return AtNCDAnchor();
    case 7:
      return AtAVPipe();
    case 8:
      return AtNeckBoss();
    case 9:
    case 10:
      return AtHeightLimit();
    case 11:
    case 12:
      return AtCrossingHeight();
    case 13:
      return AtSquareCrossing();
    default:
      return AtRopeEdge();
  }
}

/// A point at the border of the region within reach of some points: the nearest
/// of them is exactly at that distance.
PathMaker::Segment PathMaker::AtReach(const std::vector<TVector3>& points,
                                      double reach) {
  Segment segment{random_.Direction(), random_.Direction(), false};
  if (points.empty() || !std::isfinite(reach)) return segment;
  const TVector3* nearest = &random_.Pick(points);
  const double sign = random_.Chance(0.5) ? 1.0 : -1.0;
  if (random_.Chance(0.2)) {
    segment.point = BesideAlongLongestAxis(*nearest, sign * Nudged(reach));
    segment.isAtLimit = true;
    return segment;
  }
  const bool atLimit = random_.Chance(0.7);
  const double share = atLimit ? 1.0 : random_.Uniform(0.0, 2.0);
  TVector3& p = segment.point;
  p = *nearest + (reach * share) * random_.Direction();
  if (!atLimit || !(reach > 0.0)) return segment;

  constexpr std::size_t kMostToSearch = 30000;
  const bool onVessel = random_.Chance(0.7);
  const double vessel = Sensible(model_.OuterAVRadius, 5860.0);
  const double wanted = Nudged(reach);
  for (int step = 0; step < 12; ++step) {
    if (step < 2 && points.size() < kMostToSearch) {
      nearest = &*std::min_element(points.begin(), points.end(),
                                   [&](const TVector3& a, const TVector3& b) {
                                     return (a - p).Mag2() < (b - p).Mag2();
                                   });
    }
    const TVector3 way = p - *nearest;
    p = *nearest + Divide(wanted, way.Mag()) * way;
    if (onVessel) p *= Divide(vessel, p.Mag());
  }
  // If the point is beyond the reach of the vessel's sphere, no such place is
  // on it.
  segment.isAtLimit =
      std::abs((p - *nearest).Mag() - wanted) <= kAtLimit * vessel;
  return segment;
}

PathMaker::Segment PathMaker::AtRopeSurface() {
  return AtReach(model_.AVHDRopeSurfacePoints,
                 model_.AVHDRopeRadius + model_.AVHDRopeTolerance);
}

PathMaker::Segment PathMaker::AtVerticalRope() {
  Segment segment{random_.Direction(), random_.Direction(), false};
  if (model_.AVHDRopeEndPoints.empty()) return segment;
  const TVector3& e0 = model_.AVHDRopeEndPoints[0];
  const double angle = (model_.AVHDRopeRadius + model_.AVHDRopeTolerance) /
                       Sensible(e0.Mag(), 5880.0);
  double phi = random_.Pick(model_.AVHDRopeEndPoints).Phi();
  if (random_.Chance(0.5)) phi += kPi;
  phi += random_.Uniform(-2.0, 2.0) * angle;
  segment.point = OnVessel(phi, e0.Z() - random_.Uniform(0.0, 4000.0));
  segment.direction = Outward(phi);
  return segment;
}

PathMaker::Segment PathMaker::AtSupportRope() {
  Segment segment{random_.Direction(), random_.Direction(), false};
  if (model_.SupportRopePositions.empty()) return segment;
  const TVector3& r0 = model_.SupportRopePositions[0];
  const double angle =
      (model_.SupportRopeRadius + model_.SupportRopeTolerance) /
      Sensible(r0.Mag(), 5920.0);
  const double phi = random_.Pick(model_.SupportRopePositions).Phi() +
                     random_.Uniform(-2.0, 2.0) * angle;
  segment.point = OnVessel(phi, r0.Z() + random_.Uniform(0.0, 4000.0));
  segment.direction = Outward(phi);
  return segment;
}

PathMaker::Segment PathMaker::AtBellyPlate() {
  Segment segment{random_.Direction(), random_.Direction(), false};
  if (model_.BellyPlatePositions.empty()) return segment;
  const TVector3& p = random_.Pick(model_.BellyPlatePositions);
  const double band = model_.BellyPlateHalfHeight + model_.BellyPlateTolerance;
  const TVector3 up(0, 0, model_.BellyPlateHalfHeight);
  const double halfWidth =
      0.5 * (p + up).Angle(p - up) +
      model_.BellyPlateTolerance / Sensible(model_.OuterAVRadius, 5860.0);
  double z = random_.Uniform(-1.2, 1.2) * band;
  double phi = p.Phi() + random_.Uniform(-2.0, 2.0) * halfWidth;
  const double kind = random_.Uniform(0.0, 1.0);
  const double sign = random_.Chance(0.5) ? 1.0 : -1.0;
  if (kind < 0.3) {
    segment.isAtLimit = true;
    z = sign * Nudged(band);
    phi = p.Phi() + random_.Uniform(-0.9, 0.9) * halfWidth;
  } else if (kind < 0.8) {
    // The azimuth at which the point, moved to the plate's height, is at the
    // same angle from the plate's centre as the plate's edge.
    TVector3 edge = p;
    edge.RotateZ(halfWidth);
    const double rho = OnVessel(0.0, z).Perp();
    const double cosine =
        Divide(std::cos(edge.Angle(p)) * std::hypot(rho, p.Z()) * p.Mag() -
                   p.Z() * p.Z(),
               rho * p.Perp());
    if (std::abs(cosine) < 1.0) {
      segment.isAtLimit = true;
      phi = p.Phi() + sign * std::acos(cosine) + Aside();
    }
  }
  segment.point = OnVessel(phi, z);
  return segment;
}

PathMaker::Segment PathMaker::AtNCDAnchor() {
  return AtReach(model_.NCDAnchorPositions,
                 model_.NCDAnchorHalfZ + model_.NCDAnchorTolerance);
}

PathMaker::Segment PathMaker::AtAVPipe() {
  const double radius = Sensible(model_.OuterAVRadius, 5860.0);
  double theta = random_.Uniform(2.0, 178.0);
  double phi = random_.Uniform(70.0, 110.0);
  Segment segment{{}, random_.Direction(), false};
  if (model_.AVPipeInfoLoaded && random_.Chance(0.6)) {
    segment.isAtLimit = true;
    constexpr std::array kBands = {30.0, 120.0};
    if (random_.Chance(0.5)) theta = random_.Pick(kBands);
    // The band gets narrower downwards; at its limits either width may apply.
    const double above = theta > 100.0 ? 10.0 : 15.0;
    const double below = theta > 100.0 ? 5.0 : 10.0;
    const double half = theta < 30.0 ? 15.0 : theta > 120.0 ? 5.0 : 10.0;
    const bool atBand = theta == kBands[0] || theta == kBands[1];
    const double width = !atBand ? half : (random_.Chance(0.5) ? above : below);
    if (!atBand || random_.Chance(0.5)) {
      phi = random_.Chance(0.5) ? 90.0 - width : 90.0 + width;
    }
  }
  segment.point =
      Spherical(radius, theta * kRadiansPerDegree, phi * kRadiansPerDegree);
  if (segment.isAtLimit) {
    for (int i = 0; i < 3; ++i) segment.point(i) = Nudged(segment.point(i));
  }
  return segment;
}

PathMaker::Segment PathMaker::AtNeckBoss() {
  const double radius = Sensible(model_.OuterAVRadius, 5860.0);
  Segment segment{{}, random_.Direction(), false};
  segment.isAtLimit = model_.NeckBossInfoLoaded && random_.Chance(0.6);
  double theta = model_.NeckBossAngle;
  if (!segment.isAtLimit) theta *= random_.Uniform(0.0, 2.0);
  segment.point = Spherical(radius, theta, random_.Uniform(-kPi, kPi));
  if (segment.isAtLimit) {
    for (int i = 0; i < 3; ++i) segment.point(i) = Nudged(segment.point(i));
  }
  return segment;
}

PathMaker::Segment PathMaker::AtHeightLimit() {
  const bool holdDown = random_.Chance(0.5);
  Segment segment = holdDown ? AtVerticalRope() : AtSupportRope();
  const Ropes& ropes = holdDown ? holdDown_ : support_;
  if (ropes.directions.empty()) return segment;
  segment.point = OnVessel(segment.point.Phi(), Nudged(ropes.firstZ));
  segment.isAtLimit = true;
  return segment;
}

/// A segment that leaves the vessel and crosses the cylinder at the edge of a
/// rope.
PathMaker::Segment PathMaker::AtRopeEdge() {
  const bool holdDown = random_.Chance(0.5);
  Segment segment = holdDown ? AtVerticalRope() : AtSupportRope();
  const Ropes& ropes = holdDown ? holdDown_ : support_;
  if (ropes.directions.empty()) return segment;
  if (random_.Chance(0.6)) segment.direction.RotateZ(random_.Uniform(-2, 2));
  if (random_.Chance(0.4)) segment.direction *= random_.Uniform(0.45, 2.1);
  const Crossing crossing =
      CrossingOf(segment.point, segment.direction, ropes.cylinder);
  const double turn = TurnToEdge(crossing.flat, ropes, ropes.tolerance);
  if (!std::isfinite(turn)) return segment;
  segment.point.RotateZ(turn);
  segment.direction.RotateZ(turn);
  segment.isAtLimit = true;
  return segment;
}

/// A segment that leaves the vessel towards a rope, so steeply that it crosses
/// the cylinder where the ropes end.
PathMaker::Segment PathMaker::AtCrossingHeight() {
  const bool holdDown = random_.Chance(0.5);
  Segment segment = holdDown ? AtVerticalRope() : AtSupportRope();
  const Ropes& ropes = holdDown ? holdDown_ : support_;
  if (ropes.directions.empty()) return segment;
  const double length = random_.Chance(0.7) ? 1.0 : random_.Uniform(0.4, 2.2);
  segment.direction.SetZ(random_.Chance(0.5) ? 1.0 : -1.0);
  segment.direction = SlopedForHeight(segment.point, length * segment.direction,
                                      ropes.cylinder, ropes.height);
  segment.direction.SetZ(Nudged(segment.direction.Z()));
  segment.isAtLimit = true;
  return segment;
}

/// A segment that starts on the cylinder of the ropes, where the far crossing
/// may be the start itself.
PathMaker::Segment PathMaker::OnRopeCylinder() {
  const bool holdDown = random_.Chance(0.5);
  Segment segment = holdDown ? AtVerticalRope() : AtSupportRope();
  const Ropes& ropes = holdDown ? holdDown_ : support_;
  if (ropes.directions.empty()) return segment;
  const double below = random_.Uniform(0.0, 4000.0);
  const double z = ropes.firstZ + (holdDown ? -below : below);
  if (random_.Chance(0.3)) {
    segment.point = OnCircle(Nudged(ropes.cylinder), z);
  } else {
    const double phi = segment.point.Phi();
    const double rho = Nudged(ropes.cylinder);
    segment.point.SetXYZ(rho * std::cos(phi), rho * std::sin(phi), z);
  }
  if (random_.Chance(0.5)) segment.direction.RotateZ(random_.Uniform(-3, 3));
  segment.isAtLimit = true;
  return segment;
}

PathMaker::Segment PathMaker::AtSquareCrossing() {
  const bool holdDown = random_.Chance(0.5);
  Segment segment = holdDown ? AtVerticalRope() : AtSupportRope();
  const Ropes& ropes = holdDown ? holdDown_ : support_;
  if (ropes.directions.empty()) return segment;
  segment.isAtLimit =
      TurnToSquareCrossing(segment.point, segment.direction, ropes);
  return segment;
}

TVector3 PathMaker::OnVessel(double phi, double z) const {
  const double radius = Sensible(model_.OuterAVRadius, 5860.0);
  const double rho = std::sqrt(std::max(0.0, radius * radius - z * z));
  return {rho * std::cos(phi), rho * std::sin(phi), z};
}

TVector3 PathMaker::Outward(double phi) {
  const double kind = random_.Uniform(0.0, 1.0);
  // Vertically the horizontal part is zero, and the angle that gives the height
  // is exactly a right angle.
  if (kind < 0.05) return {0.0, 0.0, random_.Chance(0.5) ? 1.0 : -1.0};
  TVector3 direction(std::cos(phi), std::sin(phi), 0.0);
  if (kind < 0.1) {
    direction *= std::pow(10.0, random_.Uniform(-18.0, -1.0));
    direction.SetZ(random_.Chance(0.5) ? 1.0 : -1.0);
    return direction;
  }
  if (kind < 0.2) return direction;
  direction.SetZ(random_.Uniform(-2.0, 2.0) * random_.Uniform(0.0, 2.0));
  if (kind < 0.9) return direction.Unit();
  return direction;
}

TVector3 PathMaker::OnCircle(double radius, double z) {
  const double signedRadius = random_.Chance(0.5) ? radius : -radius;
  if (random_.Chance(0.5)) return {signedRadius, 0.0, z};
  return {0.0, signedRadius, z};
}

}  // namespace ZARN::Testing
