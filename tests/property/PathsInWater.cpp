#include "tests/property/Paths.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "tests/reference/PlainConstants.hpp"

namespace ZARN::Testing {

using Reference::Divide;
using Reference::kPi;
using Reference::kRopeSphere;

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

/// Rotate the path so that its line, from one of its ends, crosses a cylinder
/// at the edge of a rope. Cylinder and ropes are paired at random: pairs that
/// no test uses are near no limit, but the tests mix them.
void PathMaker::PutCrossingAtEdge(TestPath& path) {
  DU::LightPath& p = path.path;
  const bool first = random_.Chance(0.5);
  const Ropes& cylinder = AnyRopes();
  const Ropes& ropes = random_.Chance(0.8) ? cylinder : AnyRopes();
  if (ropes.directions.empty()) return;
  if (random_.Chance(0.3)) {
    // Nearly a tangent, where the crossing changes most with the direction and
    // single precision has the largest errors.
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
  // Only one test uses the height.
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

/// Give the path a direction that touches the cylinder: there the crossing
/// appears or vanishes, and is perpendicular to the direction.
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
  // Inwards, so steep that the far side is met at the height that the ropes'
  // sphere reaches: (start + radius) times the sine of the slope.
  double sine = kRopeSphere / (start + radius);
  path.isAtLimit = random_.Chance(0.5);
  sine = path.isAtLimit ? Nudged(sine) : sine * random_.Uniform(0.95, 1.05);
  if (sine >= 1.0) return;
  const double cosine = std::sqrt(1.0 - sine * sine);
  p.InitialDirection.SetXYZ(-cosine * std::cos(phi), -cosine * std::sin(phi),
                            random_.Chance(0.5) ? sine : -sine);
  if (random_.Chance(0.1)) {
    // A crossing whose height is NaN is not beyond the end of any rope.
    p.InitialDirection.SetZ(std::numeric_limits<double>::quiet_NaN());
    path.isAtLimit = false;
  }
}

}  // namespace ZARN::Testing
