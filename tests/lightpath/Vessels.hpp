#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include "TVector3.h"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "tests/property/Random.hpp"
#include "tests/reference/PlainConstants.hpp"
#include "tests/support/Tables.hpp"

/// Vessels for the tests of light paths.
namespace ZARN::Testing {

using Reference::kPi;
using Reference::kTwoPi;

struct Vessel {
  std::string Name;
  DU::ConcentricMedia Media;
};

/// Realistic liquid, acrylic and water; three different indices in every order;
/// some or all indices equal; large ratios of indices; thin and thick walls;
/// light from the water that reaches only the wall.
inline std::vector<Vessel> Vessels() {
  return {{"Real", {5800, 5860, {1.5, 1.49, 1.33}}},
          {"InnerWallWater", {4500, 5860, {1.2, 1.4, 1.6}}},
          {"InnerWaterWall", {4500, 5860, {1.2, 1.6, 1.4}}},
          {"WallInnerWater", {4500, 5860, {1.4, 1.2, 1.6}}},
          {"WaterInnerWall", {4500, 5860, {1.4, 1.6, 1.2}}},
          {"WallWaterInner", {4500, 5860, {1.6, 1.2, 1.4}}},
          {"WaterWallInner", {4500, 5860, {1.6, 1.4, 1.2}}},
          {"AllEqual", {5800, 5860, {1.33, 1.33, 1.33}}},
          {"AllEqualThickWall", {3000, 5860, {1.5, 1.5, 1.5}}},
          {"WallLikeWater", {5000, 5860, {1.5, 1.33, 1.33}}},
          {"WallLikeInner", {5000, 5860, {1.5, 1.5, 1.33}}},
          {"InnerLikeWater", {5500, 5860, {1.33, 1.49, 1.33}}},
          {"Strong", {3400, 5860, {3.0, 1.75, 1.0}}},
          {"StrongWall", {3400, 5860, {1.0, 3.0, 2.0}}},
          {"StrongBubble", {5000, 5860, {1.0, 1.5, 3.0}}},
          {"ThinWall", {5859.9, 5860, {1.5, 1.49, 1.33}}},
          {"TinyCore", {50, 5860, {1.5, 1.49, 1.33}}},
          {"Small", {0.58, 0.6, {1.5, 1.49, 1.33}}},
          {"WallAlone", {4000, 5860, {1.6, 1.2, 1.5}}}};
}

/// Random radii and indices.
inline DU::ConcentricMedia RandomMedia(Random& random) {
  const double outer = std::pow(10.0, random.Uniform(2.0, 4.5));
  const double inner =
      random.Chance(0.5) ? outer * random.Uniform(0.05, 0.99)
                         : outer * (1.0 - std::pow(10, random.Uniform(-4, -1)));
  const double largest = random.Chance(0.5) ? 1.6 : 3.0;
  DU::PerMedium indices{};
  for (double& index : indices) index = random.Uniform(1.0, largest);
  if (random.Chance(0.1)) indices[1] = indices[2];
  if (random.Chance(0.1)) indices[0] = indices[1];
  return {inner, outer, indices};
}

/// Set the refractive indices in tables.
inline void SetIndices(Tables& tables, const DU::ConcentricMedia& media) {
  const std::array indices = {"inner_av", "acrylic", "water"};
  for (std::size_t i = 0; i < indices.size(); ++i) {
    tables.Set("OPTICS", indices[i], "refractive_index",
               media.RefractiveIndex[i]);
  }
}

inline Tables TablesOf(const DU::ConcentricMedia& media) {
  Tables tables = VesselTables();
  tables.Set("SOLID", "acrylic_vessel_inner", "r_sphere", media.InnerRadius);
  tables.Set("SOLID", "acrylic_vessel_outer", "r_sphere", media.OuterRadius);
  SetIndices(tables, media);
  return tables;
}

/// A calculator after BeginOfRun with these media.
inline DU::LightPathCalculator CalculatorFor(const DU::ConcentricMedia& media) {
  TablesOf(media).Load();
  DU::LightPathCalculator calculator;
  calculator.BeginOfRun();
  return calculator;
}

/// Total number of random pairs of an event and a PMT in the property tests,
/// unless ZARN_LIGHT_PATH_PAIRS is set. Programs with sanitizers are several
/// times slower and use fewer.
inline int PairsInAll() {
  constexpr long kUsual = 1000000;
  const char* text = std::getenv("ZARN_LIGHT_PATH_PAIRS");
  const long given = text != nullptr ? std::strtol(text, nullptr, 10) : 0;
  return static_cast<int>(given > 0 && given <= 100000000 ? given : kUsual);
}

/// A number with all digits, so that a failure can be replayed.
inline std::string Exact(double value) {
  std::ostringstream text;
  text << std::setprecision(17) << value;
  return text.str();
}

inline std::string Exact(const TVector3& v) {
  return "(" + Exact(v.X()) + ", " + Exact(v.Y()) + ", " + Exact(v.Z()) + ")";
}

inline std::string Exact(const DU::ConcentricMedia& media) {
  return "radii " + Exact(media.InnerRadius) + ", " + Exact(media.OuterRadius) +
         "; indices " + Exact(media.RefractiveIndex[0]) + ", " +
         Exact(media.RefractiveIndex[1]) + ", " +
         Exact(media.RefractiveIndex[2]);
}

}  // namespace ZARN::Testing
