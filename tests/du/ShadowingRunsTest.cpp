#include "du/ShadowingCalculator.hpp"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "TError.h"
#include "db/DB.hpp"
#include "db/DBErrors.hpp"
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
using Testing::ExpectSamePoints;
using Testing::Flags;
using Testing::FlagsFor;
using Testing::FlagsOf;
using Testing::FreePath;
using Testing::InRun;
using Testing::kAllLoaded;
using Testing::kComponents;
using Testing::kNoFlag;
using Testing::kNoList;
using Testing::kNoneLoaded;
using Testing::kUnnamedType;
using Testing::ListSizesOf;
using Testing::LoadedOf;
using Testing::Only;
using Testing::SwitchOff;
using Testing::Tables;
using Testing::TolerancesOf;

const std::array<std::string, kComponents> kLoadedTexts = {
    "ShadowingCalculator: Loaded AV hold-down rope shadowing information.\n",
    "ShadowingCalculator: Loaded AV support rope shadowing information.\n",
    "ShadowingCalculator: Loaded belly plate shadowing information.\n",
    "ShadowingCalculator: Loaded NCD anchor shadowing information.\n",
    "ShadowingCalculator: Loaded AV pipe shadowing information.\n",
    "ShadowingCalculator: Loaded neck boss shadowing information.\n"};

const std::array<std::string, kComponents> kNotLoadedTexts = {
    "ShadowingCalculator: Cannot load AV hold-down rope parameters, these will "
    "not be loaded.\n",
    "ShadowingCalculator: Cannot load support rope parameters, these will not "
    "be loaded.\n",
    "ShadowingCalculator: Cannot load belly plate parameters, these will not "
    "be loaded.\n",
    "ShadowingCalculator: Cannot load NCD anchor parameters, these will not be "
    "loaded.\n",
    "ShadowingCalculator: Cannot load AV pipe parameters, these will not be "
    "loaded.\n",
    "ShadowingCalculator: Cannot neck boss parameters, these will not be "
    "loaded.\n"};

std::string Joined(const std::array<std::string, kComponents>& texts) {
  std::string all;
  for (const std::string& text : texts) all += text;
  return all;
}

// Before the first run.

TEST(ShadowingCalculator, StartsEmptyWithAllFlagsFalse) {
  const ShadowingCalculator calculator;
  EXPECT_EQ(FlagsOf(calculator), kNoFlag);
  EXPECT_EQ(LoadedOf(calculator), kNoneLoaded);
  EXPECT_EQ(ListSizesOf(calculator), kNoList);
  EXPECT_EQ(TolerancesOf(calculator), std::vector<double>(6, 150.0));
}

TEST(ShadowingCalculator, BlocksNothingBeforeItsFirstRun) {
  ShadowingCalculator calculator;
  EXPECT_FALSE(Check(calculator, BlockedPath()));
  EXPECT_EQ(FlagsOf(calculator), kNoFlag);
  EXPECT_EQ(calculator.FindShadowing(BlockedPath()),
            eShadowingComponent::kNone);
}

TEST(ShadowingCalculator, LooksUpNoNameBeforeItsFirstRun) {
  ShadowingCalculator calculator;
  LightPathCalculator path = CalculatorOf(Testing::AllAt(kUnnamedType, {}));
  const Captured captured(warn);
  EXPECT_FALSE(calculator.CheckForShadowing(path));
  EXPECT_EQ(path.LightPathTypeNames(),
            LightPathCalculator().LightPathTypeNames());
  EXPECT_EQ(captured.Text(), "");
}

// Setting up a run.

TEST(ShadowingCalculator, LogsInOrderEachComponentThatItLoads) {
  ShadowingCalculator calculator;
  EXPECT_EQ(BeginOfRun(calculator, DetectorTables()), Joined(kLoadedTexts));
  EXPECT_EQ(LoadedOf(calculator), kAllLoaded);
}

TEST(ShadowingCalculator, LogsInOrderEachComponentThatItCannotLoad) {
  ShadowingCalculator calculator;
  EXPECT_EQ(BeginOfRun(calculator, Testing::VesselTables()),
            Joined(kNotLoadedTexts));
  EXPECT_EQ(LoadedOf(calculator), kNoneLoaded);
  for (int type = 0; type < kNumberOfLightPathTypes; ++type) {
    const auto pathType = static_cast<eLightPathType>(type);
    EXPECT_FALSE(
        Check(calculator, Testing::AllAt(pathType, Testing::kBlockedSpot)));
    EXPECT_EQ(FlagsOf(calculator), kNoFlag);
  }
}

TEST(ShadowingCalculator, LooksUpNoNameWhenNothingIsLoaded) {
  ShadowingCalculator calculator = InRun(Testing::VesselTables());
  LightPathCalculator path = CalculatorOf(Testing::AllAt(kUnnamedType, {}));
  EXPECT_FALSE(calculator.CheckForShadowing(path));
  EXPECT_EQ(path.LightPathTypeNames().count(kUnnamedType), 0U);
}

TEST(ShadowingCalculator, SwitchesOffOnlyTheComponentThatItCannotLoad) {
  for (std::size_t i = 0; i < kComponents; ++i) {
    SCOPED_TRACE(NameOf(kShadowingComponents[i]));
    Tables tables = DetectorTables();
    SwitchOff(tables, kShadowingComponents[i]);
    auto texts = kLoadedTexts;
    texts[i] = kNotLoadedTexts[i];
    Flags loaded = kAllLoaded;
    loaded[i] = false;
    ShadowingCalculator calculator;
    EXPECT_EQ(BeginOfRun(calculator, tables), Joined(texts));
    EXPECT_EQ(LoadedOf(calculator), loaded);
  }
}

TEST(ShadowingCalculator, SwitchesOffAComponentWithAFieldOfAnotherType) {
  Tables tables = DetectorTables();
  tables.Set("GEO_LOCATIONS", "plates", "x", 5860.0);
  auto texts = kLoadedTexts;
  texts[2] = kNotLoadedTexts[2];
  ShadowingCalculator calculator;
  EXPECT_EQ(BeginOfRun(calculator, tables), Joined(texts));
}

TEST(ShadowingCalculator, SwitchesOffRopesAndPipesWithTooFewPoints) {
  Tables tables = DetectorTables();
  tables.SetPositions("SOLID", "down_rope", {{1, 2, 3}}, "rope_");
  tables.SetPositions("SOLID", "av_pipe-6", {});
  auto texts = kLoadedTexts;
  texts[0] = kNotLoadedTexts[0];
  texts[4] = kNotLoadedTexts[4];
  ShadowingCalculator calculator;
  EXPECT_EQ(BeginOfRun(calculator, tables), Joined(texts));
}

TEST(ShadowingCalculator,
     LogsWarningsAboutAListBeforeTheMessageOfItsComponent) {
  Tables tables = DetectorTables();
  tables.Set("GEO_LOCATIONS", "anchors", "z", std::vector<double>{1.0});
  ShadowingCalculator calculator;
  EXPECT_EQ(
      BeginOfRun(calculator, tables),
      kLoadedTexts[0] + kLoadedTexts[1] + kLoadedTexts[2] +
          "ShadowingCalculator::FillXYZPositions: Inequal number of elements "
          "across the (X,Y,Z) coordinate arrays!\n"
          "(X,Y,Z) positions not initialised for (GEO_LOCATIONS, anchors).\n" +
          kLoadedTexts[3] + kLoadedTexts[4] + kLoadedTexts[5]);
  // No anchor is left, from this run or an earlier one.
  EXPECT_TRUE(calculator.IsInfoLoaded(eShadowingComponent::kNCDAnchor));
  EXPECT_TRUE(calculator.GetNCDAnchors().NCDAnchorPositions.empty());
}

TEST(ShadowingCalculator, WritesNoDebugMessageWhileItLoads) {
  DetectorTables().Load();
  const Captured warnings(warn);
  const Captured diagnostics(debug);
  ShadowingCalculator().BeginOfRun();
  EXPECT_EQ(diagnostics.Text(), "");
}

TEST(ShadowingCalculator, ReadsTheRadiiOfTheVessel) {
  const ShadowingCalculator calculator = InRun(Testing::VesselTables());
  EXPECT_EQ(calculator.GetInnerAVRadius(), 5800.0);
  EXPECT_EQ(calculator.GetOuterAVRadius(), 5860.0);
  EXPECT_EQ(calculator.GetAVNeckRadius(), 700.0);
}

TEST(ShadowingCalculator, BuildsEveryModelWithTheRadiiOfTheVessel) {
  const ShadowingCalculator calculator = InRun(DetectorTables());
  AVHDRopeModel ropes;
  LoadAVHDRopeInfo(DB::Get(), ropes, 5860.0, 700.0);
  EXPECT_EQ(calculator.GetAVHDRopes().AVHDRopeRadius, 12.0);
  EXPECT_EQ(calculator.GetAVHDRopes().AVHDRopeRolls, ropes.AVHDRopeRolls);
  ExpectSamePoints(calculator.GetAVHDRopes().AVHDRopeSurfacePoints,
                   ropes.AVHDRopeSurfacePoints);
  ExpectSamePoints(calculator.GetAVHDRopes().AVHDRopeLegPoints,
                   ropes.AVHDRopeLegPoints);
  SupportRopeModel supports;
  LoadSupportRopeInfo(DB::Get(), supports, 5860.0);
  EXPECT_EQ(calculator.GetSupportRopes().SupportRopePositions,
            supports.SupportRopePositions);
  BellyPlateModel plates;
  LoadBellyPlateInfo(DB::Get(), plates, 150.0);
  ExpectSamePoints(calculator.GetBellyPlates().BellyPlateGridPoints,
                   plates.BellyPlateGridPoints);
  NeckBossModel boss;
  LoadNeckBossInfo(DB::Get(), boss, 5800.0);
  EXPECT_EQ(calculator.GetNeckBoss().NeckBossAngle, boss.NeckBossAngle);
  EXPECT_EQ(calculator.GetNCDAnchors().NCDAnchorHalfZ, 60.0);
  EXPECT_EQ(calculator.GetAVPipes().AVPipePoints.size(), 7U * 51U);
}

TEST(ShadowingCalculator, UsesTheOuterRadiusForThePlates) {
  // The tolerance becomes an angle on the outer vessel.
  Tables tables = Only({eShadowingComponent::kBellyPlate});
  TVector3 beside(0, 5860, 40);
  beside.RotateZ(0.15);
  const LightPath path = Testing::OneCrossing(beside);
  ShadowingCalculator calculator = InRun(tables);
  EXPECT_FALSE(Check(calculator, path));
  tables.Set("SOLID", "acrylic_vessel_outer", "r_sphere", 2930.0);
  BeginOfRun(calculator, tables);
  EXPECT_TRUE(Check(calculator, path));
}

// Several runs.

TEST(ShadowingCalculator, RebuildsItsModelsForEveryRun) {
  ShadowingCalculator calculator = InRun(DetectorTables());
  const auto sizes = ListSizesOf(calculator);
  BeginOfRun(calculator, DetectorTables());
  EXPECT_EQ(ListSizesOf(calculator), sizes);

  Tables tables = DetectorTables();
  tables.SetPositions("GEO_LOCATIONS", "anchors", {{1, 2, 3}});
  tables.Set("SOLID", "acrylic_vessel_inner", "r_sphere", 5700.0);
  BeginOfRun(calculator, tables);
  EXPECT_EQ(calculator.GetNCDAnchors().NCDAnchorPositions,
            (std::vector<TVector3>{{1, 2, 3}}));
  EXPECT_EQ(calculator.GetInnerAVRadius(), 5700.0);
}

TEST(ShadowingCalculator, DecidesForEveryRunWhichComponentsAreOn) {
  ShadowingCalculator calculator = InRun(DetectorTables());
  BeginOfRun(calculator, Testing::VesselTables());
  EXPECT_EQ(LoadedOf(calculator), kNoneLoaded);
  EXPECT_EQ(ListSizesOf(calculator), kNoList);
  EXPECT_FALSE(Check(calculator, BlockedPath()));
  BeginOfRun(calculator, DetectorTables());
  EXPECT_EQ(LoadedOf(calculator), kAllLoaded);
  EXPECT_TRUE(Check(calculator, BlockedPath()));
}

TEST(ShadowingCalculator, KeepsOnlyShadowedAtTheStartOfARun) {
  ShadowingCalculator calculator = InRun(DetectorTables());
  ASSERT_TRUE(Check(calculator, BlockedPath()));
  BeginOfRun(calculator, DetectorTables());
  Flags onlyShadowed = kNoFlag;
  onlyShadowed[6] = true;
  EXPECT_EQ(FlagsOf(calculator), onlyShadowed);
  EXPECT_FALSE(Check(calculator, FreePath()));
  EXPECT_EQ(FlagsOf(calculator), kNoFlag);
}

TEST(ShadowingCalculator, ClearsTheFlagOfEachComponentAtTheStartOfARun) {
  for (const eShadowingComponent component : kShadowingComponents) {
    SCOPED_TRACE(NameOf(component));
    ShadowingCalculator calculator = InRun(Only({component}));
    ASSERT_TRUE(Check(calculator, BlockedPath()));
    BeginOfRun(calculator, DetectorTables());
    Flags onlyShadowed = kNoFlag;
    onlyShadowed[6] = true;
    EXPECT_EQ(FlagsOf(calculator), onlyShadowed);
  }
}

// Tolerances.

TEST(ShadowingCalculator, SetsAllTolerances) {
  ShadowingCalculator calculator;
  for (const double tolerance : {50.0, 0.0, -150.0}) {
    calculator.SetAllGeometryTolerances(tolerance);
    EXPECT_EQ(TolerancesOf(calculator), std::vector<double>(6, tolerance));
  }
  EXPECT_EQ(ListSizesOf(calculator), kNoList);
}

TEST(ShadowingCalculator, UsesTolerancesSetBeforeTheRunOnlyForTheGrid) {
  ShadowingCalculator calculator;
  calculator.SetAllGeometryTolerances(50.0);
  BeginOfRun(calculator, DetectorTables());
  EXPECT_EQ(TolerancesOf(calculator), std::vector<double>(6, 150.0));
  EXPECT_EQ(calculator.GetBellyPlates().BellyPlateGridPoints.size(),
            2U * 50U * 50U);
}

TEST(ShadowingCalculator, ChangesNoModelWhenTolerancesAreSetDuringTheRun) {
  ShadowingCalculator calculator = InRun(DetectorTables());
  const auto sizes = ListSizesOf(calculator);
  EXPECT_EQ(calculator.GetBellyPlates().BellyPlateGridPoints.size(),
            2U * 22500U);
  calculator.SetAllGeometryTolerances(50.0);
  EXPECT_EQ(TolerancesOf(calculator), std::vector<double>(6, 50.0));
  EXPECT_EQ(ListSizesOf(calculator), sizes);
  // The next run builds its grid with it, and starts with 150 again.
  BeginOfRun(calculator, DetectorTables());
  EXPECT_EQ(calculator.GetBellyPlates().BellyPlateGridPoints.size(),
            2U * 50U * 50U);
  EXPECT_EQ(TolerancesOf(calculator), std::vector<double>(6, 150.0));
  BeginOfRun(calculator, DetectorTables());
  EXPECT_EQ(calculator.GetBellyPlates().BellyPlateGridPoints.size(),
            2U * 22500U);
}

TEST(ShadowingCalculator, BuildsNoGridWithoutAPositiveTolerance) {
  ShadowingCalculator calculator;
  calculator.SetAllGeometryTolerances(-1.0);
  BeginOfRun(calculator, DetectorTables());
  EXPECT_TRUE(calculator.GetBellyPlates().BellyPlateGridPoints.empty());
  EXPECT_TRUE(calculator.IsInfoLoaded(eShadowingComponent::kBellyPlate));
}

TEST(ShadowingCalculator, TestsWithTheTolerancesThatAreSet) {
  // A path that leaves the vessel a little to the side of all hardware.
  LightPath path = BlockedPath();
  path.AVPoint1.RotateZ(-0.06);
  path.FinalDirection.RotateZ(-0.06);
  const std::map<eShadowingComponent, bool> hasTolerance = {
      {eShadowingComponent::kAVHDRope, true},
      {eShadowingComponent::kSupportRope, true},
      {eShadowingComponent::kBellyPlate, true},
      {eShadowingComponent::kNCDAnchor, true},
      {eShadowingComponent::kAVPipe, false},
      {eShadowingComponent::kNeckBoss, false}};
  for (const auto& [component, has] : hasTolerance) {
    SCOPED_TRACE(NameOf(component));
    ShadowingCalculator calculator = InRun(Only({component}));
    calculator.SetAllGeometryTolerances(1000.0);
    EXPECT_TRUE(Check(calculator, path));
    calculator.SetAllGeometryTolerances(-1000.0);
    EXPECT_EQ(Check(calculator, path), !has);
  }
}

// A run that cannot be set up.

TEST(ShadowingCalculator, ThrowsBeforeAnyMessageIfARadiusIsMissing) {
  const auto expectFailure = [](const Tables& tables) {
    tables.Load();
    const Captured captured(warn);
    ShadowingCalculator calculator;
    EXPECT_THROW(calculator.BeginOfRun(), DBNotFoundError);
    EXPECT_EQ(captured.Text(), "");
    EXPECT_EQ(LoadedOf(calculator), kNoneLoaded);
  };
  expectFailure(DetectorTables().Remove("SOLID", "acrylic_vessel_outer"));
  expectFailure(DetectorTables().Remove("SOLID", "acrylic_vessel_inner"));
  expectFailure(DetectorTables().RemoveField("SOLID", "acrylic_vessel_outer",
                                             "r_sphere"));
  expectFailure(
      DetectorTables().RemoveField("SOLID", "acrylic_vessel_outer", "r_neck"));
  expectFailure(DetectorTables().Set("SOLID", "acrylic_vessel_inner",
                                     "r_sphere", "5800"));
}

TEST(ShadowingCalculator, KeepsFlagsAndTolerancesWhenARadiusIsMissing) {
  ShadowingCalculator calculator = InRun(DetectorTables());
  calculator.SetAllGeometryTolerances(160.0);
  ASSERT_TRUE(Check(calculator, BlockedPath()));
  const Flags flags = FlagsOf(calculator);
  DetectorTables()
      .RemoveField("SOLID", "acrylic_vessel_outer", "r_neck")
      .Set("SOLID", "acrylic_vessel_outer", "r_sphere", 5861.0)
      .Load();
  EXPECT_THROW(calculator.BeginOfRun(), DBNotFoundError);
  EXPECT_EQ(ListSizesOf(calculator), kNoList);
  EXPECT_EQ(FlagsOf(calculator), flags);
  EXPECT_EQ(LoadedOf(calculator), kAllLoaded);
  EXPECT_EQ(TolerancesOf(calculator), std::vector<double>(6, 160.0));
  // The radii before the missing one were read.
  EXPECT_EQ(calculator.GetOuterAVRadius(), 5861.0);
  EXPECT_EQ(calculator.GetAVNeckRadius(), 700.0);
}

TEST(ShadowingCalculator, CanBeUsedAfterABeginOfRunThatFailed) {
  ShadowingCalculator calculator = InRun(DetectorTables());
  DetectorTables().Remove("SOLID", "acrylic_vessel_outer").Load();
  EXPECT_THROW(calculator.BeginOfRun(), DBNotFoundError);
  // Components that need no list are still tested.
  EXPECT_TRUE(Check(calculator, BlockedPath()));
  EXPECT_EQ(FlagsOf(calculator), FlagsFor(eShadowingComponent::kAVPipe));
}

[[noreturn]] void ThrowRootWarning(int /*level*/, Bool_t /*abort*/,
                                   const char* /*location*/, const char* text) {
  throw std::runtime_error(text);
}

TEST(ShadowingCalculator, LetsAnyOtherExceptionOfALoaderThroughAtOnce) {
  ShadowingCalculator calculator;
  calculator.SetAllGeometryTolerances(3.0);
  BeginOfRun(calculator, Only({eShadowingComponent::kAVHDRope,
                               eShadowingComponent::kNeckBoss}));
  ASSERT_TRUE(Check(calculator, BlockedPath()));
  calculator.SetAllGeometryTolerances(4.0);

  // A plate at the centre without height makes ROOT warn, which throws here.
  Tables tables = DetectorTables();
  SwitchOff(tables, eShadowingComponent::kAVHDRope);
  SwitchOff(tables, eShadowingComponent::kNeckBoss);
  tables.Set("SOLID", "belly_plate_vintar", "octahedron_half_height", 0.0);
  tables.SetPositions("GEO_LOCATIONS", "plates", {{0, 0, 0}});
  tables.Load();
  const ErrorHandlerFunc_t previous = SetErrorHandler(ThrowRootWarning);
  const Captured captured(warn);
  EXPECT_THROW(calculator.BeginOfRun(), std::runtime_error);
  SetErrorHandler(previous);
  EXPECT_EQ(captured.Text(), kNotLoadedTexts[0] + kLoadedTexts[1]);
  // The first two were set in this run; the others keep their values.
  EXPECT_EQ(LoadedOf(calculator),
            (Flags{false, true, false, false, false, true}));
  EXPECT_EQ(FlagsOf(calculator), FlagsFor(eShadowingComponent::kAVHDRope));
  EXPECT_EQ(TolerancesOf(calculator), std::vector<double>(6, 4.0));
}

}  // namespace
}  // namespace ZARN::DU
