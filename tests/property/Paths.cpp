#include "tests/property/Paths.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <sstream>

namespace ZARN::Testing {

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kRadiansPerDegree = kPi / 180.0;

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

TestPath PathMaker::Draw() {
  TestPath result;
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
    PutSpecialValues(result.path);
    result.isAtLimit = false;
  }
  if (random_.Chance(0.06)) {
    Rename(result);
    result.isAtLimit = false;
  }
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
  const Segment segment = AimedSegment();
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
  // The ropes twice: they have two tests each.
  switch (random_.Below(10)) {
    case 0:
      return AtRopeSurface();
    case 1:
    case 2:
      return AtVerticalRope();
    case 3:
    case 4:
      return AtSupportRope();
    case 5:
      return AtBellyPlate();
    case 6:
      return AtNCDAnchor();
    case 7:
      return AtAVPipe();
    case 8:
      return AtNeckBoss();
    default:
      return AtHeightLimit();
  }
}

PathMaker::Segment PathMaker::AtRopeSurface() {
  Segment segment{random_.Direction(), random_.Direction(), false};
  const double reach = model_.AVHDRopeRadius + model_.AVHDRopeTolerance;
  if (model_.AVHDRopeSurfacePoints.empty() || !std::isfinite(reach)) {
    return segment;
  }
  const TVector3& k = random_.Pick(model_.AVHDRopeSurfacePoints);
  if (random_.Chance(0.3)) {
    const double sign = random_.Chance(0.5) ? 1.0 : -1.0;
    segment.point = BesideAlongLongestAxis(k, sign * Nudged(reach));
    segment.isAtLimit = true;
  } else {
    segment.point = k + (reach * random_.Uniform(0.0, 2.0)) * segment.point;
  }
  return segment;
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
  const double radius = Sensible(p.Mag(), 5860.0);
  const double halfWidth =
      std::atan(model_.BellyPlateHalfHeight / radius) +
      model_.BellyPlateTolerance / Sensible(model_.OuterAVRadius, 5860.0);
  double z = random_.Uniform(-1.2, 1.2) * band;
  double phi = p.Phi() + random_.Uniform(-2.0, 2.0) * halfWidth;
  if (random_.Chance(0.3)) {
    segment.isAtLimit = true;
    const double sign = random_.Chance(0.5) ? 1.0 : -1.0;
    if (p.Z() != 0.0 || random_.Chance(0.5)) {
      z = sign * Nudged(band);
      phi = p.Phi() + random_.Uniform(-0.9, 0.9) * halfWidth;
    } else {
      phi = p.Phi() + sign * Nudged(halfWidth);
    }
  }
  segment.point = OnVessel(phi, z);
  return segment;
}

PathMaker::Segment PathMaker::AtNCDAnchor() {
  Segment segment{random_.Direction(), random_.Direction(), false};
  const double reach = model_.NCDAnchorHalfZ + model_.NCDAnchorTolerance;
  if (model_.NCDAnchorPositions.empty() || !std::isfinite(reach)) {
    return segment;
  }
  const TVector3& anchor = random_.Pick(model_.NCDAnchorPositions);
  if (random_.Chance(0.4)) {
    const double sign = random_.Chance(0.5) ? 1.0 : -1.0;
    segment.point = BesideAlongLongestAxis(anchor, sign * Nudged(reach));
    segment.isAtLimit = true;
  } else {
    segment.point =
        anchor + (reach * random_.Uniform(0.0, 2.0)) * segment.point;
  }
  return segment;
}

PathMaker::Segment PathMaker::AtAVPipe() {
  const double radius = Sensible(model_.OuterAVRadius, 5860.0);
  double theta = random_.Uniform(2.0, 178.0);
  double phi = random_.Uniform(70.0, 110.0);
  Segment segment{{}, random_.Direction(), false};
  if (random_.Chance(0.4)) {
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
  Segment segment{{}, random_.Direction(), random_.Chance(0.3)};
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
  const std::vector<TVector3>& ropes =
      holdDown ? model_.AVHDRopeEndPoints : model_.SupportRopePositions;
  if (ropes.empty()) return segment;
  segment.point.SetZ(Nudged(ropes[0].Z()));
  segment.isAtLimit = true;
  return segment;
}

void PathMaker::AimWater(TestPath& path) {
  const bool holdDown = random_.Chance(0.6);
  const std::vector<TVector3>& ropes =
      holdDown ? model_.AVHDRopeEndPoints : model_.SupportRopePositions;
  if (ropes.empty()) return;
  const double kind = random_.Uniform(0.0, 1.0);
  if (kind < 0.2) {
    PutEndsOnCylinder(path, ropes[0].Mag());
  } else if (kind < 0.32) {
    PutHighCrossing(path);
    return;
  } else if (kind < 0.46) {
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
  constexpr double kRopeSphere = 8500.0;
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
  if (kind < 0.07) return {0.0, random_.Uniform(-1e-15, 1e-15), 1.0};
  TVector3 direction(std::cos(phi), std::sin(phi), 0.0);
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
  switch (random_.Below(6)) {
    case 0:
      return std::nextafter(x, kInfinity);
    case 1:
      return std::nextafter(x, -kInfinity);
    case 2:
      return x * (1.0 + random_.Uniform(-1e-10, 1e-10));
    default:
      return x;
  }
}

double PathMaker::RandomHeight() { return random_.Uniform(-6500.0, 6500.0); }

TestPath PathMaker::Between(const TestPath& a, const TestPath& b, double t) {
  TestPath result = a;
  for (const auto vector : kVectors) {
    const TVector3& from = a.path.*vector;
    const TVector3& to = b.path.*vector;
    result.path.*vector = from + t * (to - from);
  }
  return result;
}

TestPath PathMaker::Shaken(TestPath path) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  path.isAtLimit = true;
  const int count = random_.Whole(1, 8);
  for (int i = 0; i < count; ++i) {
    TVector3& v = path.path.*random_.Pick(kVectors);
    double& x = v(random_.Whole(0, 2));
    if (random_.Chance(0.2)) {
      x *= 1.0 + random_.Uniform(-1e-11, 1e-11);
      continue;
    }
    const double towards = random_.Chance(0.5) ? kInfinity : -kInfinity;
    const int bits = random_.Whole(1, 3);
    for (int k = 0; k < bits; ++k) x = std::nextafter(x, towards);
  }
  return path;
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
