#include "du/ShadowingCalculator.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <map>
#include <random>
#include <thread>
#include <vector>

#include "tests/du/CalculatorState.hpp"
#include "tests/du/Detector.hpp"
#include "tests/du/Paths.hpp"
#include "tests/support/Captured.hpp"
#include "tests/support/Tables.hpp"

namespace ZARN::DU {
namespace {

using Testing::BlockedPath;
using Testing::Captured;
using Testing::Check;
using Testing::DetectorTables;
using Testing::Flags;
using Testing::FlagsFor;
using Testing::FlagsOf;
using Testing::FreePath;
using Testing::InRun;
using Testing::kComponents;
using Testing::kUnnamedType;
using Testing::Tables;

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

/// A detector with a boss so small that other components are reported too.
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
  EXPECT_EQ(tally.size(), kComponents + 1);  // every verdict occurred
}

TEST(FindShadowing, WritesNoMessageAndKeepsTheFlags) {
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

}  // namespace
}  // namespace ZARN::DU
