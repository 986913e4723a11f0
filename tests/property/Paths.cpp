#include "tests/property/Paths.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "tests/reference/PlainConstants.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::Testing {

using Reference::Divide;
using Reference::kPi;
using Reference::kRopeSphere;

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

/// Choose how near to its limit the next path is built: mostly so near that it
/// counts as at the limit, else at the distances that single precision cannot
/// resolve.
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
  // Every second path is in water or crosses the vessel from outside: those
  // have the most cases.
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
  // Sometimes a type has the name of another one.
  path.name = random_.Chance(0.3) ? random_.Pick(DU::kLightPathTypeNames)
                                  : random_.Pick(kNames);
}

void PathMaker::PutSpecialValues(DU::LightPath& path) {
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

/// Use directions far from unit length, and points far from the vessel, up to
/// where squares and products of squares overflow or underflow.
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

/// Move points off the vessel's sphere, by 1e-12 to 1e3 mm.
void PathMaker::LeaveVessel(DU::LightPath& path) {
  const double distance = std::pow(10.0, random_.Uniform(-12.0, 3.0));
  const double sign = random_.Chance(0.5) ? 1.0 : -1.0;
  for (const auto vector : DU::kAVPoints) {
    TVector3& v = path.*vector;
    v *= 1.0 + sign * Divide(distance, v.Mag());
  }
}

double PathMaker::Nudged(double x) {
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

/// A distance from a limit, in radians or as a fraction.
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
    out << "\n  " << kNames[i] << " {" << v.X() << ", " << v.Y() << ", "
        << v.Z() << "}";
  }
  return out.str();
}

}  // namespace ZARN::Testing
