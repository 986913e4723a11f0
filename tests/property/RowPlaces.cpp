#include "tests/property/RowPlaces.hpp"

#include <cmath>
#include <functional>

#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::Testing {
namespace {

/// PMTs and events in the water are up to this far away, in outer radii.
constexpr double kFarthest = 1.7;

/// Uniformly distributed between two spheres.
TVector3 Between(double low, double high, Random& random) {
  const double cube = random.Uniform(low * low * low, high * high * high);
  return random.Direction() * std::cbrt(cube);
}

TVector3 OnAxis(double farthest, Random& random) {
  constexpr std::array<double, 4> kShares = {0.0, 1e-200, 1e-9, 1.0};
  TVector3 position;
  position(random.Whole(0, 2)) = random.Chance(0.5) ? 1.0 : -1.0;
  const double share =
      random.Chance(0.2) ? random.Pick(kShares) : random.Uniform(0.0, 1.0);
  return position * (farthest * share);
}

/// Light from here to the water begins to be totally reflected: index times
/// radius is that of the water at the vessel.
TVector3 AtOnset(const DU::ConcentricMedia& media, Random& random) {
  constexpr std::array kPowers = {-16.0, -12.0, -9.0, -6.0, -3.0, -1.5, -1.5};
  const DU::eMedium from =
      random.Chance(0.7) ? DU::eMedium::kInnerAV : DU::eMedium::kAcrylic;
  const double radius = media.OuterRadius * media.IndexIn(DU::eMedium::kWater) /
                        media.IndexIn(from);
  const double away = std::pow(10.0, random.Pick(kPowers));
  return random.Direction() * (radius * (1.0 + random.Uniform(-away, away)));
}

/// How far PMTs are from the centre.
std::function<double()> DrawDistances(double outerRadius, Random& random) {
  const double at = outerRadius * random.Uniform(1.001, kFarthest);
  switch (random.Below(4)) {
    case 0:
      return [=] { return at; };
    case 1:
      return [=, &random] { return at + random.Uniform(0.0, 1e-3); };
    case 2: {
      const int rings = random.Whole(2, 13);
      const double step = outerRadius * random.Uniform(1e-5, 0.05);
      return [=, &random] { return at + step * random.Whole(0, rings - 1); };
    }
    default:
      return [=, &random] {
        return random.Uniform(1.0001 * outerRadius, kFarthest * outerRadius);
      };
  }
}

void AddUnusualPMTs(std::vector<TVector3>& positions,
                    const DU::ConcentricMedia& media, const TVector3& eventPos,
                    Random& random) {
  const double outer = media.OuterRadius;
  const std::array unusual = {
      eventPos,
      -eventPos,
      TVector3(),
      TVector3(0.0, 0.0, 1e-200),
      TVector3(0.0, kNaN, outer),
      TVector3(0.0, 0.0, -kInfinity),
      TVector3(1e100, 0.0, 0.0),
      TVector3(0.0, 2e9, 0.0),
      random.Direction() * media.InnerRadius,
      random.Direction() * outer,
      random.Direction() * (outer * (1.0 + 1e-12)),
      random.Direction() * (0.5 * (media.InnerRadius + outer))};
  for (const TVector3& position : unusual) {
    if (random.Chance(0.5)) {
      positions[random.Below(positions.size())] = position;
    }
  }
}

}  // namespace

const char* NameOf(eEventPlace place) {
  switch (place) {
    case eEventPlace::kInside:
      return "inside";
    case eEventPlace::kNearWall:
      return "near the wall";
    case eEventPlace::kInWall:
      return "in the wall";
    case eEventPlace::kInWater:
      return "in the water";
    case eEventPlace::kAtSurface:
      return "at a surface";
    case eEventPlace::kOnAxis:
      return "on an axis";
    case eEventPlace::kAtOnset:
      break;
  }
  return "at the onset of total reflection";
}

TVector3 DrawEvent(eEventPlace place, const DU::ConcentricMedia& media,
                   Random& random) {
  const double inner = media.InnerRadius;
  const double outer = media.OuterRadius;
  switch (place) {
    case eEventPlace::kInside:
      return Between(0.0, inner, random);
    case eEventPlace::kNearWall:
      return Between(0.8 * inner, inner, random);
    case eEventPlace::kInWall:
      return Between(inner, outer, random);
    case eEventPlace::kInWater:
      return Between(outer, kFarthest * outer, random);
    case eEventPlace::kAtSurface: {
      const double surface = random.Chance(0.5) ? inner : outer;
      const double away = random.Chance(0.2) ? 0.0 : 1e-9;
      return random.Direction() * (surface + random.Uniform(-away, away));
    }
    case eEventPlace::kOnAxis:
      return OnAxis(kFarthest * outer, random);
    case eEventPlace::kAtOnset:
      break;
  }
  return AtOnset(media, random);
}

std::vector<TVector3> DrawPMTs(std::size_t count,
                               const DU::ConcentricMedia& media,
                               const TVector3& eventPos, Random& random) {
  const auto drawDistance = DrawDistances(media.OuterRadius, random);
  std::vector<TVector3> positions;
  while (positions.size() < count) {
    TVector3 direction = random.Direction();
    if (random.Chance(0.05) && eventPos.Mag2() > 0.0) {
      direction *= std::pow(10.0, random.Uniform(-12.0, 0.0));
      direction += random.Chance(0.5) ? eventPos.Unit() : -eventPos.Unit();
      direction = direction.Unit();
    }
    positions.push_back(direction * drawDistance());
  }
  if (random.Chance(0.2)) AddUnusualPMTs(positions, media, eventPos, random);
  return positions;
}

}  // namespace ZARN::Testing
