#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "db/DB.hpp"
#include "db/JsonTables.hpp"
#include "tests/property/Batches.hpp"
#include "tests/property/CalculatorPair.hpp"
#include "tests/property/PathColumns.hpp"
#include "tests/property/PathSearch.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/Repetitions.hpp"

namespace ZARN::Testing {
namespace {

using Component = DU::eShadowingComponent;

/// The reference detector, and paths in it that the plain calculator judged.
class Batches : public testing::Test {
 protected:
  static constexpr std::size_t kPaths = 5000;

  Batches() {
    DB::Get().Clear();
    LoadJsonTables(DB::Get(), ZARN_DATA_DIR "/reference-detector");
    EXPECT_TRUE(pair_.BeginOfRun()) << pair_.Difference();
    PathSearch search(
        pair_.Plain(), random_, [this](const TestPath& path, bool /*isNear*/) {
          const bool same = pair_.Check(path);
          EXPECT_TRUE(same) << Describe(path) << "\n" << pair_.Difference();
          return same ? std::optional(pair_.Outcome()) : std::nullopt;
        });
    search.Run(kPaths);
    judged_ = pair_.Checked();
    // The search gives similar paths one after the other.
    for (std::size_t i = judged_.Size(); i > 1; --i) {
      const std::size_t other = random_.Below(i);
      std::swap(judged_.paths[i - 1], judged_.paths[other]);
      std::swap(judged_.verdicts[i - 1], judged_.verdicts[other]);
    }
  }

  JudgedPaths Slice(std::size_t first, std::size_t count) const {
    JudgedPaths slice;
    for (std::size_t i = first; i < first + count; ++i) {
      slice.Add(judged_.paths[i], judged_.verdicts[i]);
    }
    return slice;
  }

  JudgedPaths OfType(DU::eLightPathType type) const {
    JudgedPaths ofType;
    for (std::size_t i = 0; i < judged_.Size(); ++i) {
      if (judged_.paths[i].LightPathType != type) continue;
      ofType.Add(judged_.paths[i], judged_.verdicts[i]);
    }
    return ofType;
  }

  /// So many paths that they are shared among threads.
  JudgedPaths Repeated(int times) const {
    JudgedPaths many;
    for (int i = 0; i < times; ++i) {
      for (std::size_t k = 0; k < judged_.Size(); ++k) {
        many.Add(judged_.paths[k], judged_.verdicts[k]);
      }
    }
    return many;
  }

  const DU::ShadowingCalculator& Real() const { return pair_.Real(); }

  Random random_{19570716};
  CalculatorPair pair_;
  JudgedPaths judged_;
};

TEST_F(Batches, CanHaveAnyNumberOfPaths) {
  constexpr std::array<std::size_t, 17> kCounts = {
      0, 1, 2, 7, 8, 15, 16, 17, 31, 63, 64, 65, 127, 128, 129, 1023, 1025};
  for (const std::size_t count : kCounts) {
    for (const std::size_t first : {0U, 1U, 5U, 1000U}) {
      SCOPED_TRACE(std::to_string(count) + " from " + std::to_string(first));
      EXPECT_EQ(AnyDifference(Real(), Slice(first, count)), "");
    }
  }
}

TEST_F(Batches, CanBePartOfLongerArrays) {
  const PathColumns columns(judged_.paths, PathColumns::eUnused::kFilled);
  for (const std::size_t first : {1U, 3U, 64U, 777U}) {
    const JudgedPaths slice = Slice(first, 1500);
    std::vector<Component> verdicts(slice.Size());
    Real().FindShadowing(columns.Arrays().From(first), slice.Size(),
                         verdicts.data());
    EXPECT_EQ(verdicts, slice.verdicts) << "columns from " << first;
    std::fill(verdicts.begin(), verdicts.end(), Component::kNone);
    Real().FindShadowing(judged_.paths.data() + first, slice.Size(),
                         verdicts.data());
    EXPECT_EQ(verdicts, slice.verdicts) << "records from " << first;
  }
}

TEST_F(Batches, OfOneTypeNeedOnlyItsColumns) {
  for (int type = 0; type < DU::kNumberOfLightPathTypes; ++type) {
    SCOPED_TRACE(DU::kLightPathTypeNames[static_cast<std::size_t>(type)]);
    const JudgedPaths ofType = OfType(static_cast<DU::eLightPathType>(type));
    EXPECT_GT(ofType.Size(), 10U);
    EXPECT_EQ(AnyDifference(Real(), ofType), "");
  }
}

TEST_F(Batches, OfTypesOutsideTheEnumerationNeedNoColumn) {
  constexpr std::array kTypes = {DU::kNumberOfLightPathTypes + 0,
                                 DU::kNumberOfLightPathTypes + 1,
                                 -1,
                                 0x100 + DU::kWater,
                                 0x10000 + DU::kAVToWater,
                                 std::numeric_limits<int>::min(),
                                 std::numeric_limits<int>::max()};
  // All unknown types have the same verdict.
  const Component verdict =
      OfType(DU::kNumberOfLightPathTypes).verdicts.front();
  JudgedPaths unknown;
  for (int i = 0; i < 100; ++i) {
    DU::LightPath path;
    path.LightPathType = static_cast<DU::eLightPathType>(random_.Pick(kTypes));
    unknown.Add(path, verdict);
  }
  EXPECT_EQ(AnyDifference(Real(), unknown), "");
  EXPECT_TRUE(PathColumns(unknown.paths, PathColumns::eUnused::kNull)
                  .Arrays()
                  .AVPoint1.x.IsNull());
}

TEST_F(Batches, AreJudgedOnAnyNumberOfThreads) {
  const JudgedPaths many = Repeated(8);
  for (const std::size_t threads : {1U, 2U, 3U, 7U, 64U}) {
    EXPECT_EQ(RecordsDifference(Real(), many, threads), "");
    EXPECT_EQ(ColumnsDifference(Real(), many, threads), "");
  }
  EXPECT_TRUE(pair_.WroteNothing("a batch")) << pair_.Difference();
  // More threads than paths.
  EXPECT_EQ(RecordsDifference(Real(), Slice(0, 3), 16), "");
  EXPECT_EQ(ColumnsDifference(Real(), Slice(0, 3), 16), "");
}

TEST_F(Batches, CanBeJudgedByOneCalculatorOnSeveralThreads) {
  const JudgedPaths many = Repeated(5);
  std::array<std::string, 3> differences;
  std::vector<std::thread> threads;
  threads.reserve(differences.size());
  for (std::string& difference : differences) {
    threads.emplace_back(
        [this, &difference] { difference = AnyDifference(Real(), judged_); });
  }
  for (std::thread& thread : threads) thread.join();
  for (const std::string& difference : differences) EXPECT_EQ(difference, "");
}

TEST_F(Batches, AreJudgedTheSameByEveryKernel) {
  std::size_t open = 0;
  for (const double tolerance : {150.0, 0.0, 20.0, 300.0}) {
    pair_.SetAllGeometryTolerances(tolerance);
    PathSearch search(
        pair_.Plain(), random_, [this](const TestPath& path, bool /*isNear*/) {
          return pair_.Check(path) ? std::optional(pair_.Outcome())
                                   : std::nullopt;
        });
    search.Run(Repetitions(kPaths, kPaths / 5));
    EXPECT_EQ(KernelDifference(Real(), pair_.Checked(), open), "");
  }
}

TEST_F(Batches, WriteNothingWhileDebugIsOn) {
  pair_.SwitchDebug(true);
  EXPECT_TRUE(pair_.CheckBatches()) << pair_.Difference();
}

TEST_F(Batches, DoNotDependOnWhichLayersAreOn) {
  constexpr std::array<DU::ShadowingLayers, 5> kLayers = {{
      {true, true, true},
      {false, true, true},
      {true, false, true},
      {true, true, false},
      {false, false, false},
  }};
  for (std::size_t i = 0; i < kLayers.size(); ++i) {
    pair_.UseLayers(kLayers[i]);
    EXPECT_TRUE(pair_.CheckBatches()) << i << ": " << pair_.Difference();
  }
}

TEST(BatchesBeforeARun, AreClear) {
  const DU::ShadowingCalculator calculator;
  JudgedPaths free;
  for (int type = -1; type <= DU::kNumberOfLightPathTypes; ++type) {
    DU::LightPath path;
    path.LightPathType = static_cast<DU::eLightPathType>(type);
    free.Add(path, Component::kNone);
  }
  EXPECT_EQ(AnyDifference(calculator, free), "");
}

}  // namespace
}  // namespace ZARN::Testing
