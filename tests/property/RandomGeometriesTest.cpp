#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

#include "tests/property/CalculatorPair.hpp"
#include "tests/property/Detectors.hpp"
#include "tests/property/PathSearch.hpp"
#include "tests/property/Paths.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::Testing {
namespace {

constexpr int kShards = 8;
constexpr int kPathsPerGeometry = 1000;
/// Explaining a path and checking its critical tolerances takes three times as
/// long as all other comparisons. shadowing_long_run can do it for every path.
constexpr int kExplainedEvery = 64;
/// 1,000 in total unless ZARN_PROPERTY_GEOMETRIES sets another number: programs
/// built with sanitizers are several times slower.
int GeometriesPerShard() {
  const char* text = std::getenv("ZARN_PROPERTY_GEOMETRIES");
  const long given = text != nullptr ? std::strtol(text, nullptr, 10) : 0;
  const long all = given > 0 && given < 1000000 ? given : 1000;
  return static_cast<int>(std::max(1L, all / kShards));
}

/// Counts of paths, so that a test that never comes near a limit fails.
struct Tally {
  int paths = 0;
  int nearLimits = 0;
  std::array<std::array<int, DU::kNumberOfLightPathTypes>, 7> blocked{};
  int unusualNames = 0;
  ToleranceTally tolerances;
  std::size_t byKernels = 0;
  std::size_t open = 0;  ///< of these, left open
};

void ExpectThatEverythingOccurred(const Tally& tally) {
  constexpr int kOften = 300;
  constexpr int kSometimes = 10;
  EXPECT_GT(tally.nearLimits, tally.paths / 2);
  EXPECT_GT(tally.unusualNames, tally.paths / 60);
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
    const long critical =
        tally.tolerances.finite[static_cast<std::size_t>(component) - 1];
    const bool usesTolerance = component < DU::eShadowingComponent::kAVPipe;
    EXPECT_EQ(critical > kOften, usesTolerance) << DU::NameOf(component);
  }
}

class RandomGeometries : public testing::TestWithParam<int> {
 protected:
  void RunGeometry(int geometry);

  Tally tally_;

 private:
  bool SetUpRun(Random& random);
  bool Check(const TestPath& path, bool isNear);
  bool CheckBatches(Random& random);
  std::string Where() const;

  std::unique_ptr<CalculatorPair> pair_;
  int geometry_ = 0;
  int pathOfGeometry_ = 0;
  double gridTolerance_ = 150.0;
};

std::uint64_t SeedOf(int shard, int geometry) {
  return 7919U * static_cast<std::uint64_t>(shard + 1) +
         1000003U * static_cast<std::uint64_t>(geometry + 1);
}

std::string RandomGeometries::Where() const {
  return "shard " + std::to_string(GetParam()) + ", geometry " +
         std::to_string(geometry_) + " (seed " +
         std::to_string(SeedOf(GetParam(), geometry_)) + ")";
}

bool RandomGeometries::Check(const TestPath& path, bool isNear) {
  const int index = pathOfGeometry_++;
  bool same = pair_->Check(path);
  // Starting at another path in each geometry.
  if (same && (index + geometry_) % kExplainedEvery == 0) {
    same = pair_->CheckExplanation(path, tally_.tolerances);
  }
  ++tally_.paths;
  if (isNear) ++tally_.nearLimits;
  if (path.naming == eNaming::kOwnName && path.path.LightPathType >= 0 &&
      path.path.LightPathType < DU::kNumberOfLightPathTypes) {
    ++tally_.blocked[static_cast<std::size_t>(pair_->Blocking())]
                    [static_cast<std::size_t>(path.path.LightPathType)];
  } else {
    ++tally_.unusualNames;
  }
  if (same) return true;
  ADD_FAILURE() << Where() << ", path " << index << ", " << Describe(path)
                << "\n"
                << pair_->Difference();
  return false;
}

/// Judge all paths of the geometry again, with all layers and with some of
/// them.
bool RandomGeometries::CheckBatches(Random& random) {
  constexpr std::array<DU::ShadowingLayers, 4> kFewer = {{
      {false, true, true},
      {true, false, true},
      {true, true, false},
      {false, false, false},
  }};
  bool same = pair_->CheckBatches();
  EXPECT_TRUE(same) << Where() << ": " << pair_->Difference();
  if (!same) return false;
  if (random.Chance(0.3)) {
    const std::string difference =
        KernelDifference(pair_->Real(), pair_->Checked(), tally_.open);
    EXPECT_EQ(difference, "") << Where();
    tally_.byKernels += pair_->Checked().Size();
    if (!difference.empty()) return false;
  }
  if (random.Chance(0.5)) return true;
  const std::size_t fewer = random.Below(kFewer.size());
  pair_->UseLayers(kFewer[fewer]);
  same = pair_->CheckBatches();
  EXPECT_TRUE(same) << Where() << ", layers " << fewer << ": "
                    << pair_->Difference();
  pair_.reset();  // the next geometry has all layers again
  return same;
}

bool RandomGeometries::SetUpRun(Random& random) {
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
  EXPECT_TRUE(same) << Where() << ", set-up: " << pair_->Difference();
  gridTolerance_ = pair_->Plain().BellyPlateTolerance;
  if (random.Chance(0.5)) {
    constexpr std::array kTolerances = {
        0.0,   -10.0, 1.0,   3.0,    50.0,      70.5,      150.0,
        300.0, 50.0,  20.0,  100.0,  300.0,     700.0,     2000.0,
        -12.0, -15.0, 1e-9,  1e-300, 5e-324,    -1e9,      8e3,
        2e4,   1e12,  1e200, kNaN,   kInfinity, -kInfinity};
    gridTolerance_ = random.Chance(0.3) ? SharpTolerance(pair_->Plain(), random)
                                        : random.Pick(kTolerances);
    pair_->SetAllGeometryTolerances(gridTolerance_);
  }
  if (random.Chance(0.2)) {
    using Replacement = CalculatorPair::eReplacement;
    constexpr std::array kReplacements = {
        Replacement::kCopy, Replacement::kAssigned, Replacement::kMoved,
        Replacement::kMovedAndBack};
    pair_->Replace(random.Pick(kReplacements));
  }
  return same;
}

void RandomGeometries::RunGeometry(int geometry) {
  geometry_ = geometry;
  pathOfGeometry_ = 0;
  Random random(SeedOf(GetParam(), geometry));
  if (!SetUpRun(random)) return;
  PathSearch search(
      pair_->Plain(), random, [this](const TestPath& path, bool isNear) {
        const bool same = Check(path, isNear);
        return same ? std::optional(pair_->Outcome()) : std::nullopt;
      });
  search.Run(kPathsPerGeometry);
  if (!HasFailure()) CheckBatches(random);
}

TEST_P(RandomGeometries, AreJudgedAsByThePlainCalculator) {
  const int geometries = GeometriesPerShard();
  for (int geometry = 0; geometry < geometries; ++geometry) {
    RunGeometry(geometry);
    if (HasFailure()) return;
  }

  EXPECT_EQ(tally_.paths, geometries * kPathsPerGeometry);
  // With few geometries some rare cases may not occur.
  if (geometries >= 100) ExpectThatEverythingOccurred(tally_);
  // Rounding makes the edges of plates ragged, within much less than this.
  constexpr double kRagged = 1e-9;  // mm
  EXPECT_LT(tally_.tolerances.widest, kRagged);
  RecordProperty("paths", tally_.paths);
  RecordProperty("nearLimits", tally_.nearLimits);
  RecordProperty("raggedEdges", std::to_string(tally_.tolerances.ragged));
  RecordProperty("widestRaggedEdgeInFemtometres",
                 std::to_string(1e12 * tally_.tolerances.widest));
  RecordProperty("byKernels", std::to_string(tally_.byKernels));
  RecordProperty("openByKernels", std::to_string(tally_.open));
}

INSTANTIATE_TEST_SUITE_P(Shards, RandomGeometries, testing::Range(0, kShards));

}  // namespace
}  // namespace ZARN::Testing
