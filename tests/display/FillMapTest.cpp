#include "display/FillMap.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/scan/ScanTest.hpp"

namespace ZARN::Display {
namespace {

using DU::eVerdict;

TEST(MarksOf, HaveTheDirectionFromThePointOfView) {
  MapVerdicts verdicts;
  verdicts.verdicts = {eVerdict::kNCDAnchor, eVerdict::kTotalReflection};
  const std::vector<TVector3> pmts = {{0, 0, 8300}, {8300, 0, 0}};
  const std::vector<MapMark> marks = MarksOf(pmts, verdicts, {0, 0, 3000});
  ASSERT_EQ(marks.size(), 2U);
  EXPECT_EQ(marks[0].direction, TVector3(0, 0, 5300));
  EXPECT_EQ(marks[1].direction, TVector3(8300, 0, -3000));
  EXPECT_EQ(marks[0].verdict, eVerdict::kNCDAnchor);
  EXPECT_EQ(marks[1].verdict, eVerdict::kTotalReflection);
  EXPECT_EQ(marks[1].before, eVerdict::kClear);
}

TEST(MarksOf, HaveBothVerdictsOfAComparison) {
  MapVerdicts verdicts;
  verdicts.verdicts = {eVerdict::kClear};
  verdicts.before = {eVerdict::kAVPipe};
  const std::vector<MapMark> marks = MarksOf({{0, 0, 8300}}, verdicts, {});
  ASSERT_EQ(marks.size(), 1U);
  EXPECT_EQ(marks[0].before, eVerdict::kAVPipe);
  EXPECT_EQ(marks[0].verdict, eVerdict::kClear);
}

TEST(MarksOf, HaveTheCountsOfSeveralEvents) {
  MapVerdicts verdicts;
  verdicts.paths = {0, 5};
  verdicts.shadowed = {0, 2};
  const std::vector<MapMark> marks =
      MarksOf({{0, 0, 8300}, {8300, 0, 0}}, verdicts, {});
  ASSERT_EQ(marks.size(), 2U);
  EXPECT_EQ(marks[1].paths, 5U);
  EXPECT_EQ(marks[1].shadowed, 2U);
}

TEST(PixelsOf, PutTheVerdictsAtTheirPixels) {
  MapVerdicts verdicts;
  verdicts.verdicts = {eVerdict::kAVPipe, eVerdict::kNeckBoss};
  const MapPixels pixels = PixelsOf({3, 2}, {1, 5}, verdicts);
  EXPECT_EQ(pixels.columns, 3U);
  EXPECT_EQ(pixels.rows, 2U);
  EXPECT_EQ(pixels.verdicts,
            (std::vector<eVerdict>{eVerdict::kClear, eVerdict::kAVPipe,
                                   eVerdict::kClear, eVerdict::kClear,
                                   eVerdict::kClear, eVerdict::kNeckBoss}));
  EXPECT_TRUE(pixels.before.empty());
  verdicts.before = {eVerdict::kClear, eVerdict::kAVHDRope};
  EXPECT_EQ(PixelsOf({3, 2}, {1, 5}, verdicts).before[5], eVerdict::kAVHDRope);
}

TEST(PanelTolerances, AreSeventeenFrom10To300WithThatOfTheRun) {
  for (const double tolerance : {150.0, 10.0, 300.0, 11.0, 299.5, 155.0}) {
    const std::vector<double> found = PanelTolerances(tolerance);
    EXPECT_EQ(found.size(), 17U);
    EXPECT_EQ(found.front(), 10.0);
    EXPECT_EQ(found.back(), 300.0);
    EXPECT_TRUE(std::is_sorted(found.begin(), found.end()));
    EXPECT_EQ(std::count(found.begin(), found.end(), tolerance), 1);
  }
}

TEST(PanelTolerances, ReplaceOnlyTheNearest) {
  const std::vector<double> found = PanelTolerances(150.0);
  for (std::size_t i = 0; i < found.size(); ++i) {
    EXPECT_EQ(found[i],
              i == 8 ? 150.0 : 10.0 + 18.125 * static_cast<double>(i));
  }
}

TEST(PanelTolerances, ReachToOneOutside) {
  for (const double tolerance : {-40.0, 0.0, 301.0, 2500.0}) {
    const std::vector<double> found = PanelTolerances(tolerance);
    EXPECT_EQ(found.size(), 17U);
    EXPECT_EQ(found.front(), std::min(10.0, tolerance));
    EXPECT_EQ(found.back(), std::max(300.0, tolerance));
    EXPECT_TRUE(std::is_sorted(found.begin(), found.end()));
  }
}

using ComponentStates = Testing::ScanTest;

TEST_F(ComponentStates, TellWhatTheTablesGive) {
  for (const eComponentState state : ComponentStatesOf(shadowing_)) {
    EXPECT_EQ(state, eComponentState::kTested);
  }
  const auto none = ComponentStatesOf(
      Testing::InRun(Testing::Only({DU::eShadowingComponent::kBellyPlate})));
  for (std::size_t i = 0; i < none.size(); ++i) {
    EXPECT_EQ(
        none[i] == eComponentState::kNotLoaded,
        DU::kShadowingComponents[i] != DU::eShadowingComponent::kBellyPlate);
  }
  EXPECT_EQ(none[2], eComponentState::kTested);
}

}  // namespace
}  // namespace ZARN::Display
