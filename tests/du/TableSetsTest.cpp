#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "db/DB.hpp"
#include "du/ShadowingCalculator.hpp"
#include "tests/du/Detector.hpp"
#include "tests/support/Captured.hpp"
#include "tests/support/Tables.hpp"
#include "tests/support/TextOf.hpp"

namespace ZARN::DU {
namespace {

using Testing::BlockedPath;
using Testing::Captured;
using Testing::DetectorTables;
using Testing::InRun;
using Testing::OneCrossing;
using Testing::Only;
using Testing::Tables;
using Testing::TextOf;
using Testing::VesselTables;

ShadowingCalculator InRunWith(const TableSet& tables) {
  const Captured captured(warn);
  ShadowingCalculator calculator;
  calculator.BeginOfRun(tables);
  return calculator;
}

/// The detector with fewer components, and its plates lower on the vessel.
Tables OtherDetector() {
  Tables tables =
      Only({eShadowingComponent::kBellyPlate, eShadowingComponent::kNCDAnchor});
  tables.SetPositions("GEO_LOCATIONS", "plates", {{0, 4100, -4100}});
  return tables;
}

/// Verdicts on paths that leave the vessel in all directions.
std::vector<eShadowingComponent> VerdictsOf(
    const ShadowingCalculator& calculator) {
  std::mt19937_64 random(20240611);
  std::normal_distribution<double> normal;
  std::vector<eShadowingComponent> verdicts;
  for (int i = 0; i < 5000; ++i) {
    const double x = normal(random);
    const double y = normal(random);
    const double z = normal(random);
    const TVector3 out = TVector3(x, y, z).Unit();
    verdicts.push_back(calculator.FindShadowing(OneCrossing(5860 * out, out)));
  }
  return verdicts;
}

TEST(TableSets, GiveEachOfTwoCalculatorsItsOwnVerdicts) {
  const auto expected = VerdictsOf(InRun(DetectorTables()));
  const auto expectedOther = VerdictsOf(InRun(OtherDetector()));
  ASSERT_NE(expected, expectedOther);
  VesselTables().Load();
  const ShadowingCalculator calculator = InRunWith(DetectorTables().AsSet());
  const ShadowingCalculator other = InRunWith(OtherDetector().AsSet());
  EXPECT_EQ(VerdictsOf(calculator), expected);
  EXPECT_EQ(VerdictsOf(other), expectedOther);
  EXPECT_EQ(VerdictsOf(calculator), expected);
}

TEST(TableSets, DoNotChangeTheDatabaseOfTheProcess) {
  VesselTables().Load();
  DB::Get().SetRun(5);
  ShadowingCalculator calculator = InRunWith(DetectorTables().AsSet());
  EXPECT_TRUE(calculator.IsInfoLoaded(eShadowingComponent::kAVHDRope));
  EXPECT_EQ(DB::Get().GetRun(), 5);
  EXPECT_THROW(DB::Get().GetLink("GEO", "hold_down_ropes", -1),
               DBNotFoundError);
  const Captured captured(warn);
  calculator.BeginOfRun();
  EXPECT_FALSE(calculator.IsInfoLoaded(eShadowingComponent::kAVHDRope));
}

TEST(TableSets, AreNotCompletedFromTheDatabaseOfTheProcess) {
  DetectorTables().Load();
  const ShadowingCalculator calculator =
      InRunWith(Only({eShadowingComponent::kNeckBoss}).AsSet());
  for (const eShadowingComponent component : kShadowingComponents) {
    EXPECT_EQ(calculator.IsInfoLoaded(component),
              component == eShadowingComponent::kNeckBoss);
  }
  EXPECT_EQ(calculator.FindShadowing(BlockedPath()),
            eShadowingComponent::kNeckBoss);
}

TEST(TableSets, AreReadForTheirOwnRun) {
  DetectorTables().Load();
  TableSet tables = DetectorTables().AsSet();
  tables.Add(
      {{"SOLID", "anchor", {10, 20}, 1, {{"r_max", 41.0}}},
       {"SOLID", "anchor", {10, 20}, 2, {{"r_max", 42.0}, {"half_z", 61.0}}}});
  tables.SetRun(15);
  EXPECT_EQ(InRunWith(tables).GetNCDAnchors().NCDAnchorRadius, 42.0);
  tables.SetRun(21);
  EXPECT_EQ(InRunWith(tables).GetNCDAnchors().NCDAnchorRadius, 40.0);
}

TEST(TableSets, NameTheirOwnRunWhenARadiusIsMissing) {
  DetectorTables().Load();
  TableSet tables;
  tables.SetRun(3);
  EXPECT_EQ(TextOf<DBNotFoundError>([&] { InRunWith(tables); }),
            "table SOLID, index acrylic_vessel_inner: there is no entry for "
            "run 3, so no field r_sphere");
}

TEST(TableSets, CanBeReadBySeveralThreads) {
  const TableSet tables = DetectorTables().AsSet();
  const auto expected = VerdictsOf(InRunWith(tables));
  const Captured captured(warn);
  std::array<ShadowingCalculator, 4> calculators;
  std::vector<std::thread> threads;
  for (ShadowingCalculator& calculator : calculators) {
    threads.emplace_back([&] { calculator.BeginOfRun(tables); });
  }
  for (std::thread& thread : threads) thread.join();
  for (const ShadowingCalculator& calculator : calculators) {
    EXPECT_EQ(VerdictsOf(calculator), expected);
  }
}

}  // namespace
}  // namespace ZARN::DU
