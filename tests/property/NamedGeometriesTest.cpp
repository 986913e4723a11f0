#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/property/CalculatorPair.hpp"
#include "tests/property/PathSearch.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/Repetitions.hpp"
#include "tests/support/Tables.hpp"

// Geometries that random ones do not reach. Each comment names the mistake that
// the test detects.

namespace ZARN::Testing {
namespace {

/// A vessel and one hold-down rope that is not rotated, with the two points
/// where it meets the ring around the neck.
Tables RopeTables(const TVector3& p2, const TVector3& p3) {
  Tables tables = VesselTables();
  tables.Set("GEO", "hold_down_ropes", "solid_definition", std::string("rope"));
  tables.Set("GEO", "hold_down_ropes", "locations", std::string("rolls"));
  tables.Set("SOLID", "rope", "r_rope", 12.0);
  tables.SetPositions("SOLID", "rope",
                      {{5822.776, 818.338, -6138.045},
                       {5822.776, 818.338, 5.0},
                       p2,
                       p3,
                       {-5284.909, 2577.622, 5.0},
                       {-5284.909, 2577.622, -6138.045}},
                      "rope_");
  tables.Set("GEO_LOCATIONS", "rolls", "roll", std::vector<double>{0.0});
  return tables;
}

void ExpectTheSameRope(const TVector3& p2, const TVector3& p3) {
  RopeTables(p2, p3).Load();
  CalculatorPair pair;
  EXPECT_TRUE(pair.BeginOfRun()) << pair.Difference();
  EXPECT_TRUE(pair.Plain().AVHDRopeInfoLoaded);
  EXPECT_GT(pair.Plain().AVHDRopeSurfacePoints.size(), 2000U);
}

// Mistake: restarting the walker from the template point at every step. The two
// walkers are vectors that are rotated from step to step, and the rounding
// error of one rotation goes into the next.
TEST(NamedGeometries, ArcWalkersKeepTheRoundingOfEveryRotation) {
  ExpectTheSameRope({2970.804, 417.519, 5022.201},
                    {-2696.382, 1315.113, 5022.201});
}

// Mistake: an arc that includes its limit. Here the angle of a walker to the
// end where it started is exactly the width of the arc.
TEST(NamedGeometries, AWalkerAtTheArcsWidthFromItsStartIsNotASample) {
  ExpectTheSameRope(
      {0x1.b6cp+11, 0.0, 0x1.b6cp+11},
      {-0x1.b6cp+11, -0x1.c3e4b5c640b0ep+10, 0x1.781911d1ceb89p+11});
  ExpectTheSameRope(
      {0x1.62cp+11, 0.0, 0x1.62cp+11},
      {-0x1.62bffffffffffp+11, -0x1.4841773b50c62p+11, 0x1.0d0a7361e6366p+10});
}

// The same at the other end of the arc.
TEST(NamedGeometries, AWalkerAtTheArcsWidthFromItsEndIsNotASample) {
  ExpectTheSameRope(
      {0x1.bef8dbdbb191ep+11, -0x1.7cdb6575b022cp+10, 0x1.878p+10},
      {-0x1.43cp+10, -0x1.651decf18ff62p-43, -0x1.68cp+11});
  ExpectTheSameRope(
      {0x1.7792b454a9705p+11, -0x1.113b02e2e456ep+11, 0x1.21cp+10},
      {-0x1.4ccp+11, -0x1.6f0b626e4b69ep-42, -0x1.3f2p+11});
}

// Mistake: counts and offsets too small for hundreds of ropes with hundreds of
// thousands of points.
TEST(NamedGeometries, HundredsOfRopesAreJudgedAsByThePlainCalculator) {
  Random random(150);
  Tables tables = RopeTables({2970.804, 417.519, 5022.201},
                             {-2696.382, 1315.113, 5022.201});
  std::vector<double> rolls;
  rolls.reserve(150);
  for (int i = 0; i < 150; ++i) rolls.push_back(random.Uniform(0.0, 360.0));
  tables.Set("GEO_LOCATIONS", "rolls", "roll", rolls);
  tables.Load();
  CalculatorPair pair;
  ASSERT_TRUE(pair.BeginOfRun()) << pair.Difference();
  for (const double tolerance : {0.0, 8.0, -11.0}) {
    pair.SetAllGeometryTolerances(tolerance);
    PathSearch search(
        pair.Plain(), random, [&](const TestPath& path, bool /*isNear*/) {
          const bool same = pair.Check(path);
          EXPECT_TRUE(same) << Describe(path) << "\n" << pair.Difference();
          return same ? std::optional(pair.Outcome()) : std::nullopt;
        });
    search.Run(Repetitions(400, 40));
    EXPECT_TRUE(pair.CheckBatches()) << pair.Difference();
  }
}

}  // namespace
}  // namespace ZARN::Testing
