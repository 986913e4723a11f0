#include "du/fast/ShadowingFilter.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <map>
#include <optional>
#include <vector>

#include "du/hardware/AVHDRopeShadowing.hpp"
#include "tests/du/Answers.hpp"
#include "tests/du/Detector.hpp"
#include "tests/du/Formulas.hpp"
#include "tests/du/Paths.hpp"
#include "tests/du/PathsAtHardware.hpp"
#include "tests/property/Random.hpp"

namespace ZARN::DU {
namespace {

using eComponent = eShadowingComponent;
using Testing::AnswerTally;
using Testing::Formulas;
using Testing::InRun;
using Testing::OneCrossing;
using Testing::Only;
using Testing::PathsAtHardware;
using Testing::Random;
using Testing::VariedDetector;
using KnownRopes = ShadowingFilter::KnownRopes;

/// Expect a filter to give the verdicts of the formulas, and return for how
/// many paths it called a formula.
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
  return PathsAtHardware(VariedDetector(), 40)
      .Make(static_cast<std::size_t>(count));
}

TEST(ShadowingFilter, FindsWhatTheFormulasFindAndRarelyCallsThem) {
  const ShadowingFilter filter(VariedDetector().GetHardware(), {});
  constexpr int kPaths = 4000;
  const int open =
      ExpectVerdictsOfTheFormulas(filter, VariedDetector(), Paths(kPaths));
  EXPECT_LT(open, kPaths / 5);
  EXPECT_GT(open, 0);  // paths at a limit
}

TEST(ShadowingFilter, FindsTheSameWithAnyLayerOff) {
  for (int off = 0; off < 8; ++off) {
    SCOPED_TRACE(off);
    const ShadowingLayers layers = {(off & 1) == 0, (off & 2) == 0,
                                    (off & 4) == 0};
    const ShadowingFilter filter(VariedDetector().GetHardware(), layers);
    const int open =
        ExpectVerdictsOfTheFormulas(filter, VariedDetector(), Paths(300));
    // Without algebra every rope that can be met is left to its formula.
    EXPECT_EQ(open > 150, !layers.algebra);
  }
}

TEST(ShadowingFilter, FindsTheSameForEachComponentAlone) {
  for (const eComponent component : kShadowingComponents) {
    SCOPED_TRACE(NameOf(component));
    const ShadowingCalculator detector = InRun(Only({component}));
    const ShadowingFilter filter(detector.GetHardware(), {});
    ExpectVerdictsOfTheFormulas(filter, detector, Paths(700));
    EXPECT_EQ(filter.HasHoldDownRopes(), component == eComponent::kAVHDRope);
    EXPECT_EQ(filter.HasSupportRopes(), component == eComponent::kSupportRope);
  }
}

TEST(ShadowingFilter, SkipsTheLayersThatAreOff) {
  const ShadowingFilter all(VariedDetector().GetHardware(), {});
  EXPECT_NE(all.Map().At(Testing::kFreeSpot), ShadowMap::kNothingKnown);
  EXPECT_GT(all.HoldDownRopes().Radius2(), 0.0);
  EXPECT_GT(all.HoldDownRopes().Ropes().Table().Cells(), 1);

  const ShadowingFilter none(VariedDetector().GetHardware(),
                             {false, false, false});
  EXPECT_EQ(none.Map().At(Testing::kFreeSpot), ShadowMap::kNothingKnown);
  for (const VerticalRopeFilter* const ropes :
       {&none.HoldDownRopes(), &none.SupportRopes(),
        &none.EnteredHoldDownRopes(), &none.LeftHoldDownRopes()}) {
    EXPECT_EQ(ropes->Radius2(), 0.0);
    EXPECT_EQ(ropes->Ropes().Table().Cells(), 1);
  }
}

TEST(ShadowingFilter, OutlivesWhatItWasBuiltFrom) {
  std::optional<ShadowingCalculator> detector = VariedDetector();
  const ShadowingFilter filter(detector->GetHardware(), {});
  detector->SetAllGeometryTolerances(-1000.0);
  detector.reset();
  ExpectVerdictsOfTheFormulas(filter, VariedDetector(), Paths(700));
}

TEST(ShadowingFilter, JudgesPathsInWaterCorrectlyAndIsMostlySure) {
  const ShadowingFilter filter(VariedDetector().GetHardware(), {});
  AnswerTally holdDown;
  AnswerTally support;
  for (LightPath path : PathsAtHardware(VariedDetector(), 41).Make(20000)) {
    path.LightPathType = kWater;
    const WaterSegmentViews views = ViewsOf(path, ShapeOfType(kWater));
    const WaterSegments segments = views.Copy();
    holdDown.Add(
        filter.JudgeHoldDownInWater(views.first, views.second),
        CheckForAVHDRopeShadowing(VariedDetector().GetAVHDRopes(), 150.0,
                                  segments, eDiagnostics::kSilent),
        path.StartPos);
    support.Add(
        filter.JudgeSupportInWater(views.first, views.second),
        CheckForSupportRopeShadowing(VariedDetector().GetSupportRopes(),
                                     VariedDetector().GetAVHDRopes(), 150.0,
                                     segments, eDiagnostics::kSilent),
        path.StartPos);
  }
  holdDown.Expect(0.2);
  support.Expect(0.2);
}

TEST(ShadowingFilter, KnowsTheHeightsAtWhichRopesEnd) {
  const ShadowingFilter filter(VariedDetector().GetHardware(), {});
  EXPECT_EQ(filter.HoldDownEndHeight(),
            VariedDetector().GetAVHDRopes().AVHDRopeEndPoints.front().Z());
  EXPECT_EQ(
      filter.SupportFootHeight(),
      VariedDetector().GetSupportRopes().SupportRopePositions.front().Z());
  EXPECT_EQ(filter.SurfacePoints().CountPoints(),
            VariedDetector().GetAVHDRopes().AVHDRopeSurfacePoints.size());
  EXPECT_EQ(filter.Anchors().CountPoints(), 2U);
  EXPECT_EQ(filter.BellyPlates().AllItems().size(), 2U);
}

TEST(ShadowingFilter, HasTheVerdictsOfTheFormulasWhereMuchOfTheMapIsUnsure) {
  // Thousands of anchors, whose borders cover much of the vessel.
  Testing::Random random(43);
  std::vector<TVector3> anchors;
  std::generate_n(std::back_inserter(anchors), 3000,
                  [&] { return 5800.0 * random.Direction(); });
  Testing::Tables tables = Only({eComponent::kNCDAnchor});
  tables.SetPositions("GEO_LOCATIONS", "anchors", anchors);
  const ShadowingCalculator detector = InRun(tables);
  const ShadowingFilter filter(detector.GetHardware(), {});
  const auto& codes = filter.Map().Codes();
  const auto unsure =
      std::count_if(codes.begin(), codes.end(), [](ShadowMap::Code code) {
        return ShadowMap::AnswerOf(code, eMappedTest::kNCDAnchor) ==
               eAnswer::kUnsure;
      });
  EXPECT_GT(unsure, static_cast<std::ptrdiff_t>(codes.size()) / 10);
  EXPECT_EQ(ExpectVerdictsOfTheFormulas(filter, detector, Paths(500)), 0);
}

TEST(ShadowingFilter, TestsAllAnchorsIfNoTreeCanBeBuilt) {
  // So far away that neighbouring doubles are a kilometre apart.
  Testing::Tables tables = Only({eComponent::kNCDAnchor});
  tables.SetPositions("GEO_LOCATIONS", "anchors", {{1e19, 0, 0}});
  tables.Set("SOLID", "anchor", "half_z", 1e19);
  const ShadowingCalculator detector = InRun(tables);
  const ShadowingFilter filter(detector.GetHardware(), {});
  std::vector<LightPath> paths;
  int blocked = 0;
  for (int i = 0; i < 100; ++i) {
    const double x = 1000 + i;
    const TVector3 point(x, 0, std::sqrt(5860.0 * 5860.0 - x * x));
    paths.push_back(OneCrossing(point, point.Unit()));
    blocked += filter.Anchors().HasPointNear(point) ? 1 : 0;
  }
  EXPECT_GT(blocked, 0);
  EXPECT_LT(blocked, 100);
  ExpectVerdictsOfTheFormulas(filter, detector, paths);
}

TEST(ShadowingFilter, UsesHoldDownRopesOnlyInARunThatHasThem) {
  EXPECT_TRUE(
      ShadowingFilter(VariedDetector().GetHardware(), {}).HasRopesToEnter());
  const ShadowingCalculator without = InRun(Only({eComponent::kSupportRope}));
  EXPECT_FALSE(ShadowingFilter(without.GetHardware(), {}).HasRopesToEnter());
}

TEST(ShadowingFilter, BlocksNothingBeforeTheFirstRun) {
  const ShadowingCalculator empty;
  const ShadowingFilter filter(empty.GetHardware(), {});
  EXPECT_EQ(ExpectVerdictsOfTheFormulas(filter, empty, Paths(70)), 0);
}

/// The verdict of the formulas on a segment for which the answers of the
/// vertical ropes are known.
///
/// @pre if the segment is above the ends, so is @p point
eComponent FindByFormulasAt(const ShadowingCalculator& detector,
                            const TVector3& point, const KnownRopes& ropes) {
  const WaterSegments segments = Testing::SegmentsOf(OneCrossing(point));
  const auto isOn = [&](eComponent component) {
    return detector.IsReady(component);
  };
  if (ropes.isAboveEnds && isOn(eComponent::kAVHDRope) &&
      CheckForAVHDRopeShadowing(detector.GetAVHDRopes(),
                                detector.GetAVHDRopeTolerance(), segments,
                                eDiagnostics::kSilent)) {
    return eComponent::kAVHDRope;
  }
  if (ropes.isAtSupportRope) return eComponent::kSupportRope;
  if (isOn(eComponent::kBellyPlate) &&
      CheckForBellyPlateShadowing(
          detector.GetBellyPlates(), detector.GetBellyPlateTolerance(),
          detector.GetOuterAVRadius(), segments, eDiagnostics::kSilent)) {
    return eComponent::kBellyPlate;
  }
  if (isOn(eComponent::kNCDAnchor) &&
      CheckForNCDAnchorShadowing(detector.GetNCDAnchors(),
                                 detector.GetNCDAnchorTolerance(), segments)) {
    return eComponent::kNCDAnchor;
  }
  if (ropes.isFirst && isOn(eComponent::kAVPipe) &&
      CheckForAVPipeShadowing(segments)) {
    return eComponent::kAVPipe;
  }
  return isOn(eComponent::kNeckBoss) &&
                 CheckForNeckBossShadowing(detector.GetNeckBoss(), segments)
             ? eComponent::kNeckBoss
             : eComponent::kNone;
}

/// The cells of the map in which a point may be found, in double and in single
/// precision.
std::array<std::size_t, 2> CellsOf(const ShadowMap& map,
                                   const TVector3& point) {
  const int inSingle =
      map.CellOf(static_cast<float>(point.X()), static_cast<float>(point.Y()),
                 static_cast<float>(point.Z()));
  return {map.CellAt(point), static_cast<std::size_t>(inSingle)};
}

TEST(ShadowingFilter, FindsAtACrossingWhatTheFormulasFindThere) {
  Random random(86);
  std::vector<TVector3> points;
  for (const LightPath& path : Paths(3000)) {
    points.push_back(path.AVPoint1);
    points.push_back(path.AVPoint2);
  }
  for (int i = 0; i < 100; ++i) {
    points.push_back(
        random.Pick(VariedDetector().GetNCDAnchors().NCDAnchorPositions) +
        random.Uniform(0, 250) * random.Direction());
  }
  const ShadowingFilter filter(VariedDetector().GetHardware(), {});
  std::map<eComponent, int> found;
  for (TVector3& point : points) {
    point.SetMag(VariedDetector().GetOuterAVRadius() +
                 random.Uniform(-0.99, 0.99));
    const bool mayBeAboveEnds = !(filter.HoldDownEndHeight() > point.Z());
    for (int i = 0; i < 8; ++i) {
      const KnownRopes ropes = {(i & 1) != 0, (i & 2) != 0, (i & 4) != 0};
      if (ropes.isAboveEnds && !mayBeAboveEnds) continue;
      const eComponent expected =
          FindByFormulasAt(VariedDetector(), point, ropes);
      ++found[expected];
      for (const std::size_t cell : CellsOf(filter.Map(), point)) {
        ASSERT_NE(cell, filter.Map().OffMap());
        EXPECT_EQ(filter.FindAtCrossing(point, cell, ropes), expected)
            << ::testing::PrintToString(point) << " " << i;
      }
    }
  }
  for (const eComponent component : kShadowingComponents) {
    EXPECT_GT(found[component], 50) << NameOf(component);
  }
  EXPECT_GT(found[eComponent::kNone], 50);
}

TEST(ShadowingFilter, FindsWithinABoundOnlyWhatHoldsForEveryPointInIt) {
  Random random(88);
  const ShadowingFilter filter(VariedDetector().GetHardware(), {});
  constexpr double kError = 2.0;  // mm; a large one meets many edges
  int known = 0;
  int open = 0;
  std::map<eComponent, int> found;
  for (const LightPath& path : Paths(4000)) {
    TVector3 centre = path.AVPoint1;
    centre.SetMag(VariedDetector().GetOuterAVRadius());
    const bool isAboveEnds =
        filter.HoldDownEndHeight() < centre.Z() - 2.0 * kError;
    const KnownRopes ropes = {isAboveEnds, isAboveEnds && random.Chance(0.1),
                              random.Chance(0.5)};
    const std::size_t cell = filter.Map().CellAt(centre);
    const auto answer = filter.FindAtCrossing(centre, kError, cell, ropes);
    ++(answer.has_value() ? known : open);
    if (!answer.has_value()) continue;
    ++found[*answer];
    for (int i = 0; i < 10; ++i) {
      TVector3 point = centre + kError * random.Direction();
      // The items of the cell are those of its own points.
      if (filter.Map().CellAt(point) != cell) continue;
      EXPECT_EQ(FindByFormulasAt(VariedDetector(), point, ropes), *answer)
          << ::testing::PrintToString(point);
    }
    EXPECT_EQ(filter.FindAtCrossing(centre, 1e-6, cell, ropes), answer);
  }
  EXPECT_GT(known, 3000);
  EXPECT_GT(open, 20);
  EXPECT_GT(found.size(), 4U);
}

TEST(ShadowingFilter, FindsAtACrossingTheVerdictOnTheWholePath) {
  // Here the ropes' known answers are the true ones.
  const ShadowingFilter filter(VariedDetector().GetHardware(), {});
  int atSupportRopes = 0;
  for (const LightPath& path : Paths(8000)) {
    const LightPath crossing = OneCrossing(path.AVPoint1, path.FinalDirection);
    const Formulas formulas(VariedDetector(), crossing);
    const WaterSegmentViews views =
        ViewsOf(crossing, ShapeOfType(crossing.LightPathType));
    const double z = views.first.point.Z();
    const bool isAboveEnds = !(filter.HoldDownEndHeight() > z);
    if (!isAboveEnds && formulas(eComponent::kAVHDRope, views.first)) continue;
    const bool isAtSupportRope =
        z > filter.SupportFootHeight() &&
        formulas(eComponent::kSupportRope, views.first);
    atSupportRopes += isAtSupportRope ? 1 : 0;
    for (const std::size_t cell : CellsOf(filter.Map(), crossing.AVPoint1)) {
      EXPECT_EQ(filter.FindAtCrossing(crossing.AVPoint1, cell,
                                      {isAboveEnds, isAtSupportRope, true}),
                formulas.Find())
          << ::testing::PrintToString(crossing.AVPoint1);
    }
  }
  EXPECT_GT(atSupportRopes, 100);
}

TEST(ShadowingFilter, FindsTheFirstOfTheComponentsAtACrossing) {
  const auto find = [](const std::vector<eComponent>& components,
                       const KnownRopes& ropes) {
    const ShadowingFilter filter(InRun(Only(components)).GetHardware(), {});
    const TVector3& point = Testing::kBlockedSpot;
    return filter.FindAtCrossing(point, filter.Map().CellAt(point), ropes);
  };
  const std::vector<eComponent> all(kShadowingComponents.begin(),
                                    kShadowingComponents.end());
  EXPECT_EQ(find(all, {true, true, true}), eComponent::kAVHDRope);
  EXPECT_EQ(find(all, {true, false, true}), eComponent::kAVHDRope);
  EXPECT_EQ(find(all, {false, true, true}), eComponent::kSupportRope);
  EXPECT_EQ(find(all, {false, false, true}), eComponent::kBellyPlate);
  const std::vector<eComponent> last = {
      eComponent::kNCDAnchor, eComponent::kAVPipe, eComponent::kNeckBoss};
  EXPECT_EQ(find(last, {true, true, true}), eComponent::kSupportRope);
  EXPECT_EQ(find(last, {true, false, true}), eComponent::kNCDAnchor);
  // The pipes are tested only at the first crossing of a path.
  const std::vector<eComponent> lower = {eComponent::kAVPipe,
                                         eComponent::kNeckBoss};
  EXPECT_EQ(find(lower, {true, false, true}), eComponent::kAVPipe);
  EXPECT_EQ(find(lower, {true, false, false}), eComponent::kNeckBoss);
  EXPECT_EQ(find({eComponent::kAVPipe}, {true, false, false}),
            eComponent::kNone);
  EXPECT_EQ(find({eComponent::kAVHDRope}, {false, false, true}),
            eComponent::kNone);
}

}  // namespace
}  // namespace ZARN::DU
