#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <optional>

#include "db/DB.hpp"
#include "db/JsonTables.hpp"
#include "tests/property/CalculatorPair.hpp"
#include "tests/property/ExamplePaths.hpp"
#include "tests/property/PathSearch.hpp"
#include "tests/property/Paths.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/Repetitions.hpp"

namespace ZARN::Testing {
namespace {

constexpr std::size_t kRows = 6000;
constexpr std::size_t kPathsPerTolerance = Repetitions(4000, 400);

TEST(ReferenceDetector, IsJudgedAsByThePlainCalculatorWithAnyTolerance) {
  DB::Get().Clear();
  LoadJsonTables(DB::Get(), ZARN_DATA_DIR "/reference-detector");
  CalculatorPair pair;
  ASSERT_TRUE(pair.BeginOfRun()) << pair.Difference();
  Random random(20120704);
  int paths = 0;
  int nearLimits = 0;
  for (const double tolerance : {150.0, 0.0, 20.0, 50.0, -10.0, 400.0, 150.0}) {
    SCOPED_TRACE(tolerance);
    pair.SetAllGeometryTolerances(tolerance);
    PathSearch search(
        pair.Plain(), random, [&](const TestPath& path, bool isNear) {
          const bool same = pair.Check(path);
          EXPECT_TRUE(same) << Describe(path) << "\n" << pair.Difference();
          ++paths;
          if (isNear) ++nearLimits;
          return same ? std::optional(pair.Outcome()) : std::nullopt;
        });
    search.Run(kPathsPerTolerance);
    ASSERT_TRUE(pair.CheckBatches()) << pair.Difference();
  }
  EXPECT_GT(nearLimits, paths / 2);
}

TEST(ReferenceDetector, IsJudgedAsByThePlainCalculator) {
  DB::Get().Clear();
  LoadJsonTables(DB::Get(), ZARN_DATA_DIR "/reference-detector");
  CalculatorPair pair;
  ASSERT_TRUE(pair.BeginOfRun()) << pair.Difference();
  EXPECT_TRUE(pair.Plain().AVHDRopeInfoLoaded);
  EXPECT_TRUE(pair.Plain().SupportRopeInfoLoaded);
  EXPECT_TRUE(pair.Plain().BellyPlateInfoLoaded);
  EXPECT_TRUE(pair.Plain().NCDAnchorInfoLoaded);
  EXPECT_TRUE(pair.Plain().AVPipeInfoLoaded);
  EXPECT_TRUE(pair.Plain().NeckBossInfoLoaded);

  std::map<DU::eShadowingComponent, int> blocked;
  std::map<DU::eLightPathType, int> types;
  for (const DU::LightPath& example : ExamplePaths(kRows)) {
    TestPath path;
    path.path = example;
    ASSERT_TRUE(pair.Check(path)) << Describe(path) << "\n"
                                  << pair.Difference();
    ++blocked[pair.Blocking()];
    ++types[path.path.LightPathType];
  }
  EXPECT_TRUE(pair.CheckBatches()) << pair.Difference();
  for (const DU::eShadowingComponent component : DU::kShadowingComponents) {
    EXPECT_GT(blocked[component], 5) << DU::NameOf(component);
  }
  EXPECT_EQ(types.size(), 7U) << "all types but the uninitialised one";
}

}  // namespace
}  // namespace ZARN::Testing
