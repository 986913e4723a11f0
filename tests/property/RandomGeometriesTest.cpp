#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "tests/property/CalculatorPair.hpp"
#include "tests/property/Detectors.hpp"
#include "tests/property/Paths.hpp"
#include "tests/property/Random.hpp"

namespace ZARN::Testing {
namespace {

constexpr int kShards = 8;
constexpr int kPathsPerGeometry = 1000;
constexpr int kDrawnPerGeometry = 240;
constexpr int kSteps = 60;
constexpr int kShakes = 16;
/// An interval of a path's coordinates shorter than this is a relative distance
/// below 1e-9.
constexpr double kNear = 0x1p-31;

/// 1,000 in all unless ZARN_PROPERTY_GEOMETRIES gives another number: programs
/// built with sanitizers are several times slower.
int GeometriesPerShard() {
  const char* text = std::getenv("ZARN_PROPERTY_GEOMETRIES");
  const long given = text != nullptr ? std::strtol(text, nullptr, 10) : 0;
  const long all = given > 0 && given < 1000000 ? given : 1000;
  return static_cast<int>(std::max(1L, all / kShards));
}

/// What the paths were, so that a test that never comes near a limit fails.
struct Tally {
  int paths = 0;
  int nearLimits = 0;
  std::array<std::array<int, DU::kNumberOfLightPathTypes>, 7> blocked{};
  int unusualNames = 0;
};

void ExpectThatEverythingOccurred(const Tally& tally) {
  constexpr int kOften = 500;
  constexpr int kSometimes = 10;
  EXPECT_GT(tally.nearLimits, tally.paths / 3);
  EXPECT_GT(tally.unusualNames, tally.paths / 50);
  std::array<int, DU::kNumberOfLightPathTypes> ofType{};
  for (const auto& blocked : tally.blocked) {
    for (std::size_t type = 0; type < ofType.size(); ++type) {
      ofType[type] += blocked[type];
    }
  }
  for (std::size_t type = 0; type < ofType.size(); ++type) {
    EXPECT_GT(ofType[type], kOften) << DU::kLightPathTypeNames[type];
  }
  for (const DU::eShadowingComponent component : DU::kShadowingComponents) {
    const auto& blocked = tally.blocked[static_cast<std::size_t>(component)];
    const bool isTestedInWater =
        component == DU::eShadowingComponent::kAVHDRope ||
        component == DU::eShadowingComponent::kSupportRope;
    for (std::size_t type = 1; type < blocked.size(); ++type) {
      const int least = type == DU::kWater && !isTestedInWater ? 0 : kSometimes;
      EXPECT_GE(blocked[type], least)
          << DU::NameOf(component) << " by " << DU::kLightPathTypeNames[type];
    }
    EXPECT_GT(std::accumulate(blocked.begin(), blocked.end(), 0), kOften)
        << DU::NameOf(component);
  }
}

class RandomGeometries : public testing::TestWithParam<int> {
 protected:
  void RunGeometry(int geometry);

  Tally tally_;

 private:
  void SetUpRun(int geometry, Random& random);
  void DrawPaths(Random& random);
  void Bisect(const TestPath& a, int outcomeOfA, const TestPath& b,
              Random& random);
  bool Check(const TestPath& path, bool isNear);
  bool IsSpent() const { return pathOfGeometry_ >= kPathsPerGeometry; }

  struct Judged {
    TestPath path;
    int outcome;
  };

  std::unique_ptr<CalculatorPair> pair_;
  std::vector<Judged> drawn_;
  int geometry_ = 0;
  int pathOfGeometry_ = 0;
  double gridTolerance_ = 150.0;
};

std::uint64_t SeedOf(int shard, int geometry) {
  return 7919U * static_cast<std::uint64_t>(shard + 1) +
         1000003U * static_cast<std::uint64_t>(geometry + 1);
}

bool RandomGeometries::Check(const TestPath& path, bool isNear) {
  const bool same = pair_->Check(path);
  const int index = pathOfGeometry_++;
  ++tally_.paths;
  if (isNear || path.isAtLimit) ++tally_.nearLimits;
  if (path.naming == eNaming::kOwnName && path.path.LightPathType >= 0 &&
      path.path.LightPathType < DU::kNumberOfLightPathTypes) {
    ++tally_.blocked[static_cast<std::size_t>(pair_->Blocking())]
                    [static_cast<std::size_t>(path.path.LightPathType)];
  } else {
    ++tally_.unusualNames;
  }
  if (same) return true;
  ADD_FAILURE() << "shard " << GetParam() << ", geometry " << geometry_
                << " (seed " << SeedOf(GetParam(), geometry_) << "), path "
                << index << ", " << Describe(path) << "\n"
                << pair_->Difference();
  return false;
}

void RandomGeometries::SetUpRun(int geometry, Random& random) {
  // Half of the runs follow another one on the same calculators.
  if (pair_ == nullptr || random.Chance(0.5)) {
    pair_.reset();  // the old pair still holds the log streams
    pair_ = std::make_unique<CalculatorPair>();
    gridTolerance_ = 150.0;
  }
  pair_->SwitchDebug(random.Chance(0.25));

  const Detector detector = MakeDetector(random);
  detector.tables.Load();
  const auto gridPoints = [&](double tolerance) {
    return tolerance > 0 ? static_cast<double>(detector.plates) *
                               std::ceil(tolerance) * std::ceil(tolerance)
                         : 0.0;
  };
  const bool mayStay =
      gridPoints(gridTolerance_) < 2000.0 ||
      (gridPoints(gridTolerance_) < 50000.0 && random.Chance(0.1));
  if (!mayStay || random.Chance(0.5)) {
    constexpr std::array kDivisions = {-3.0, 0.0, 0.25, 1.0, 2.5, 7.0, 12.0};
    gridTolerance_ = random.Pick(kDivisions);
    pair_->SetAllGeometryTolerances(gridTolerance_);
  }
  const bool same = pair_->BeginOfRun();
  ASSERT_TRUE(same) << "shard " << GetParam() << ", geometry " << geometry
                    << " (seed " << SeedOf(GetParam(), geometry)
                    << "), set-up: " << pair_->Difference();
  gridTolerance_ = pair_->Plain().BellyPlateTolerance;
  if (random.Chance(0.5)) {
    constexpr std::array kTolerances = {0.0,   -10.0,  1.0,    3.0,
                                        50.0,  70.5,   150.0,  300.0,
                                        700.0, 2000.0, 1e-300, -1e9};
    gridTolerance_ = random.Pick(kTolerances);
    pair_->SetAllGeometryTolerances(gridTolerance_);
  }
}

void RandomGeometries::DrawPaths(Random& random) {
  PathMaker maker(pair_->Plain(), random);
  drawn_.clear();
  for (int i = 0; i < kDrawnPerGeometry && !IsSpent(); ++i) {
    const TestPath path = maker.Draw();
    if (!Check(path, false)) return;
    if (PathMaker::IsFinite(path)) drawn_.push_back({path, pair_->Outcome()});
  }
}

void RandomGeometries::Bisect(const TestPath& a, int outcomeOfA,
                              const TestPath& b, Random& random) {
  double low = 0.0;
  double high = 1.0;
  for (int step = 0; step < kSteps && !IsSpent(); ++step) {
    const double middle = low + (high - low) / 2.0;
    if (middle == low || middle == high) break;
    const TestPath path = PathMaker::Between(a, b, middle);
    if (!Check(path, high - low < kNear)) return;
    (pair_->Outcome() == outcomeOfA ? low : high) = middle;
  }
  PathMaker maker(pair_->Plain(), random);
  for (int i = 0; i < kShakes && !IsSpent(); ++i) {
    const double t = random.Chance(0.5) ? low : high;
    if (!Check(maker.Shaken(PathMaker::Between(a, b, t)), true)) return;
  }
}

void RandomGeometries::RunGeometry(int geometry) {
  geometry_ = geometry;
  pathOfGeometry_ = 0;
  Random random(SeedOf(GetParam(), geometry));
  SetUpRun(geometry, random);
  if (HasFailure()) return;
  DrawPaths(random);
  while (!HasFailure() && !IsSpent()) {
    if (drawn_.empty()) {
      DrawPaths(random);
      continue;
    }
    const Judged& a = random.Pick(drawn_);
    const Judged* b = nullptr;
    for (int attempt = 0; attempt < 30 && b == nullptr; ++attempt) {
      const Judged& other = random.Pick(drawn_);
      if (other.path.path.LightPathType == a.path.path.LightPathType &&
          other.path.naming == a.path.naming &&
          other.path.name == a.path.name && other.outcome != a.outcome) {
        b = &other;
      }
    }
    if (b == nullptr) {
      // Nothing differs between paths of this type: look at one more path.
      PathMaker maker(pair_->Plain(), random);
      if (!Check(maker.Draw(), false)) return;
      continue;
    }
    Bisect(a.path, a.outcome, b->path, random);
  }
}

TEST_P(RandomGeometries, AreJudgedAsByThePlainCalculator) {
  const int geometries = GeometriesPerShard();
  for (int geometry = 0; geometry < geometries; ++geometry) {
    RunGeometry(geometry);
    if (HasFailure()) return;
  }

  EXPECT_EQ(tally_.paths, geometries * kPathsPerGeometry);
  // With few geometries rare cases need not occur.
  if (geometries >= 100) ExpectThatEverythingOccurred(tally_);
  RecordProperty("paths", tally_.paths);
  RecordProperty("nearLimits", tally_.nearLimits);
}

INSTANTIATE_TEST_SUITE_P(Shards, RandomGeometries, testing::Range(0, kShards));

}  // namespace
}  // namespace ZARN::Testing
