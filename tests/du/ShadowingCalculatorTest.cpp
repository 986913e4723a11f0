#include "du/ShadowingCalculator.hpp"

#include <CLHEP/Units/SystemOfUnits.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "tests/du/CalculatorState.hpp"
#include "tests/du/Detector.hpp"
#include "tests/du/Paths.hpp"
#include "tests/support/Captured.hpp"
#include "tests/support/Tables.hpp"

namespace ZARN::DU {
namespace {

using Testing::BeginOfRun;
using Testing::BlockedPath;
using Testing::CalculatorOf;
using Testing::Captured;
using Testing::Check;
using Testing::DetectorTables;
using Testing::FlagsFor;
using Testing::FlagsOf;
using Testing::FreePath;
using Testing::InRun;
using Testing::kComponents;
using Testing::kNoFlag;
using Testing::kUnnamedType;
using Testing::Only;
using Testing::SwitchOff;
using Testing::Tables;
using Testing::TolerancesOf;

// Testing a path.

TEST(ShadowingCalculator, ReportsAFreePathAsClear) {
  ShadowingCalculator calculator = InRun(DetectorTables());
  EXPECT_FALSE(Check(calculator, FreePath()));
  EXPECT_EQ(FlagsOf(calculator), kNoFlag);
  EXPECT_EQ(calculator.FindShadowing(FreePath()), eShadowingComponent::kNone);
}

TEST(ShadowingCalculator, SetsTheFlagOfTheComponentThatBlocksThePath) {
  for (const eShadowingComponent component : kShadowingComponents) {
    SCOPED_TRACE(NameOf(component));
    ShadowingCalculator calculator = InRun(Only({component}));
    EXPECT_TRUE(Check(calculator, BlockedPath()));
    EXPECT_EQ(FlagsOf(calculator), FlagsFor(component));
    EXPECT_EQ(calculator.FindShadowing(BlockedPath()), component);
  }
}

TEST(ShadowingCalculator, ReportsOnlyTheFirstComponentThatBlocksThePath) {
  Tables tables = DetectorTables();
  for (const eShadowingComponent component : kShadowingComponents) {
    SCOPED_TRACE(NameOf(component));
    ShadowingCalculator calculator = InRun(tables);
    EXPECT_TRUE(Check(calculator, BlockedPath()));
    EXPECT_EQ(FlagsOf(calculator), FlagsFor(component));
    SwitchOff(tables, component);
  }
  ShadowingCalculator calculator = InRun(tables);
  EXPECT_FALSE(Check(calculator, BlockedPath()));
}

TEST(ShadowingCalculator, ReportsAHoldDownRopeBeforeABellyPlate) {
  ShadowingCalculator calculator = InRun(
      Only({eShadowingComponent::kAVHDRope, eShadowingComponent::kBellyPlate}));
  EXPECT_TRUE(Check(calculator, BlockedPath()));
  EXPECT_EQ(FlagsOf(calculator), FlagsFor(eShadowingComponent::kAVHDRope));
}

TEST(ShadowingCalculator, ReportsASupportRopeBeforeABellyPlate) {
  ShadowingCalculator calculator = InRun(Only(
      {eShadowingComponent::kSupportRope, eShadowingComponent::kBellyPlate}));
  EXPECT_TRUE(Check(calculator, BlockedPath()));
  EXPECT_EQ(FlagsOf(calculator), FlagsFor(eShadowingComponent::kSupportRope));
}

TEST(ShadowingCalculator, ReportsTheFirstOfEveryTwoComponents) {
  for (std::size_t first = 0; first < kComponents; ++first) {
    for (std::size_t second = first + 1; second < kComponents; ++second) {
      Tables tables =
          Only({kShadowingComponents[first], kShadowingComponents[second]});
      // The grid does not matter here, and takes long.
      ShadowingCalculator calculator;
      calculator.SetAllGeometryTolerances(1.0);
      BeginOfRun(calculator, tables);
      EXPECT_TRUE(Check(calculator, BlockedPath()));
      EXPECT_EQ(FlagsOf(calculator), FlagsFor(kShadowingComponents[first]));
    }
  }
}

TEST(ShadowingCalculator, ClearsTheFlagsOfThePathBefore) {
  for (const eShadowingComponent component : kShadowingComponents) {
    SCOPED_TRACE(NameOf(component));
    ShadowingCalculator calculator = InRun(Only({component}));
    ASSERT_TRUE(Check(calculator, BlockedPath()));
    EXPECT_FALSE(Check(calculator, FreePath()));
    EXPECT_EQ(FlagsOf(calculator), kNoFlag);
  }
}

TEST(ShadowingCalculator, ClearsTheFlagsAlsoWhenNothingIsLoaded) {
  ShadowingCalculator calculator = InRun(DetectorTables());
  ASSERT_TRUE(Check(calculator, BlockedPath()));
  BeginOfRun(calculator, Testing::VesselTables());
  ASSERT_TRUE(calculator.IsShadowed());
  EXPECT_FALSE(Check(calculator, BlockedPath()));
  EXPECT_EQ(FlagsOf(calculator), kNoFlag);
}

TEST(ShadowingCalculator, UsesTheNameOfAPathAndNotItsType) {
  ShadowingCalculator calculator = InRun(DetectorTables());
  LightPathCalculator path = CalculatorOf(BlockedPath());
  path.LightPathTypeNames()[kAVToWater] = "Water";
  EXPECT_FALSE(calculator.CheckForShadowing(path));
  path.LightPathTypeNames()[kAVToWater] = "Water->AV->Water";
  EXPECT_TRUE(calculator.CheckForShadowing(path));
}

TEST(ShadowingCalculator, AddsOneEmptyNameForATypeThatHasNone) {
  ShadowingCalculator calculator = InRun(DetectorTables());
  const Captured captured(warn);
  LightPathCalculator path = CalculatorOf(Testing::AllAt(kUnnamedType, {}));
  LightPathCalculator::TypeNames expected = path.LightPathTypeNames();
  expected[kUnnamedType] = "";
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(calculator.CheckForShadowing(path));
    EXPECT_EQ(FlagsOf(calculator), FlagsFor(eShadowingComponent::kNeckBoss));
    EXPECT_EQ(path.LightPathTypeNames(), expected);
  }
}

TEST(ShadowingCalculator,
     ReportsAPathOfUnnamedTypeUnderTheBossWithoutAMessage) {
  ShadowingCalculator calculator =
      InRun(Only({eShadowingComponent::kNeckBoss}));
  LightPathCalculator path =
      CalculatorOf(Testing::AllAt(kUnnamedType, Testing::kFreeSpot));
  const Captured captured(warn);
  EXPECT_TRUE(calculator.CheckForShadowing(path));
  EXPECT_EQ(captured.Text(), "");
}

TEST(ShadowingCalculator, WritesNoMessageAboutAPathInWater) {
  ShadowingCalculator calculator = InRun(DetectorTables());
  const Captured captured(warn);
  LightPathCalculator path =
      CalculatorOf(Testing::AllAt(kWater, Testing::kBlockedSpot));
  EXPECT_FALSE(calculator.CheckForShadowing(path));
  EXPECT_EQ(captured.Text(), "");
}

TEST(ShadowingCalculator, PassesTheHoldDownRopesToTheSupportRopesTest) {
  // A path in water outside of both cylinders is tested against the hold-down
  // ropes by the test of the support ropes. Their own test has another
  // tolerance: the angle of the thinner rope.
  Tables tables = DetectorTables();
  tables.Set("SOLID", "up_rope", "r_rope", 1000.0);
  ShadowingCalculator calculator = InRun(tables);
  const TVector3 inward = TVector3(0.185, 1, 0).Unit();
  const LightPath path =
      Testing::InWater({-700, -8000, 0}, {-700, -7000, 0}, inward);
  EXPECT_TRUE(Check(calculator, path));
  EXPECT_EQ(FlagsOf(calculator), FlagsFor(eShadowingComponent::kSupportRope));
  SwitchOff(tables, eShadowingComponent::kAVHDRope);
  BeginOfRun(calculator, tables);
  EXPECT_FALSE(Check(calculator, path));
}

// Guards: tests that would index missing items do not run.

TEST(ShadowingCalculator, SkipsHoldDownRopesWithoutAnEnd) {
  Tables tables = Only({eShadowingComponent::kAVHDRope});
  tables.Set("GEO_LOCATIONS", "rolls", "roll", std::vector<double>());
  ShadowingCalculator calculator = InRun(tables);
  EXPECT_TRUE(calculator.IsInfoLoaded(eShadowingComponent::kAVHDRope));
  const Captured captured(warn);
  LightPathCalculator path = CalculatorOf(Testing::AllAt(kUnnamedType, {}));
  EXPECT_FALSE(calculator.CheckForShadowing(path));
  EXPECT_EQ(path.LightPathTypeNames().count(kUnnamedType), 0U);
  LightPathCalculator uninitialised;
  EXPECT_FALSE(calculator.CheckForShadowing(uninitialised));
  EXPECT_FALSE(Check(calculator, BlockedPath()));
  EXPECT_EQ(captured.Text(), "");
}

TEST(ShadowingCalculator, SkipsSupportRopesWithoutARope) {
  Tables tables = Only({eShadowingComponent::kSupportRope});
  tables.SetPositions("GEO_LOCATIONS", "rope_anchors", {});
  ShadowingCalculator calculator = InRun(tables);
  EXPECT_TRUE(calculator.IsInfoLoaded(eShadowingComponent::kSupportRope));
  const Captured captured(warn);
  LightPathCalculator path = CalculatorOf(Testing::AllAt(kUnnamedType, {}));
  EXPECT_FALSE(calculator.CheckForShadowing(path));
  EXPECT_EQ(path.LightPathTypeNames().count(kUnnamedType), 0U);
  LightPathCalculator uninitialised;
  EXPECT_FALSE(calculator.CheckForShadowing(uninitialised));
  EXPECT_FALSE(Check(calculator, BlockedPath()));
  EXPECT_EQ(captured.Text(), "");
}

TEST(ShadowingCalculator, TestsTheOtherComponentsIfItSkipsOne) {
  Tables tables =
      Only({eShadowingComponent::kSupportRope, eShadowingComponent::kAVPipe});
  tables.SetPositions("GEO_LOCATIONS", "rope_anchors", {});
  ShadowingCalculator calculator = InRun(tables);
  EXPECT_TRUE(Check(calculator, BlockedPath()));
  EXPECT_EQ(FlagsOf(calculator), FlagsFor(eShadowingComponent::kAVPipe));
  LightPathCalculator path = CalculatorOf(Testing::AllAt(kUnnamedType, {}));
  EXPECT_FALSE(calculator.CheckForShadowing(path));
  EXPECT_EQ(path.LightPathTypeNames().count(kUnnamedType), 1U);
}

TEST(ShadowingCalculator, TestsComponentsWhoseListsAreEmpty) {
  // Their tests loop over the lists and find nothing, so they look up the name.
  for (const auto& [component, locations] :
       std::map<eShadowingComponent, std::string>{
           {eShadowingComponent::kBellyPlate, "plates"},
           {eShadowingComponent::kNCDAnchor, "anchors"}}) {
    SCOPED_TRACE(locations);
    Tables tables = Only({component});
    tables.SetPositions("GEO_LOCATIONS", locations, {});
    ShadowingCalculator calculator = InRun(tables);
    EXPECT_TRUE(calculator.IsInfoLoaded(component));
    EXPECT_FALSE(Check(calculator, BlockedPath()));
    const Captured captured(warn);
    LightPathCalculator path = CalculatorOf(Testing::AllAt(kUnnamedType, {}));
    EXPECT_FALSE(calculator.CheckForShadowing(path));
    EXPECT_EQ(path.LightPathTypeNames().count(kUnnamedType), 1U);
  }
}

TEST(ShadowingCalculator, CopiesAreIndependent) {
  ShadowingCalculator first = InRun(DetectorTables());
  ASSERT_TRUE(Check(first, BlockedPath()));
  ShadowingCalculator second = first;
  EXPECT_EQ(FlagsOf(second), FlagsOf(first));
  second.SetAllGeometryTolerances(1.0);
  BeginOfRun(second, Testing::VesselTables());
  EXPECT_FALSE(Check(second, BlockedPath()));
  EXPECT_TRUE(first.IsShadowed());
  EXPECT_EQ(TolerancesOf(first), std::vector<double>(6, 150.0));
  EXPECT_EQ(first.FindShadowing(BlockedPath()), eShadowingComponent::kAVHDRope);
}

TEST(ShadowingCalculator, NamesEveryComponent) {
  std::vector<std::string> names;
  names.reserve(kComponents);
  for (const eShadowingComponent component : kShadowingComponents) {
    names.emplace_back(NameOf(component));
  }
  EXPECT_EQ(names,
            (std::vector<std::string>{"AVHDRope", "SupportRope", "BellyPlate",
                                      "NCDAnchor", "AVPipe", "NeckBoss"}));
  EXPECT_STREQ(NameOf(eShadowingComponent::kNone), "");
  EXPECT_FALSE(
      InRun(DetectorTables()).IsInfoLoaded(eShadowingComponent::kNone));
}

TEST(ShadowingCalculator, NeedsNoUnitConversion) {
  EXPECT_EQ(CLHEP::mm, 1.0);
  EXPECT_EQ(CLHEP::radian, 1.0);
}

}  // namespace
}  // namespace ZARN::DU
