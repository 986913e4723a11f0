#include "du/ShadowingFilter.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "du/AVHDRopeShadowing.hpp"
#include "tests/du/Answers.hpp"
#include "tests/du/Detector.hpp"
#include "tests/du/Formulas.hpp"
#include "tests/du/PathsAtHardware.hpp"

namespace ZARN::DU {
namespace {

using eComponent = eShadowingComponent;
using Testing::AnswerTally;
using Testing::Formulas;
using Testing::InRun;
using Testing::Only;
using Testing::PathsAtHardware;

const ShadowingCalculator& Detector() {
  static const ShadowingCalculator detector = InRun(Testing::VariedTables());
  return detector;
}

/// Expect the formulas' verdicts of a filter, and give how many paths it asked
/// a formula for.
int ExpectVerdictsOfTheFormulas(const ShadowingFilter& filter,
                                const ShadowingCalculator& detector,
                                const std::vector<LightPath>& paths) {
  int open = 0;
  for (const LightPath& path : paths) {
    const Formulas formulas(detector, path);
    const WaterSegmentViews views =
        ViewsOf(path, ShapeOfType(path.LightPathType));
    EXPECT_EQ(filter.Find(views, formulas), formulas.Find())
        << path.LightPathType;
    open += formulas.Asked() > 0 ? 1 : 0;
  }
  return open;
}

std::vector<LightPath> Paths(int count) {
  return PathsAtHardware(Detector(), 40).Make(static_cast<std::size_t>(count));
}

TEST(ShadowingFilter, FindsWhatTheFormulasFindAndSeldomAsksThem) {
  const ShadowingFilter filter(Detector(), {});
  constexpr int kPaths = 4000;
  const int open =
      ExpectVerdictsOfTheFormulas(filter, Detector(), Paths(kPaths));
  EXPECT_LT(open, kPaths / 5);
  EXPECT_GT(open, 0);  // paths at a limit
}

TEST(ShadowingFilter, FindsTheSameWithAnyLayerOff) {
  for (int off = 0; off < 16; ++off) {
    SCOPED_TRACE(off);
    const ShadowingLayers layers = {(off & 1) == 0, (off & 2) == 0,
                                    (off & 4) == 0, (off & 8) == 0};
    const ShadowingFilter filter(Detector(), layers);
    const int open =
        ExpectVerdictsOfTheFormulas(filter, Detector(), Paths(300));
    // Without algebra every rope that can be met is left to its formula.
    EXPECT_EQ(open > 150, !layers.algebra);
  }
}

TEST(ShadowingFilter, FindsTheSameForEachComponentAlone) {
  for (const eComponent component : kShadowingComponents) {
    SCOPED_TRACE(NameOf(component));
    const ShadowingCalculator detector = InRun(Only({component}));
    const ShadowingFilter filter(detector, {});
    ExpectVerdictsOfTheFormulas(filter, detector, Paths(700));
    EXPECT_EQ(filter.HasHoldDownRopes(), component == eComponent::kAVHDRope);
    EXPECT_EQ(filter.HasSupportRopes(), component == eComponent::kSupportRope);
  }
}

TEST(ShadowingFilter, LeavesOutTheLayersThatAreOff) {
  const ShadowingFilter all(Detector(), {});
  EXPECT_NE(all.Map().At(Testing::kFreeSpot), ShadowMap::kNothingKnown);
  EXPECT_GT(all.HoldDownRopes().Radius2(), 0.0);
  EXPECT_GT(all.HoldDownRopes().Ropes().Table().Cells(), 1);

  const ShadowingFilter none(Detector(), {false, false, false, false});
  EXPECT_EQ(none.Map().At(Testing::kFreeSpot), ShadowMap::kNothingKnown);
  for (const VerticalRopeFilter* const ropes :
       {&none.HoldDownRopes(), &none.SupportRopes(),
        &none.EnteredHoldDownRopes(), &none.LeftHoldDownRopes()}) {
    EXPECT_EQ(ropes->Radius2(), 0.0);
    EXPECT_EQ(ropes->Ropes().Table().Cells(), 1);
  }
}

TEST(ShadowingFilter, OutlivesWhatItWasMadeFrom) {
  std::optional<ShadowingCalculator> detector = Detector();
  const ShadowingFilter filter(*detector, {});
  detector->SetAllGeometryTolerances(-1000.0);
  detector.reset();
  ExpectVerdictsOfTheFormulas(filter, Detector(), Paths(700));
}

TEST(ShadowingFilter, JudgesPathsInWaterRightAndMostlySurely) {
  const ShadowingFilter filter(Detector(), {});
  AnswerTally holdDown;
  AnswerTally support;
  for (LightPath path : PathsAtHardware(Detector(), 41).Make(20000)) {
    path.LightPathType = kWater;
    const WaterSegmentViews views = ViewsOf(path, ShapeOfType(kWater));
    const WaterSegments segments = views.Copy();
    holdDown.Add(filter.JudgeHoldDownInWater(views.first, views.second),
                 CheckForAVHDRopeShadowing(Detector().GetAVHDRopes(), 150.0,
                                           segments, eDiagnostics::kSilent),
                 path.StartPos);
    support.Add(filter.JudgeSupportInWater(views.first, views.second),
                CheckForSupportRopeShadowing(Detector().GetSupportRopes(),
                                             Detector().GetAVHDRopes(), 150.0,
                                             segments, eDiagnostics::kSilent),
                path.StartPos);
  }
  holdDown.Expect(0.2);
  support.Expect(0.2);
}

TEST(ShadowingFilter, KnowsTheHeightsAtWhichRopesEnd) {
  const ShadowingFilter filter(Detector(), {});
  EXPECT_EQ(filter.HoldDownEndHeight(),
            Detector().GetAVHDRopes().AVHDRopeEndPoints.front().Z());
  EXPECT_EQ(filter.SupportFootHeight(),
            Detector().GetSupportRopes().SupportRopePositions.front().Z());
  EXPECT_EQ(filter.SurfacePoints().CountItems(),
            Detector().GetAVHDRopes().AVHDRopeSurfacePoints.size());
  EXPECT_EQ(filter.Anchors().CountItems(), 2U);
  EXPECT_EQ(filter.BellyPlates().CountItems(), 2U);
}

TEST(ShadowingFilter, SeesHoldDownRopesOnlyInARunThatHasThem) {
  EXPECT_TRUE(ShadowingFilter(Detector(), {}).HasRopesToEnter());
  const ShadowingCalculator without = InRun(Only({eComponent::kSupportRope}));
  EXPECT_FALSE(ShadowingFilter(without, {}).HasRopesToEnter());
}

TEST(ShadowingFilter, BlocksNothingBeforeTheFirstRun) {
  const ShadowingCalculator empty;
  const ShadowingFilter filter(empty, {});
  EXPECT_EQ(ExpectVerdictsOfTheFormulas(filter, empty, Paths(70)), 0);
}

TEST(ShadowingFilter, KnowsWhetherThePlatesLetTheVectorLibraryWarn) {
  EXPECT_FALSE(ShadowingFilter(Detector(), {}).HasWarningPlates());
  Testing::Tables tables = Only({eComponent::kBellyPlate});
  tables.SetPositions("GEO_LOCATIONS", "plates", {{0, 0, 600}});
  EXPECT_TRUE(ShadowingFilter(InRun(tables), {}).HasWarningPlates());
  Testing::SwitchOff(tables, eComponent::kBellyPlate);
  EXPECT_FALSE(ShadowingFilter(InRun(tables), {}).HasWarningPlates());
}

}  // namespace
}  // namespace ZARN::DU
