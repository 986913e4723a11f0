#include "du/fast/NearestHardware.hpp"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "du/hardware/WaterSegments.hpp"
#include "tests/du/Detector.hpp"
#include "tests/du/PathsAtHardware.hpp"
#include "tests/property/SameBits.hpp"

namespace ZARN::DU {
namespace {

using Testing::AreSame;
using Testing::InRun;
using Testing::PathsAtHardware;
using Testing::Tables;
using Testing::VariedTables;

using eRule = eShadowingRule;

std::vector<LightPath> PathsAt(const ShadowingCalculator& detector) {
  return PathsAtHardware(detector, 95).Make(3000);
}

/// Compare critical tolerances with those from all items.
void ExpectTheSame(const ShadowingCalculator& detector,
                   const std::vector<LightPath>& paths) {
  for (const LightPath& path : paths) {
    const WaterSegments segments =
        SegmentsOf(path, ShapeOfType(path.LightPathType));
    const CriticalTolerances found = detector.FindCriticalTolerances(path);
    for (const eShadowingComponent component : kShadowingComponents) {
      const double byAll =
          CriticalTolerance(detector.GetHardware(), component, segments);
      ASSERT_TRUE(AreSame(found.Of(component), byAll))
          << NameOf(component) << " " << found.Of(component) << " " << byAll;
    }
  }
}

/// Plates at z = 0, of which the nearest is found by its azimuth.
Tables LevelPlates() {
  Tables tables = VariedTables();
  tables.SetPositions(
      "GEO_LOCATIONS", "plates",
      {{0, 5860, 0}, {5860, 0, 0}, {5860, 1, 0}, {-3000, -5000, 0}});
  return tables;
}

std::size_t CountItems(const NearestHardware& nearest, eRule rule,
                       const TVector3& point) {
  std::size_t count = 0;
  nearest.ForEach(rule, point, [&count](std::size_t) { ++count; });
  return count;
}

TEST(NearestHardware, GivesTheToleranceOfAllItems) {
  const ShadowingCalculator detector = InRun(VariedTables());
  ExpectTheSame(detector, PathsAt(detector));
  const ShadowingCalculator level = InRun(LevelPlates());
  ExpectTheSame(level, PathsAt(level));
}

TEST(NearestHardware, IsOneItemOfEachRule) {
  const ShadowingCalculator detector = InRun(LevelPlates());
  const NearestHardware nearest(detector.GetHardware());
  const TVector3 point(5200, 2500, 0);
  for (const eRule rule :
       {eRule::kSurfacePoint, eRule::kLeg, eRule::kSupportRope,
        eRule::kBellyPlate, eRule::kNCDAnchor}) {
    EXPECT_EQ(CountItems(nearest, rule, point), 1U) << NameOf(rule);
  }
  EXPECT_EQ(CountItems(nearest, eRule::kNeckBossCap, point), 0U);
}

TEST(NearestHardware, LeavesOddPartsToTheFormulas) {
  Hardware hardware = InRun(LevelPlates()).GetHardware();
  const TVector3 point(5200, 2500, 0);
  const auto count = [&](eRule rule) {
    return CountItems(NearestHardware(hardware), rule, point);
  };
  // An azimuth is no measure of the angle in space.
  auto& plates = hardware.BellyPlates.BellyPlatePositions;
  plates.front().SetZ(1000.0);
  EXPECT_EQ(count(eRule::kBellyPlate), plates.size());
  // Its angle to any point is 0.
  auto& ropes = hardware.SupportRopes.SupportRopePositions;
  ropes.emplace_back(0, 0, 0);
  EXPECT_EQ(count(eRule::kSupportRope), ropes.size());
  // Points without a direction.
  const NearestHardware nearest(hardware);
  EXPECT_EQ(CountItems(nearest, eRule::kLeg, {0, 0, 0}),
            2 * hardware.AVHDRopes.AVHDRopeRolls.size());
}

TEST(NearestHardware, IsThatOfTheRunAndOfTheCopy) {
  Tables other = VariedTables();
  other.Set("SOLID", "acrylic_vessel_outer", "r_sphere", 6100.0);
  ShadowingCalculator first = InRun(VariedTables());
  const auto paths = PathsAt(first);
  first.FindCriticalTolerances(paths.front());
  ShadowingCalculator second = first;
  Testing::BeginOfRun(second, other);
  ExpectTheSame(second, paths);
  ExpectTheSame(first, paths);
  first.SetAllGeometryTolerances(-3.0);
  ExpectTheSame(first, paths);
  const ShadowingCalculator moved = std::move(second);
  ExpectTheSame(moved, paths);
}

TEST(NearestHardware, IsMadeByOneOfSeveralThreads) {
  const ShadowingCalculator detector = InRun(VariedTables());
  const auto paths = PathsAt(detector);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] { ExpectTheSame(detector, paths); });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace ZARN::DU
