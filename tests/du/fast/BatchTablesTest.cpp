#include "du/fast/BatchTables.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "du/geometry/CylinderCrossing.hpp"
#include "tests/du/PathsAtHardware.hpp"

namespace ZARN::DU {
namespace {

using eComponent = eShadowingComponent;

constexpr BatchVerdict kNone = BatchVerdictOf(eComponent::kNone);

/// The verdicts of a batch, in the order in which they take precedence.
std::vector<BatchVerdict> InOrder() {
  std::vector<BatchVerdict> verdicts = {kOpenVerdict};
  for (const eComponent component : kShadowingComponents) {
    verdicts.push_back(BatchVerdictOf(component));
  }
  verdicts.push_back(kNone);
  return verdicts;
}

TEST(EarlierOf, GivesTheComponentThatIsTestedFirst) {
  const std::vector<BatchVerdict> verdicts = InOrder();
  for (std::size_t i = 0; i < verdicts.size(); ++i) {
    for (std::size_t k = 0; k < verdicts.size(); ++k) {
      EXPECT_EQ(EarlierOf(verdicts[i], verdicts[k]), verdicts[std::min(i, k)])
          << i << ", " << k;
    }
  }
}

TEST(RopeAnswer, KeepsWhatItWasBuiltFrom) {
  for (const eAnswer answer :
       {eAnswer::kClear, eAnswer::kUnsure, eAnswer::kBlocks}) {
    for (const bool isBelowEnds : {false, true}) {
      const RopeAnswer ropes(answer, isBelowEnds);
      EXPECT_TRUE(ropes.IsKnown());
      EXPECT_EQ(ropes.Answer(), answer);
      EXPECT_EQ(ropes.IsBelowEnds(), isBelowEnds);
      EXPECT_LT(ropes.Code(), RopeAnswer::kCount);
      EXPECT_EQ(RopeAnswer::OfCode(ropes.Code()).Answer(), answer);
    }
  }
  EXPECT_FALSE(RopeAnswer().IsKnown());
  EXPECT_EQ(RopeAnswer().Answer(), eAnswer::kUnsure);
}

/// The code of a map cell in which one test has the given answer and all others
/// are clear.
ShadowMap::Code CellWith(eMappedTest test, eAnswer answer) {
  std::size_t code = 0;
  while (kCellAnswers[code][static_cast<std::size_t>(test)] != answer) ++code;
  return static_cast<ShadowMap::Code>(code);
}

class BatchTablesTest : public ::testing::Test {
 protected:
  const ShadowingFilter filter_{
      Testing::InRun(Testing::VariedTables()).GetHardware(), {}};
  const BatchTables tables_{filter_};
};

constexpr RopeAnswer kClearBelow(eAnswer::kClear, true);
constexpr RopeAnswer kClearAbove(eAnswer::kClear, false);

TEST_F(BatchTablesTest, GiveTheFirstComponentThatBlocksACrossing) {
  const auto cell = CellWith(eMappedTest::kBellyPlate, eAnswer::kBlocks);
  constexpr auto kPlate = BatchVerdictOf(eComponent::kBellyPlate);
  EXPECT_EQ(tables_.OnCrossing(kClearAbove, cell, true), kPlate);
  EXPECT_EQ(tables_.OnCrossing(kClearBelow, cell, false), kPlate);
  EXPECT_EQ(tables_.OnCrossing({eAnswer::kBlocks, true}, cell, true),
            BatchVerdictOf(eComponent::kAVHDRope));
  EXPECT_EQ(tables_.OnCrossing({eAnswer::kBlocks, false}, cell, true),
            BatchVerdictOf(eComponent::kSupportRope));
  EXPECT_EQ(tables_.OnCrossing(kClearAbove, 0, true), kNone);
}

TEST_F(BatchTablesTest, LeaveOpenWhatAnEarlierComponentMayBlock) {
  const auto cell = CellWith(eMappedTest::kNCDAnchor, eAnswer::kUnsure);
  EXPECT_EQ(tables_.OnCrossing(kClearAbove, cell, true), kOpenVerdict);
  EXPECT_EQ(tables_.OnCrossing({eAnswer::kUnsure, false}, 0, true),
            kOpenVerdict);
  EXPECT_EQ(tables_.OnCrossing(RopeAnswer(), 0, true), kOpenVerdict);
  EXPECT_EQ(tables_.OnCrossing({eAnswer::kBlocks, true}, cell, true),
            BatchVerdictOf(eComponent::kAVHDRope));
}

TEST_F(BatchTablesTest, TestSurfaceRopesOnlyAboveTheEndsOfVerticalRopes) {
  const auto cell = CellWith(eMappedTest::kHoldDownSurface, eAnswer::kBlocks);
  EXPECT_EQ(tables_.OnCrossing(kClearAbove, cell, false),
            BatchVerdictOf(eComponent::kAVHDRope));
  EXPECT_EQ(tables_.OnCrossing(kClearBelow, cell, false), kNone);
}

TEST_F(BatchTablesTest, LetThePipesBlockOnlyFirstSegments) {
  const auto cell = CellWith(eMappedTest::kAVPipe, eAnswer::kBlocks);
  EXPECT_EQ(tables_.OnCrossing(kClearAbove, cell, true),
            BatchVerdictOf(eComponent::kAVPipe));
  EXPECT_EQ(tables_.OnCrossing(kClearAbove, cell, false), kNone);
}

TEST_F(BatchTablesTest, LeaveRopesOpenAtHeightsThatARayMayMiss) {
  // In a row, the crossing point of a ray may be wrong by this, mm.
  const double error = CrossingBands<float>::kPathError * 5860.0;
  const BatchGeometry& geometry = tables_.Geometry();
  const double ends = filter_.HoldDownEndHeight();
  EXPECT_LT(geometry.belowEnds, ends - error);
  EXPECT_GT(geometry.aboveEnds, ends + error);
  const double feet = filter_.SupportFootHeight();
  EXPECT_LT(geometry.belowFeet, feet - error);
  EXPECT_GT(geometry.aboveFeet, feet + error);
}

TEST_F(BatchTablesTest, JudgePathsInWaterOnlyByTheRopes) {
  const auto find = [&](eAnswer answer) {
    // Each answer is that of some azimuth cell, or of one of the entries after
    // the tables.
    int place = 0;
    while (!(tables_.RopesAt(place).IsKnown() &&
             tables_.RopesAt(place).Answer() == answer)) {
      ++place;
    }
    return place;
  };
  const int clear = find(eAnswer::kClear);
  const int unsure = find(eAnswer::kUnsure);
  const int blocks = find(eAnswer::kBlocks);
  const auto verdict = [&](int entered, int left, int seenEntered,
                           int seenLeft) {
    WaterBlock block;
    block.entered.at[0] = entered;
    block.left.at[0] = left;
    block.seenEntered.at[0] = seenEntered;
    block.seenLeft.at[0] = seenLeft;
    return tables_.InWater(block, 0);
  };
  constexpr auto kHoldDown = BatchVerdictOf(eComponent::kAVHDRope);
  constexpr auto kSupport = BatchVerdictOf(eComponent::kSupportRope);
  EXPECT_EQ(verdict(clear, clear, clear, clear), kNone);
  EXPECT_EQ(verdict(blocks, unsure, unsure, clear), kHoldDown);
  EXPECT_EQ(verdict(clear, blocks, blocks, clear), kHoldDown);
  EXPECT_EQ(verdict(clear, clear, unsure, blocks), kSupport);
  EXPECT_EQ(verdict(clear, unsure, blocks, blocks), kOpenVerdict);
  EXPECT_EQ(verdict(clear, clear, clear, unsure), kOpenVerdict);
  EXPECT_EQ(verdict(clear, clear, tables_.Geometry().open, clear),
            kOpenVerdict);
}

}  // namespace
}  // namespace ZARN::DU
