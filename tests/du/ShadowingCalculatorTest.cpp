#include "du/ShadowingCalculator.hpp"

#include <CLHEP/Units/SystemOfUnits.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "TError.h"
#include "db/DBErrors.hpp"
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
using Testing::DetectorTables;
using Testing::ExpectSamePoints;
using Testing::FreePath;
using Testing::InRun;
using Testing::kUnnamedType;
using Testing::Only;
using Testing::SwitchOff;
using Testing::Tables;

constexpr std::size_t kComponents = kShadowingComponents.size();

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

using Flags = std::vector<bool>;

/// The flags of the six components in the order of testing, then Shadowed.
Flags FlagsOf(const ShadowingCalculator& calculator) {
  return {calculator.IsShadowedByAVHDRope(),
          calculator.IsShadowedBySupportRope(),
          calculator.IsShadowedByBellyPlate(),
          calculator.IsShadowedByNCDAnchor(),
          calculator.IsShadowedByAVPipe(),
          calculator.IsShadowedByNeckBoss(),
          calculator.IsShadowed()};
}

const Flags kNoFlag(7, false);

/// The flags after a path was found blocked by a component.
Flags FlagsFor(eShadowingComponent component) {
  Flags flags = kNoFlag;
  for (std::size_t i = 0; i < kComponents; ++i) {
    flags[i] = kShadowingComponents[i] == component;
  }
  flags[6] = component != eShadowingComponent::kNone;
  return flags;
}

Flags LoadedOf(const ShadowingCalculator& calculator) {
  Flags loaded;
  for (const eShadowingComponent component : kShadowingComponents) {
    loaded.push_back(calculator.IsInfoLoaded(component));
  }
  return loaded;
}

const Flags kAllLoaded(kComponents, true);
const Flags kNoneLoaded(kComponents, false);

std::vector<double> TolerancesOf(const ShadowingCalculator& calculator) {
  return {
      calculator.GetAVHDRopeTolerance(),   calculator.GetSupportRopeTolerance(),
      calculator.GetBellyPlateTolerance(), calculator.GetNCDAnchorTolerance(),
      calculator.GetAVPipeTolerance(),     calculator.GetNeckBossTolerance()};
}

/// The lengths of all lists of all models.
std::vector<std::size_t> ListSizesOf(const ShadowingCalculator& calculator) {
  const AVPipeModel& pipes = calculator.GetAVPipes();
  const AVHDRopeModel& ropes = calculator.GetAVHDRopes();
  const SupportRopeModel& supports = calculator.GetSupportRopes();
  const BellyPlateModel& plates = calculator.GetBellyPlates();
  return {pipes.AVPipe1Positions.size(),
          pipes.AVPipe2Positions.size(),
          pipes.AVPipe3Positions.size(),
          pipes.AVPipe4Positions.size(),
          pipes.AVPipeLABSPositions.size(),
          pipes.AVPipe6Positions.size(),
          pipes.AVPipeLABRPositions.size(),
          pipes.AVPipePoints.size(),
          calculator.GetNCDAnchors().NCDAnchorPositions.size(),
          plates.BellyPlatePositions.size(),
          plates.BellyPlateGridPoints.size(),
          ropes.AVHDRopePositions.size(),
          ropes.AVHDRopeRolls.size(),
          ropes.AVHDRopeEndPoints.size(),
          ropes.AVHDRopeSurfacePoints.size(),
          ropes.AVHDRopeLegPoints.size(),
          supports.SupportRopePositions.size(),
          supports.SupportRopeLinePoints.size()};
}

const std::vector<std::size_t> kNoList(18, 0);

bool Check(ShadowingCalculator& calculator, const LightPath& path) {
  LightPathCalculator lightPath = CalculatorOf(path);
  const Captured captured(warn);
  return calculator.CheckForShadowing(lightPath);
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

TEST(ShadowingCalculator, AsksForNoNameBeforeItsFirstRun) {
  ShadowingCalculator calculator;
  LightPathCalculator path = CalculatorOf(Testing::AllAt(kUnnamedType, {}));
  const Captured captured(warn);
  EXPECT_FALSE(calculator.CheckForShadowing(path));
  EXPECT_EQ(path.LightPathTypeNames(),
            LightPathCalculator().LightPathTypeNames());
  EXPECT_EQ(captured.Text(), "");
}

// The set-up of a run.

TEST(ShadowingCalculator, TellsInItsOrderOfEachComponentThatItLoads) {
  ShadowingCalculator calculator;
  EXPECT_EQ(BeginOfRun(calculator, DetectorTables()), Joined(kLoadedTexts));
  EXPECT_EQ(LoadedOf(calculator), kAllLoaded);
}

TEST(ShadowingCalculator, TellsInItsOrderOfEachComponentThatItCannotLoad) {
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

TEST(ShadowingCalculator, AsksForNoNameWhenNothingIsLoaded) {
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

TEST(ShadowingCalculator, PutsWarningsOfAListBeforeItsComponentsMessage) {
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
  // No anchor is left, neither of this run nor of another.
  EXPECT_TRUE(calculator.IsInfoLoaded(eShadowingComponent::kNCDAnchor));
  EXPECT_TRUE(calculator.GetNCDAnchors().NCDAnchorPositions.empty());
}

TEST(ShadowingCalculator, WritesNothingToTheDiagnosticsWhileItLoads) {
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

// Runs one after another.

TEST(ShadowingCalculator, BuildsItsModelsAnewForEveryRun) {
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

TEST(ShadowingCalculator, DecidesAnewForEveryRunWhichComponentsAreOn) {
  ShadowingCalculator calculator = InRun(DetectorTables());
  BeginOfRun(calculator, Testing::VesselTables());
  EXPECT_EQ(LoadedOf(calculator), kNoneLoaded);
  EXPECT_EQ(ListSizesOf(calculator), kNoList);
  EXPECT_FALSE(Check(calculator, BlockedPath()));
  BeginOfRun(calculator, DetectorTables());
  EXPECT_EQ(LoadedOf(calculator), kAllLoaded);
  EXPECT_TRUE(Check(calculator, BlockedPath()));
}

TEST(ShadowingCalculator, KeepsShadowedAloneOverTheStartOfARun) {
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

TEST(ShadowingCalculator, ShapesOnlyTheGridWithTolerancesSetBeforeTheRun) {
  ShadowingCalculator calculator;
  calculator.SetAllGeometryTolerances(50.0);
  BeginOfRun(calculator, DetectorTables());
  EXPECT_EQ(TolerancesOf(calculator), std::vector<double>(6, 150.0));
  EXPECT_EQ(calculator.GetBellyPlates().BellyPlateGridPoints.size(),
            2U * 50U * 50U);
}

TEST(ShadowingCalculator, ChangesNoModelWithTolerancesSetInTheRun) {
  ShadowingCalculator calculator = InRun(DetectorTables());
  const auto sizes = ListSizesOf(calculator);
  EXPECT_EQ(calculator.GetBellyPlates().BellyPlateGridPoints.size(),
            2U * 22500U);
  calculator.SetAllGeometryTolerances(50.0);
  EXPECT_EQ(TolerancesOf(calculator), std::vector<double>(6, 50.0));
  EXPECT_EQ(ListSizesOf(calculator), sizes);
  // The next run lays its grid with it, and starts with 150 again.
  BeginOfRun(calculator, DetectorTables());
  EXPECT_EQ(calculator.GetBellyPlates().BellyPlateGridPoints.size(),
            2U * 50U * 50U);
  EXPECT_EQ(TolerancesOf(calculator), std::vector<double>(6, 150.0));
  BeginOfRun(calculator, DetectorTables());
  EXPECT_EQ(calculator.GetBellyPlates().BellyPlateGridPoints.size(),
            2U * 22500U);
}

TEST(ShadowingCalculator, LaysNoGridWithoutAPositiveTolerance) {
  ShadowingCalculator calculator;
  calculator.SetAllGeometryTolerances(-1.0);
  BeginOfRun(calculator, DetectorTables());
  EXPECT_TRUE(calculator.GetBellyPlates().BellyPlateGridPoints.empty());
  EXPECT_TRUE(calculator.IsInfoLoaded(eShadowingComponent::kBellyPlate));
}

TEST(ShadowingCalculator, TestsWithTheTolerancesThatAreSet) {
  // A path that leaves the vessel a little beside all hardware.
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

TEST(ShadowingCalculator, LeavesTheRunBeforeAnyMessageWithoutARadius) {
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

TEST(ShadowingCalculator, CanBeAskedAfterARunThatCouldNotBeSetUp) {
  ShadowingCalculator calculator = InRun(DetectorTables());
  DetectorTables().Remove("SOLID", "acrylic_vessel_outer").Load();
  EXPECT_THROW(calculator.BeginOfRun(), DBNotFoundError);
  // What needs no list is still tested.
  EXPECT_TRUE(Check(calculator, BlockedPath()));
  EXPECT_EQ(FlagsOf(calculator), FlagsFor(eShadowingComponent::kAVPipe));
}

[[noreturn]] void ThrowRootWarning(int /*level*/, Bool_t /*abort*/,
                                   const char* /*location*/, const char* text) {
  throw std::runtime_error(text);
}

TEST(ShadowingCalculator, LetsAnyOtherExceptionOfALoaderPassAtOnce) {
  ShadowingCalculator calculator;
  calculator.SetAllGeometryTolerances(3.0);
  BeginOfRun(calculator, Only({eShadowingComponent::kAVHDRope,
                               eShadowingComponent::kNeckBoss}));
  ASSERT_TRUE(Check(calculator, BlockedPath()));
  calculator.SetAllGeometryTolerances(4.0);

  // A plate without place and height lets ROOT warn, which throws here.
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
  // The first two were decided anew; the others keep what they had.
  EXPECT_EQ(LoadedOf(calculator),
            (Flags{false, true, false, false, false, true}));
  EXPECT_EQ(FlagsOf(calculator), FlagsFor(eShadowingComponent::kAVHDRope));
  EXPECT_EQ(TolerancesOf(calculator), std::vector<double>(6, 4.0));
}

// Testing a path.

TEST(ShadowingCalculator, FindsNothingInTheWayOfAFreePath) {
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

TEST(ShadowingCalculator, ReportsOnlyTheFirstOfAllThatBlockThePath) {
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
      // The grid plays no part, and takes long.
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

TEST(ShadowingCalculator, GoesByTheNameOfAPathAndNotByItsType) {
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

TEST(ShadowingCalculator, ReportsAPathOfUnnamedTypeUnderTheBossWithoutAWord) {
  ShadowingCalculator calculator =
      InRun(Only({eShadowingComponent::kNeckBoss}));
  LightPathCalculator path =
      CalculatorOf(Testing::AllAt(kUnnamedType, Testing::kFreeSpot));
  const Captured captured(warn);
  EXPECT_TRUE(calculator.CheckForShadowing(path));
  EXPECT_EQ(captured.Text(), "");
}

TEST(ShadowingCalculator, SaysNothingOfAPathInWater) {
  ShadowingCalculator calculator = InRun(DetectorTables());
  const Captured captured(warn);
  LightPathCalculator path =
      CalculatorOf(Testing::AllAt(kWater, Testing::kBlockedSpot));
  EXPECT_FALSE(calculator.CheckForShadowing(path));
  EXPECT_EQ(captured.Text(), "");
}

TEST(ShadowingCalculator, HandsTheHoldDownRopesToTheSupportRopesTest) {
  // A path in water outside of both is left to the hold-down ropes by the test
  // of the support ropes. Their own test has another tolerance: the angle of
  // the thinner rope.
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

// Guards: tests that would read what is not there do not run.

TEST(ShadowingCalculator, PassesOverHoldDownRopesWithoutAnEnd) {
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

TEST(ShadowingCalculator, PassesOverSupportRopesWithoutARope) {
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

TEST(ShadowingCalculator, TestsTheOthersBesideAComponentThatItPassesOver) {
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

TEST(ShadowingCalculator, TestsComponentsWhoseListsAreMerelyEmpty) {
  // Their tests walk the lists and find nothing; so they ask for the name.
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

// FindShadowing, and several of everything.

/// Paths of all types that pass near the detector's hardware.
std::vector<LightPath> ManyPaths(std::size_t count) {
  // The same paths in every run of the test.
  std::mt19937_64 engine(20240229);  // NOLINT(cert-msc32-c,cert-msc51-cpp)
  const auto uniform = [&](double low, double high) {
    return low +
           (high - low) * std::ldexp(static_cast<double>(engine() >> 11U), -53);
  };
  const auto direction = [&] {
    TVector3 v;
    const double theta = std::acos(uniform(-1, 1));
    v.SetMagThetaPhi(1.0, theta, uniform(-4, 4));
    return v;
  };
  std::vector<LightPath> paths(count);
  int type = 0;
  for (LightPath& path : paths) {
    path.LightPathType = static_cast<eLightPathType>(type);
    type = (type + 1) % (kNumberOfLightPathTypes + 1);
    path.InitialDirection = direction();
    path.FinalDirection = direction();
    path.StartPos = uniform(3000, 8500) * direction();
    path.EndPos = uniform(3000, 8500) * direction();
    path.AVPoint1 = 5860.0 * direction();
    path.AVPoint2 = 5860.0 * direction();
    path.AVPoint3 = 5860.0 * direction();
    path.AVPoint4 = 5860.0 * direction();
  }
  return paths;
}

/// A detector with a boss small enough to leave something to the others.
ShadowingCalculator DetectorForManyPaths() {
  Tables tables = DetectorTables();
  tables.Set("GEO", "av", "neck_boss_z", 5500.0);
  return InRun(tables);
}

TEST(FindShadowing, AgreesWithCheckForShadowing) {
  ShadowingCalculator calculator = DetectorForManyPaths();
  std::map<eShadowingComponent, int> tally;
  for (const LightPath& path : ManyPaths(2000)) {
    const eShadowingComponent found = calculator.FindShadowing(path);
    const bool isShadowed = Check(calculator, path);
    EXPECT_EQ(FlagsOf(calculator), FlagsFor(found));
    EXPECT_EQ(isShadowed, found != eShadowingComponent::kNone);
    ++tally[found];
  }
  EXPECT_EQ(tally.size(), kComponents + 1);  // every verdict came up
}

TEST(FindShadowing, WritesNoMessageAndLeavesTheFlags) {
  ShadowingCalculator calculator = InRun(DetectorTables());
  ASSERT_TRUE(Check(calculator, BlockedPath()));
  const Flags flags = FlagsOf(calculator);
  const Captured captured(warn);
  EXPECT_EQ(calculator.FindShadowing(LightPath()), eShadowingComponent::kNone);
  EXPECT_EQ(calculator.FindShadowing(Testing::AllAt(kUnnamedType, {})),
            eShadowingComponent::kNeckBoss);
  EXPECT_EQ(calculator.FindShadowing(FreePath()), eShadowingComponent::kNone);
  EXPECT_EQ(captured.Text(), "");
  EXPECT_EQ(FlagsOf(calculator), flags);
}

TEST(FindShadowing, GivesSeveralThreadsTheSameVerdicts) {
  const ShadowingCalculator calculator = DetectorForManyPaths();
  const std::vector<LightPath> paths = ManyPaths(1000);
  const auto findAll = [&](std::vector<eShadowingComponent>& verdicts) {
    for (const LightPath& path : paths) {
      verdicts.push_back(calculator.FindShadowing(path));
    }
  };
  std::vector<eShadowingComponent> expected;
  findAll(expected);
  std::vector<std::vector<eShadowingComponent>> verdicts(4);
  std::vector<std::thread> threads;
  threads.reserve(verdicts.size());
  for (auto& own : verdicts) threads.emplace_back(findAll, std::ref(own));
  for (std::thread& thread : threads) thread.join();
  for (const auto& own : verdicts) EXPECT_EQ(own, expected);
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

TEST(ShadowingCalculator, CallsEveryComponentByItsName) {
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

TEST(ShadowingCalculator, NeedsNoConversionFromTheFieldsUnits) {
  EXPECT_EQ(CLHEP::mm, 1.0);
  EXPECT_EQ(CLHEP::radian, 1.0);
}

}  // namespace
}  // namespace ZARN::DU
