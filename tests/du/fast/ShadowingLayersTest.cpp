#include "du/fast/ShadowingLayers.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "du/ShadowingCalculator.hpp"
#include "tests/du/Detector.hpp"
#include "tests/du/Formulas.hpp"
#include "tests/du/PathsAtHardware.hpp"

namespace ZARN::DU {
namespace {

using Testing::BeginOfRun;
using Testing::PathsAtHardware;
using Verdicts = std::vector<eShadowingComponent>;

Verdicts FindEach(const ShadowingCalculator& calculator,
                  const std::vector<LightPath>& paths) {
  Verdicts verdicts;
  for (const LightPath& path : paths) {
    verdicts.push_back(calculator.FindShadowing(path));
  }
  return verdicts;
}
Verdicts FindAll(const ShadowingCalculator& calculator,
                 const std::vector<LightPath>& paths) {
  Verdicts verdicts(paths.size());
  calculator.FindShadowing(paths.data(), paths.size(), verdicts.data());
  return verdicts;
}

/// Expect the verdicts of the formulas from single calls and from one batch of
/// all paths.
void ExpectVerdictsOfTheFormulas(const ShadowingCalculator& calculator,
                                 const std::vector<LightPath>& paths) {
  Verdicts expected;
  for (const LightPath& path : paths) {
    expected.push_back(Testing::FindByFormulas(calculator, path));
  }
  EXPECT_EQ(FindEach(calculator, paths), expected);
  EXPECT_EQ(FindAll(calculator, paths), expected);
}

TEST(ShadowingLayers, ChangeNoVerdict) {
  ShadowingCalculator calculator = Testing::InRun(Testing::VariedTables());
  const auto paths = PathsAtHardware(calculator, 70).Make(300);
  for (int off = 0; off < 8; ++off) {
    SCOPED_TRACE(off);
    calculator.UseLayers({(off & 1) == 0, (off & 2) == 0, (off & 4) == 0});
    ExpectVerdictsOfTheFormulas(calculator, paths);
  }
}

TEST(ShadowingLayers, ChangeNoVerdictInLaterRunsOrForOtherTolerances) {
  ShadowingCalculator calculator;
  calculator.UseLayers({true, false, false});
  BeginOfRun(calculator, Testing::VariedTables());
  const auto paths = PathsAtHardware(calculator, 71).Make(700);
  ExpectVerdictsOfTheFormulas(calculator, paths);
  for (const double tolerance : {400.0, 0.0, -100.0}) {
    calculator.SetAllGeometryTolerances(tolerance);
    ExpectVerdictsOfTheFormulas(calculator, paths);
  }
  BeginOfRun(calculator, Testing::Only({eShadowingComponent::kNCDAnchor}));
  ExpectVerdictsOfTheFormulas(calculator, paths);
}

TEST(ShadowingLayers, AreAllOnByDefault) {
  const ShadowingLayers layers;
  EXPECT_TRUE(layers.algebra && layers.tables && layers.map);
}

}  // namespace
}  // namespace ZARN::DU
