#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/property/CalculatorPair.hpp"
#include "tests/property/Detectors.hpp"
#include "tests/property/PathSearch.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/Tables.hpp"

// A BeginOfRun that throws leaves a mixture of lists, radii and flags: some of
// the new run, some empty, some of the run before. Verdicts must be those of
// the formulas for exactly this state, whatever layers the run before had.

namespace ZARN::Testing {
namespace {

/// A way in which BeginOfRun fails.
struct Failure {
  const char* name;
  void (*damage)(Tables&);
  /// The message that throws; empty: BeginOfRun fails without it.
  const char* throwAt = "";
};

std::ostream& operator<<(std::ostream& out, const Failure& failure) {
  return out << failure.name;
}

constexpr const char* kUnequal = "Inequal number of elements";
constexpr const char* kZeroVector = "zero vector can't be stretched";

void DropLastX(Tables& tables, const char* table, const char* index,
               const char* field = "x") {
  tables.Set(table, index, field, std::vector<double>{1.0});
}

const std::array kFailures = {
    Failure{"InnerRadius",
            [](Tables& t) { t.Remove("SOLID", "acrylic_vessel_inner"); }},
    Failure{"OuterRadius",
            [](Tables& t) {
              t.Set("SOLID", "acrylic_vessel_outer", "r_sphere",
                    std::string("wide"));
            }},
    Failure{"NeckRadius",
            [](Tables& t) {
              t.RemoveField("SOLID", "acrylic_vessel_outer", "r_neck");
            }},
    Failure{"HoldDownRopePositions",
            [](Tables& t) { DropLastX(t, "SOLID", "down_rope", "rope_x"); },
            kUnequal},
    // By then the end points are loaded, and some surface points.
    Failure{"HoldDownRopeSurface",
            [](Tables& t) {
              t.SetPositions("SOLID", "down_rope",
                             std::vector<TVector3>(6, TVector3()), "rope_");
            },
            kZeroVector},
    Failure{"HoldDownRopeEnd",
            [](Tables& t) {
              t.SetPositions("SOLID", "down_rope",
                             {{5900, 0, -6100},
                              {5900, 0, 5},
                              {3000, 0, 5000},
                              {-3000, 100, 5000},
                              {0, 0, 0},
                              {-5900, 100, -6100}},
                             "rope_");
            },
            kZeroVector},
    Failure{"HoldDownRopesAfterLoading", [](Tables&) {},
            "Loaded AV hold-down rope"},
    Failure{"SupportRopePositions",
            [](Tables& t) { DropLastX(t, "GEO_LOCATIONS", "up_places"); },
            kUnequal},
    Failure{"SupportRopesAfterLoading", [](Tables&) {},
            "Loaded AV support rope"},
    Failure{"BellyPlatePositions",
            [](Tables& t) { DropLastX(t, "GEO_LOCATIONS", "plates"); },
            kUnequal},
    // By then the plates' positions are loaded.
    Failure{"BellyPlateGrid",
            [](Tables& t) {
              t.Set("SOLID", "belly_plate_vintar", "octahedron_half_height",
                    0.0);
              t.SetPositions("GEO_LOCATIONS", "plates",
                             {{5860, 0, 0}, {0, 0, 0}, {0, 5860, 0}});
            },
            kZeroVector},
    Failure{"BellyPlatesAfterLoading", [](Tables&) {}, "Loaded belly plate"},
    Failure{"NCDAnchorPositions",
            [](Tables& t) { DropLastX(t, "GEO_LOCATIONS", "anchors"); },
            kUnequal},
    Failure{"NCDAnchorsAfterLoading", [](Tables&) {}, "Loaded NCD anchor"},
    Failure{"AVPipePositions",
            [](Tables& t) {
              t.Set("SOLID", "av_pipe-4", "x", std::vector<double>(9, 1.0));
            },
            kUnequal},
    Failure{"AVPipesAfterLoading", [](Tables&) {}, "Loaded AV pipe"},
    Failure{"NeckBossEdge",
            [](Tables& t) { t.Set("GEO", "av", "neck_boss_z", 9000.0); },
            "negative discriminant"},
    Failure{"NeckBossAfterLoading", [](Tables&) {}, "Loaded neck boss"},
};

class FailedRuns : public testing::TestWithParam<Failure> {};

/// Judge paths that are searched for in the current geometry.
void CheckPaths(CalculatorPair& pair, Random& random, std::size_t count) {
  PathSearch search(
      pair.Plain(), random, [&pair](const TestPath& path, bool /*isNear*/) {
        const bool same = pair.Check(path);
        EXPECT_TRUE(same) << Describe(path) << "\n" << pair.Difference();
        return same ? std::optional(pair.Outcome()) : std::nullopt;
      });
  search.Run(count);
  EXPECT_TRUE(pair.CheckBatches()) << pair.Difference();
}

/// The tables of a geometry in which all components load.
Tables CompleteTables(Random& random) {
  while (true) {
    const Detector detector = MakeDetector(random);
    detector.tables.Load();
    CalculatorPair pair;
    pair.SetAllGeometryTolerances(0.0);
    pair.BeginOfRun();
    const Reference::PlainShadowingCalculator& plain = pair.Plain();
    if (plain.AVHDRopeSurfacePoints.size() > 1000 &&
        !plain.SupportRopePositions.empty() &&
        !plain.BellyPlatePositions.empty() &&
        !plain.NCDAnchorPositions.empty() && plain.AVPipeInfoLoaded &&
        plain.NeckBossAngle > 0.1 && plain.NeckBossAngle < 0.5) {
      return detector.tables;
    }
  }
}

TEST_P(FailedRuns, LeaveAStateThatTheFormulasJudgeBy) {
  const Failure& failure = GetParam();
  Random random(20240229);
  const Tables before = CompleteTables(random);
  Tables failing = CompleteTables(random);
  failure.damage(failing);
  CalculatorPair pair;
  pair.SetAllGeometryTolerances(2.0);

  before.Load();
  ASSERT_TRUE(pair.BeginOfRun()) << pair.Difference();
  ASSERT_FALSE(pair.Threw());
  CheckPaths(pair, random, 400);

  failing.Load();
  pair.SwitchDebug(true);
  pair.ThrowAt(failure.throwAt);
  // The grid would be large with the tolerance of a run.
  pair.SetAllGeometryTolerances(3.0);
  ASSERT_TRUE(pair.BeginOfRun()) << pair.Difference();
  EXPECT_TRUE(pair.Threw());
  pair.ThrowAt("");
  pair.SwitchDebug(false);
  CheckPaths(pair, random, 600);
  pair.SetAllGeometryTolerances(250.0);
  CheckPaths(pair, random, 400);
  pair.Replace(CalculatorPair::eReplacement::kCopy);
  CheckPaths(pair, random, 100);

  pair.SetAllGeometryTolerances(2.0);
  before.Load();
  ASSERT_TRUE(pair.BeginOfRun()) << pair.Difference();
  EXPECT_FALSE(pair.Threw());
  CheckPaths(pair, random, 200);
}

INSTANTIATE_TEST_SUITE_P(Runs, FailedRuns, testing::ValuesIn(kFailures),
                         [](const auto& run) {
                           return std::string(run.param.name);
                         });

}  // namespace
}  // namespace ZARN::Testing
