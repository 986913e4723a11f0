#include "tests/property/Paths.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <sstream>

#include "tests/reference/PlainConstants.hpp"

namespace ZARN::Testing {

namespace {

using Reference::Divide;
using Reference::kPi;

constexpr double kRadiansPerDegree = kPi / 180.0;
constexpr double kRopeSphere = 8500.0;

constexpr std::array kVectors = {
    &DU::LightPath::FinalDirection, &DU::LightPath::InitialDirection,
    &DU::LightPath::StartPos,       &DU::LightPath::EndPos,
    &DU::LightPath::AVPoint1,       &DU::LightPath::AVPoint2,
    &DU::LightPath::AVPoint3,       &DU::LightPath::AVPoint4};

double Component(const TVector3& v, int i) { return v(i); }

TVector3 Spherical(double r, double theta, double phi) {
  return {r * std::sin(theta) * std::cos(phi),
          r * std::sin(theta) * std::sin(phi), r * std::cos(theta)};
}

/// A radius to aim at where the tables give none that makes sense.
double Sensible(double radius, double otherwise) {
  return radius > 1.0 && radius < 1e6 ? radius : otherwise;
}

/// @p distance away from @p centre along its longest axis, where the sum and
/// the difference that the tests form are most likely exact.
TVector3 BesideAlongLongestAxis(TVector3 centre, double distance) {
  int longest = 0;
  for (int i = 1; i < 3; ++i) {
    if (std::abs(centre(i)) > std::abs(centre(longest))) longest = i;
  }
  centre(longest) += distance;
  return centre;
}

}  // namespace

PathMaker::PathMaker(const Reference::PlainShadowingCalculator& model,
                     Random& random)
    : model_(model), random_(random) {
  if (!model.AVHDRopeEndPoints.empty() && model.AVHDRopePositions.size() >= 5) {
    std::vector<TVector3> tested;
    for (const double roll : model.AVHDRopeRolls) {
      tested.push_back(model.AVHDRopePositions[4]);
      tested.back().RotateZ(roll);
      tested.push_back(model.AVHDRopePositions[1]);
      tested.back().RotateZ(kPi + roll);
    }
    holdDown_ = MakeRopes(tested, model.AVHDRopeEndPoints[0],
                          model.AVHDRopeRadius + model.AVHDRopeTolerance);
  }
  if (!model.SupportRopePositions.empty()) {
    support_ =
        MakeRopes(model.SupportRopePositions, model.SupportRopePositions[0],
                  model.SupportRopeRadius + model.SupportRopeTolerance);
  }
}

PathMaker::Ropes PathMaker::MakeRopes(const std::vector<TVector3>& directions,
                                      const TVector3& first, double reach) {
  const double perp2 = first.Perp2();
  return {directions, first.Mag(), reach / Sensible(first.Mag(), 5900.0),
          first.Z(),
          std::sqrt(std::max(0.0, kRopeSphere * kRopeSphere - perp2))};
}

/// How near to its limit the next path is built: mostly as near as counts, else
/// at the distances up to which single precision cannot tell.
void PathMaker::ChooseCloseness() {
  closeness_ = random_.Chance(0.88) ? kAtLimit
                                    : std::pow(10.0, random_.Uniform(-8, -1.5));
}

TestPath PathMaker::Draw() {
  TestPath result;
  ChooseCloseness();
  const double kind = random_.Uniform(0.0, 1.0);
  if (kind < 0.02) {
    result.path = AnyPath(DU::kUninitialised);
    return result;
  }
  if (kind < 0.05) {
    constexpr std::array kUnknown = {8, 9, 1000, -1,
                                     std::numeric_limits<int>::min()};
    result.path =
        AnyPath(static_cast<DU::eLightPathType>(random_.Pick(kUnknown)));
    return result;
  }
  // Every second path in water or through the vessel from outside: those have
  // the most cases.
  constexpr std::array kTypes = {DU::kInnerAVToWater,
                                 DU::kAVThroughInnerAVToWater,
                                 DU::kAVToWater,
                                 DU::kWaterThroughInnerAV,
                                 DU::kWaterThroughAV,
                                 DU::kWaterReflection,
                                 DU::kWater,
                                 DU::kWater,
                                 DU::kWaterThroughInnerAV,
                                 DU::kInnerAVToWater};
  const DU::eLightPathType type = random_.Pick(kTypes);
  result.path = AnyPath(type);
  if (random_.Chance(0.9)) {
    if (type == DU::kWater) {
      AimWater(result);
    } else {
      AimSegments(result);
    }
  }
  if (random_.Chance(0.04)) {
    LeaveVessel(result.path);
    result.isAtLimit = false;
  }
  if (random_.Chance(0.04)) {
    ChangeLengths(result.path);
    result.isAtLimit = false;
  }
  if (random_.Chance(0.04)) {
    PutSpecialValues(result.path);
    result.isAtLimit = false;
  }
  if (random_.Chance(0.06)) {
    Rename(result);
    result.isAtLimit = false;
  }
  result.isAtLimit = result.isAtLimit && closeness_ <= kAtLimit;
  return result;
}

DU::LightPath PathMaker::AnyPath(DU::eLightPathType type) {
  DU::LightPath path;
  path.LightPathType = type;
  path.StartPos = random_.Uniform(0.0, 8300.0) * random_.Direction();
  path.EndPos = 8300.0 * random_.Direction();
  path.InitialDirection = random_.Direction();
  path.FinalDirection = random_.Direction();
  const double radius = Sensible(model_.OuterAVRadius, 5860.0);
  path.AVPoint1 = radius * random_.Direction();
  path.AVPoint2 = radius * random_.Direction();
  path.AVPoint3 = radius * random_.Direction();
  path.AVPoint4 = radius * random_.Direction();
  return path;
}

void PathMaker::AimSegments(TestPath& path) {
  const bool second = random_.Chance(0.4);
  Segment segment = AimedSegment();
  // A component that is not there has no limits: look for another one.
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
  // The ropes more often: they have the most limits.
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

/// A point at the border of what lies within reach of a list's points: as far
/// as the reach from the nearest of them.
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
  // A point beyond the reach of the vessel's sphere has no such place on it.
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
    // The azimuth at which the point, put to the plate's height, is as far from
    // its centre as the plate's edge.
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
    // The band is narrower the further down; on its limits either may count.
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

/// Leaves the vessel so that it crosses the cylinder at the edge of a rope.
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

/// Leaves the vessel towards a rope so steeply that it crosses the cylinder
/// where the ropes end.
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

/// Begins on the cylinder on which ropes stand, where the far crossing may be
/// the start itself.
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

/// Turn a point and give it a direction so that it crosses the cylinder behind
/// a rope, with the angle between crossing and direction a right one to the
/// last bit: the height is then kept, where it is beyond all ropes one bit
/// beside. Only a direction that is no unit vector seen from above can do that.
bool PathMaker::TurnToSquareCrossing(TVector3& point, TVector3& direction,
                                     const Ropes& ropes) {
  const double ratio = Divide(ropes.cylinder, point.Perp());
  const double flat =
      ratio > 1.0 ? random_.Uniform(0.05, 0.49) : random_.Uniform(0.55, 0.97);
  // From the far crossing and its product with the direction being 0.
  const double share = 1.0 / flat - 1.0;
  const double cosine2 = Divide(1.0 - ratio * ratio, 1.0 - share * share);
  if (!(cosine2 <= 1.0)) return false;
  const double sign = random_.Chance(0.5) ? 1.0 : -1.0;
  const double turned = sign * std::acos(-std::sqrt(cosine2));
  const double height = (random_.Chance(0.5) ? 1.0 : -1.0) *
                        std::sqrt(1.0 - flat * flat) *
                        (random_.Chance(0.5) ? 1.0 : random_.Uniform(0.7, 1.3));
  const auto setDirection = [&](double phi) {
    direction.SetXYZ(flat * std::cos(phi), flat * std::sin(phi), height);
  };
  setDirection(point.Phi() + turned);
  const TVector3 crossing = CrossingOf(point, direction, ropes.cylinder).flat;
  point.RotateZ(random_.Pick(ropes.directions).Phi() - crossing.Phi() +
                random_.Uniform(-0.9, 0.9) * ropes.tolerance);
  constexpr double kRightAngle = 1.5707963267948966;
  constexpr int kAttempts = 60;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    const double aside =
        closeness_ > kAtLimit ? Aside() : random_.Uniform(-4e-15, 4e-15);
    setDirection(point.Phi() + turned + aside);
    if (closeness_ > kAtLimit) break;
    const TVector3 edge = CrossingOf(point, direction, ropes.cylinder).flat;
    if (edge.Unit().Angle(direction) == kRightAngle) return true;
  }
  return true;
}

/// Where a line meets a cylinder, as the formulas have it: a direction that is
/// shorter in the plane does not reach the cylinder.
PathMaker::Crossing PathMaker::CrossingOf(const TVector3& point,
                                          const TVector3& direction,
                                          double radius) {
  const TVector3 p(point.X(), point.Y(), 0.0);
  const TVector3 u(direction.X(), direction.Y(), 0.0);
  const double b = 2.0 * p.Mag() * std::cos(p.Angle(u));
  const double c = p.Mag2() - radius * radius;
  const double discriminant = b * b - 4.0 * c;
  TVector3 flat = p;
  if (discriminant >= 0.0) {
    const double root = std::sqrt(discriminant);
    flat += (root > b ? 0.5 * (root - b) : 0.5 * (-b - root)) * u;
  }
  return {flat, (flat - p).Mag() * std::tan(flat.Unit().Angle(direction))};
}

/// The angle by which a crossing must be turned about the z axis to lie at the
/// edge of some rope; NaN if it cannot.
double PathMaker::TurnToEdge(const TVector3& crossing, const Ropes& ropes,
                             double tolerance) {
  const TVector3& rope = random_.Pick(ropes.directions);
  const double cosine =
      Divide(std::cos(tolerance) * crossing.Mag() * rope.Mag() -
                 crossing.Z() * rope.Z(),
             crossing.Perp() * rope.Perp());
  const double sign = random_.Chance(0.5) ? 1.0 : -1.0;
  return rope.Phi() + sign * std::acos(cosine) - crossing.Phi() + Aside();
}

/// A direction as long as the given one, up or down like it, that crosses the
/// cylinder at a height. The steepest that was tried where none does.
TVector3 PathMaker::SlopedForHeight(const TVector3& point, TVector3 direction,
                                    double radius, double height) {
  const double length = direction.Mag();
  const double phi = direction.Phi();
  const double sign = direction.Z() < 0.0 ? -1.0 : 1.0;
  double low = 0.0;
  double high = kPi / 2.0;
  for (int step = 0; step < 54; ++step) {
    const double slope = 0.5 * (low + high);
    const double flat = length * std::cos(slope);
    direction.SetXYZ(flat * std::cos(phi), flat * std::sin(phi),
                     sign * length * std::sin(slope));
    const double reached = CrossingOf(point, direction, radius).height;
    (std::abs(reached) < height ? low : high) = slope;
  }
  return direction;
}

void PathMaker::AimWater(TestPath& path) {
  const bool holdDown = random_.Chance(0.6);
  const std::vector<TVector3>& ropes =
      holdDown ? model_.AVHDRopeEndPoints : model_.SupportRopePositions;
  if (ropes.empty()) return;
  const double kind = random_.Uniform(0.0, 1.0);
  if (kind < 0.15) {
    PutEndsOnCylinder(path, ropes[0].Mag());
  } else if (kind < 0.25) {
    PutHighCrossing(path);
    return;
  } else if (kind < 0.4) {
    PutGrazingEnds(path);
  } else {
    PutEndsNearRopes(path.path, ropes);
  }
  DU::LightPath& p = path.path;
  if (random_.Chance(0.6)) {
    p.InitialDirection = (p.EndPos - p.StartPos).Unit();
  } else if (random_.Chance(0.7)) {
    p.InitialDirection = Outward(p.StartPos.Phi());
  }
  if (random_.Chance(0.2)) p.InitialDirection *= -1.0;
  if (kind < 0.5) return;
  if (kind < 0.65) {
    PutCrossingAtHeight(path);
  } else if (kind < 0.73) {
    PutTangent(path);
  } else if (kind < 0.8) {
    PutSquareCrossing(path);
  } else {
    PutCrossingAtEdge(path);
  }
}

/// Turn the path so that its line, from one of its ends, crosses a cylinder at
/// the edge of a rope. Any pairing of cylinder and ropes: those that no test
/// makes are near no limit, but the tests mix them.
void PathMaker::PutCrossingAtEdge(TestPath& path) {
  DU::LightPath& p = path.path;
  const bool first = random_.Chance(0.5);
  const Ropes& cylinder = AnyRopes();
  const Ropes& ropes = random_.Chance(0.8) ? cylinder : AnyRopes();
  if (ropes.directions.empty()) return;
  if (random_.Chance(0.3)) {
    // Nearly a tangent, where the crossing moves most for the direction, and
    // single precision errs most.
    const TVector3& from = first ? p.StartPos : p.EndPos;
    const double sine = std::min(1.0, Divide(cylinder.cylinder, from.Perp()));
    const double turned =
        std::asin(sine) * (1.0 - std::pow(10.0, random_.Uniform(-8.0, -1.0)));
    const double phi = from.Phi() + (first ? kPi : 0.0) +
                       (random_.Chance(0.5) ? turned : -turned);
    p.InitialDirection.SetXYZ(std::cos(phi), std::sin(phi),
                              p.InitialDirection.Z());
    if (random_.Chance(0.5)) closeness_ = 3e-4;
  }
  if (random_.Chance(0.4)) p.InitialDirection *= random_.Uniform(0.45, 2.1);
  const Crossing crossing = CrossingOf(
      first ? p.StartPos : p.EndPos,
      first ? p.InitialDirection : -p.InitialDirection, cylinder.cylinder);
  TVector3 tested = crossing.flat;
  // Only one test keeps the height.
  if (!first && random_.Chance(0.4)) tested.SetZ(crossing.height);
  const double turn =
      TurnToEdge(tested, ropes,
                 random_.Chance(0.7) ? ropes.tolerance : support_.tolerance);
  if (!std::isfinite(turn)) return;
  for (const auto vector : kVectors) (p.*vector).RotateZ(turn);
  path.isAtLimit = true;
}

void PathMaker::PutCrossingAtHeight(TestPath& path) {
  DU::LightPath& p = path.path;
  const bool first = random_.Chance(0.5);
  const Ropes& ropes = AnyRopes();
  const std::array heights = {ropes.height, ropes.height, kRopeSphere};
  p.InitialDirection =
      SlopedForHeight(first ? p.StartPos : p.EndPos, p.InitialDirection,
                      AnyRopes().cylinder, random_.Pick(heights));
  p.InitialDirection.SetZ(Nudged(p.InitialDirection.Z()));
  path.isAtLimit = true;
}

void PathMaker::PutSquareCrossing(TestPath& path) {
  DU::LightPath& p = path.path;
  const Ropes& ropes = AnyRopes();
  if (ropes.directions.empty()) return;
  const bool first = random_.Chance(0.5);
  TVector3& from = first ? p.StartPos : p.EndPos;
  TVector3& to = first ? p.EndPos : p.StartPos;
  const double before = from.Phi();
  path.isAtLimit = TurnToSquareCrossing(from, p.InitialDirection, ropes);
  if (!first) p.InitialDirection *= -1.0;
  to.RotateZ(from.Phi() - before);
}

/// Give the path a direction that touches the cylinder, where the crossing
/// comes to be or not, and lies square to the direction.
void PathMaker::PutTangent(TestPath& path) {
  DU::LightPath& p = path.path;
  const bool first = random_.Chance(0.5);
  const double sign = random_.Chance(0.5) ? 1.0 : -1.0;
  const Ropes& ropes = AnyRopes();
  const TVector3& from = first ? p.StartPos : p.EndPos;
  const double sine = Divide(ropes.cylinder, from.Perp());
  if (!(sine < 1.0)) return;
  const double phi = from.Phi() + kPi + sign * std::asin(sine) + Aside();
  p.InitialDirection.SetXYZ(std::cos(phi), std::sin(phi), 0.0);
  if (random_.Chance(0.6)) {
    p.InitialDirection.SetZ(random_.Uniform(-1.0, 1.0));
  }
  if (!first) p.InitialDirection *= -1.0;
  path.isAtLimit = true;
}

double PathMaker::RopeAngle() const {
  const double reach =
      std::max(model_.AVHDRopeRadius + model_.AVHDRopeTolerance,
               model_.SupportRopeRadius + model_.SupportRopeTolerance);
  return reach / Sensible(model_.OuterAVRadius, 5860.0);
}

void PathMaker::PutEndsOnCylinder(TestPath& path, double radius) {
  DU::LightPath& p = path.path;
  p.StartPos = OnCircle(Nudged(radius), RandomHeight());
  p.EndPos = OnCircle(Nudged(radius), RandomHeight());
  if (random_.Chance(0.5)) {
    (random_.Chance(0.5) ? p.StartPos : p.EndPos) *= random_.Uniform(0.5, 1.5);
  }
  path.isAtLimit = true;
}

void PathMaker::PutEndsNearRopes(DU::LightPath& path,
                                 const std::vector<TVector3>& ropes) {
  const double radius = ropes[0].Mag();
  const double least = random_.Chance(0.4) ? 1.0 : 0.5;  // 1: both outside
  double phi = random_.Pick(ropes).Phi();
  if (random_.Chance(0.3)) phi += kPi;
  phi += random_.Uniform(-2.0, 2.0) * RopeAngle();
  double rho = radius * random_.Uniform(least, 1.4);
  path.StartPos.SetXYZ(rho * std::cos(phi), rho * std::sin(phi),
                       RandomHeight());
  phi += random_.Uniform(-1.0, 1.0) * random_.Uniform(0.0, 1.0);
  rho = radius * random_.Uniform(least, 1.4);
  path.EndPos.SetXYZ(rho * std::cos(phi), rho * std::sin(phi), RandomHeight());
}

void PathMaker::PutGrazingEnds(TestPath& path) {
  if (model_.AVHDRopeEndPoints.empty()) return;
  double phi = random_.Pick(model_.AVHDRopeEndPoints).Phi() +
               random_.Uniform(-1.2, 1.2) * RopeAngle();
  // A start outside meets the cylinder on its far side.
  if (random_.Chance(0.7)) phi += kPi;
  const double radius = model_.AVHDRopeEndPoints[0].Mag();
  const double rho = radius * random_.Uniform(1.001, 1.5);
  DU::LightPath& p = path.path;
  p.StartPos.SetXYZ(rho * std::cos(phi), rho * std::sin(phi), 0.0);
  const double closest =
      Reference::PlainShadowingCalculator::ClosestAngle(p.StartPos, radius);
  // Not every end has exactly this angle, but every few do.
  for (int attempt = 0; attempt < 20; ++attempt) {
    const double endRho = radius * random_.Uniform(1.001, 1.5);
    p.EndPos.SetXYZ(endRho * std::cos(phi + closest),
                    endRho * std::sin(phi + closest), 0.0);
    if (p.StartPos.Angle(p.EndPos) == closest) break;
  }
  p.StartPos.SetZ(RandomHeight());
  p.EndPos.SetZ(RandomHeight());
  path.isAtLimit = true;
}

void PathMaker::PutHighCrossing(TestPath& path) {
  if (model_.AVHDRopeEndPoints.empty()) return;
  double phi = random_.Pick(model_.AVHDRopeEndPoints).Phi() +
               random_.Uniform(-1.2, 1.2) * RopeAngle();
  // A start outside meets the cylinder on its far side.
  if (random_.Chance(0.7)) phi += kPi;
  const double radius = Sensible(model_.AVHDRopeEndPoints[0].Mag(), 5880.0);
  const double start = radius * random_.Uniform(1.001, 1.3);
  const double end = radius * random_.Uniform(1.001, 1.3);
  const double endPhi = phi + random_.Uniform(-0.02, 0.02);
  DU::LightPath& p = path.path;
  p.StartPos.SetXYZ(start * std::cos(phi), start * std::sin(phi),
                    RandomHeight());
  p.EndPos.SetXYZ(end * std::cos(endPhi), end * std::sin(endPhi),
                  RandomHeight());
  // Inward, so steep that the far side is met as high as the ropes' sphere
  // reaches: (start + radius) times the sine of the slope.
  double sine = kRopeSphere / (start + radius);
  path.isAtLimit = random_.Chance(0.5);
  sine = path.isAtLimit ? Nudged(sine) : sine * random_.Uniform(0.95, 1.05);
  if (sine >= 1.0) return;
  const double cosine = std::sqrt(1.0 - sine * sine);
  p.InitialDirection.SetXYZ(-cosine * std::cos(phi), -cosine * std::sin(phi),
                            random_.Chance(0.5) ? sine : -sine);
  if (random_.Chance(0.1)) {
    // A crossing without a height is beyond no rope's end.
    p.InitialDirection.SetZ(std::numeric_limits<double>::quiet_NaN());
    path.isAtLimit = false;
  }
}

void PathMaker::Rename(TestPath& path) {
  static const std::array<std::string, 16> kNames = {
      "LightPath Uninitialised",
      "LightPath Uninitialised",
      "Light Path Uninitialised",
      "Light Path uninitialised",
      "Light Path Uninitialised ",
      "",
      "Water",
      "water",
      "WATER",
      "Water\n",
      " Water",
      "AV->water",
      "AV->Water\nWater",
      "scint/innerav->av->water",
      "Water->Reflection",
      "Water->AV->Scint/InnerAV->AV->Water->PMT"};
  if (random_.Chance(0.2)) {
    path.naming = eNaming::kUnnamed;
    return;
  }
  path.naming = eNaming::kRenamed;
  // Now and then a type goes by the name of another one.
  path.name = random_.Chance(0.3) ? random_.Pick(DU::kLightPathTypeNames)
                                  : random_.Pick(kNames);
}

void PathMaker::PutSpecialValues(DU::LightPath& path) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr std::array kValues = {
      0.0,    -0.0,      std::numeric_limits<double>::quiet_NaN(),
      5e-324, 1e-310,    -1e-170,
      1e170,  1e200,     -1e200,
      1e308,  kInfinity, -kInfinity};
  if (random_.Chance(0.3)) path.*random_.Pick(kVectors) = TVector3();
  const int count = random_.Whole(0, 4);
  for (int i = 0; i < count; ++i) {
    TVector3& v = path.*random_.Pick(kVectors);
    v(random_.Whole(0, 2)) = random_.Pick(kValues);
  }
}

/// Directions far from unit length, and points far from the vessel: to where
/// squares, and products of squares, are no longer ordinary numbers.
void PathMaker::ChangeLengths(DU::LightPath& path) {
  constexpr std::array kExponents = {-166.0, -162.0, -157.0, -154.0, -80.0,
                                     -10.0,  -1.0,   0.0,    0.0,    1.0,
                                     10.0,   76.0,   150.0,  154.0};
  const double exponent = random_.Chance(0.2) ? random_.Uniform(-320.0, 307.0)
                                              : random_.Pick(kExponents) +
                                                    random_.Uniform(-2.0, 2.0);
  const double factor = std::pow(10.0, exponent);
  const double what = random_.Uniform(0.0, 1.0);
  for (const auto vector : kVectors) {
    const bool isDirection = vector == &DU::LightPath::FinalDirection ||
                             vector == &DU::LightPath::InitialDirection;
    if (what < 0.1 || isDirection == (what < 0.8)) path.*vector *= factor;
  }
}

/// Points off the vessel's sphere, by 1e-12 to 1e3 mm.
void PathMaker::LeaveVessel(DU::LightPath& path) {
  const double distance = std::pow(10.0, random_.Uniform(-12.0, 3.0));
  const double sign = random_.Chance(0.5) ? 1.0 : -1.0;
  for (const auto vector : DU::kAVPoints) {
    TVector3& v = path.*vector;
    v *= 1.0 + sign * Divide(distance, v.Mag());
  }
}

TVector3 PathMaker::OnVessel(double phi, double z) const {
  const double radius = Sensible(model_.OuterAVRadius, 5860.0);
  const double rho = std::sqrt(std::max(0.0, radius * radius - z * z));
  return {rho * std::cos(phi), rho * std::sin(phi), z};
}

TVector3 PathMaker::Outward(double phi) {
  const double kind = random_.Uniform(0.0, 1.0);
  // Straight up or down the horizontal part is nothing, and the angle that the
  // height comes from is a right angle to the last bit.
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

double PathMaker::Nudged(double x) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  if (closeness_ > kAtLimit) return x * (1.0 + Aside());
  switch (random_.Below(6)) {
    case 0:
      return std::nextafter(x, kInfinity);
    case 1:
      return std::nextafter(x, -kInfinity);
    case 2:
      return x * (1.0 + Aside());
    default:
      return x;
  }
}

/// A distance from a limit, in radians or as a share.
double PathMaker::Aside() {
  if (closeness_ <= kAtLimit) {
    return random_.Uniform(-1.0, 1.0) * kAtLimit *
           std::pow(10.0, random_.Uniform(-4.0, 0.0));
  }
  return random_.Uniform(-1.0, 1.0) * closeness_;
}

double PathMaker::RandomHeight() { return random_.Uniform(-6500.0, 6500.0); }

TestPath PathMaker::Between(const TestPath& a, const TestPath& b, double t) {
  constexpr double kAsLong = 1e-9;
  TestPath result = a;
  for (const auto vector : kVectors) {
    const TVector3& from = a.path.*vector;
    const TVector3& to = b.path.*vector;
    TVector3& between = result.path.*vector;
    between = from + t * (to - from);
    const double length = from.Mag();
    if (std::abs(to.Mag() - length) < kAsLong * length && between.Mag() > 0) {
      between *= length / between.Mag();
    }
  }
  return result;
}

TestPath PathMaker::Shaken(TestPath path) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  closeness_ = kAtLimit;
  path.isAtLimit = true;
  const int count = random_.Whole(1, 8);
  for (int i = 0; i < count; ++i) {
    TVector3& v = path.path.*random_.Pick(kVectors);
    double& x = v(random_.Whole(0, 2));
    if (random_.Chance(0.2)) {
      x *= 1.0 + Aside();
      continue;
    }
    const double towards = random_.Chance(0.5) ? kInfinity : -kInfinity;
    const int bits = random_.Whole(1, 3);
    for (int k = 0; k < bits; ++k) x = std::nextafter(x, towards);
  }
  return path;
}

double SharpTolerance(const Reference::PlainShadowingCalculator& model,
                      Random& random) {
  const bool holdDown =
      !model.AVHDRopeEndPoints.empty() &&
      (model.SupportRopePositions.empty() || random.Chance(0.5));
  const std::vector<TVector3>& ropes =
      holdDown ? model.AVHDRopeEndPoints : model.SupportRopePositions;
  if (ropes.empty()) return 150.0;
  const TVector3& rope = random.Pick(ropes);
  // y / (|x| + |y|) of a direction is a multiple of this at an edge of cells.
  constexpr double kCell = 1.0 / 1024.0;
  const double edgePhi = rope.Phi() + random.Uniform(0.001, 0.1);
  const double x = std::cos(edgePhi);
  const double y = std::sin(edgePhi);
  const double ascent =
      std::round(y / (std::abs(x) + std::abs(y)) / kCell) * kCell;
  const double phi =
      std::atan2(ascent, std::copysign(1.0 - std::abs(ascent), x));
  const double tolerance =
      std::acos(Divide(std::cos(phi - rope.Phi()) * rope.Perp(), rope.Mag()));
  return tolerance * ropes[0].Mag() -
         (holdDown ? model.AVHDRopeRadius : model.SupportRopeRadius);
}

bool PathMaker::IsFinite(const TestPath& path) {
  return std::all_of(kVectors.begin(), kVectors.end(), [&](auto vector) {
    const TVector3& v = path.path.*vector;
    return std::isfinite(v.Mag2());
  });
}

std::string Describe(const TestPath& path) {
  static constexpr std::array kNames = {
      "FinalDirection", "InitialDirection", "StartPos", "EndPos",
      "AVPoint1",       "AVPoint2",         "AVPoint3", "AVPoint4"};
  std::ostringstream out;
  out << "type " << static_cast<int>(path.path.LightPathType);
  if (path.naming == eNaming::kRenamed) out << " named '" << path.name << "'";
  if (path.naming == eNaming::kUnnamed) out << " without a name";
  out << std::hexfloat;
  for (std::size_t i = 0; i < kVectors.size(); ++i) {
    const TVector3& v = path.path.*kVectors[i];
    out << "\n  " << kNames[i] << " {" << Component(v, 0) << ", "
        << Component(v, 1) << ", " << Component(v, 2) << "}";
  }
  return out.str();
}

}  // namespace ZARN::Testing
