#include "tests/lightpath/LightPathPairs.hpp"

#include <algorithm>
#include <cmath>

#include "lightpath/LightPathType.hpp"
#include "tests/lightpath/LightPathFlaws.hpp"
#include "tests/lightpath/Vessels.hpp"

namespace ZARN::Testing {

double LogUniform(Random& random, double lowPower, double highPower) {
  return std::pow(10.0, random.Uniform(lowPower, highPower));
}

namespace {

/// A radius close to a given one, at any distance down to its last digits.
double Near(Random& random, double radius) {
  const double side = random.Chance(0.5) ? 1.0 : -1.0;
  return radius * (1.0 + side * LogUniform(random, -15, -1));
}

}  // namespace

Pair DrawPair(const DU::ConcentricMedia& media, Random& random) {
  const double inner = media.InnerRadius;
  const double outer = media.OuterRadius;
  Pair pair;
  pair.IsTame = random.Chance(0.5);
  if (pair.IsTame) {
    pair.EventRadius = random.Chance(0.2)
                           ? random.Uniform(inner, outer)
                           : outer * 2.0 * std::cbrt(random.Uniform(1e-9, 1.0));
    pair.PmtRadius = outer * random.Uniform(1.001, 2.0);
    pair.Angle = random.Uniform(0.0, kPi);
  } else {
    switch (random.Below(5)) {
      case 0:
        pair.EventRadius = inner * LogUniform(random, -15, 0);
        break;
      case 1:
        pair.EventRadius = Near(random, inner);
        break;
      case 2:
        pair.EventRadius = Near(random, outer);
        break;
      case 3:
        pair.EventRadius = outer * LogUniform(random, 0, 2);
        break;
      default:
        pair.EventRadius = outer * random.Uniform(0.0, 2.0);
    }
    pair.PmtRadius =
        outer * (1.0 + LogUniform(random, random.Chance(0.5) ? -15 : -1, 1));
    switch (random.Below(3)) {
      case 0:
        pair.Angle = random.Uniform(0.0, kPi);
        break;
      case 1:
        pair.Angle = LogUniform(random, -12, 0);
        break;
      default:
        pair.Angle = kPi - LogUniform(random, -12, 0);
    }
  }
  pair.Event = pair.EventRadius * random.Direction();
  // The rounded radius, which may be beyond a surface.
  pair.EventRadius = pair.Event.Mag();
  return pair;
}

void AimByTracing(Pair& pair, const DU::ConcentricMedia& media,
                  Random& random) {
  const auto launch = [&](double angle) {
    return Reference::TraceRay(media, pair.EventRadius, pair.PmtRadius, angle);
  };
  // Without rays that miss the vessel.
  const double rim =
      pair.EventRadius < media.OuterRadius
          ? 0.0
          : kPi - std::asin(media.OuterRadius / pair.EventRadius);
  Reference::TracedRay ray = launch(random.Uniform(rim, kPi));
  if (!pair.IsTame && random.Chance(0.4)) {
    // Close to the first ray of this type: grazing incidence, critical angles.
    const Reference::TracedRay other = launch(random.Uniform(rim, kPi));
    if (other.Type != ray.Type && ray.Type != DU::kUninitialised) {
      double same = ray.LaunchAngle;
      double differs = other.LaunchAngle;
      for (int i = 0; i < 60; ++i) {
        const double middle = same + (differs - same) / 2.0;
        (launch(middle).Type == ray.Type ? same : differs) = middle;
      }
      // Near a right angle, the sine (which decides whether the ray hits a
      // sphere) is the same for angles this close.
      const double blur = 4e-15 / std::abs(std::cos(same));
      const double distance = std::max(blur, LogUniform(random, -13, -1));
      const Reference::TracedRay near =
          launch(same < differs ? same - distance : same + distance);
      if (near.Type == ray.Type) ray = near;
    }
  }
  if (ray.Type == DU::kUninitialised || ray.Type == DU::kWater) return;
  const double turned = std::fmod(ray.SweptAngle, kTwoPi);
  pair.Angle = turned > kPi ? kTwoPi - turned : turned;
  pair.Known = ray;
}

void PlacePmt(Pair& pair, Random& random) {
  const TVector3 x = pair.Event.Unit();
  const TVector3 y = x.Orthogonal().Unit();
  const double turn = random.Uniform(0.0, kTwoPi);
  const TVector3 aside = std::cos(turn) * y + std::sin(turn) * x.Cross(y);
  pair.Pmt = pair.PmtRadius *
             (std::cos(pair.Angle) * x + std::sin(pair.Angle) * aside);
  // Rounding must not move it into the wall.
  while (pair.Pmt.Mag() < pair.PmtRadius) pair.Pmt *= 1.0 + 4e-16;
}

std::string Replay(const DU::ConcentricMedia& media, const TVector3& eventPos,
                   const TVector3& pmtPos) {
  return Exact(media) + "; event " + Exact(eventPos) + ", PMT " + Exact(pmtPos);
}

std::string Describe(const DU::LightPathCalculator& path) {
  std::string text =
      std::string(DU::kLightPathTypeNames[path.GetLightPathType()]) +
      ", initial " + Exact(path.GetInitialDirection()) + ", final " +
      Exact(path.GetFinalDirection()) + ", optical length " +
      Exact(path.GetOpticalLength()) + ", corners";
  for (const TVector3& corner : CornersOf(path)) text += " " + Exact(corner);
  return text;
}

}  // namespace ZARN::Testing
