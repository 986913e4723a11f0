#include "du/fast/ShadowMap.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "du/fast/NeckBossCap.hpp"
#include "du/geometry/OctahedralDirection.hpp"
#include "du/geometry/PointTree.hpp"
#include "tests/du/Answers.hpp"
#include "tests/du/Neighbours.hpp"
#include "tests/du/fast/MapTests.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::DU {
namespace {

using Testing::Above;
using Testing::AnswerTally;
using Testing::Below;
using Testing::kInfinity;
using Testing::kRadius;
using Testing::kShell;
using Testing::SmallBallTest;
using Testing::TwoTests;

/// All answers of one cell.
std::vector<eAnswer> AnswersOf(ShadowMap::Code code) {
  std::vector<eAnswer> answers;
  for (std::size_t i = 0; i < kMappedTests; ++i) {
    answers.push_back(ShadowMap::AnswerOf(code, static_cast<eMappedTest>(i)));
  }
  return answers;
}

/// Hold the answers of a map against both tests; @p codeAt gives those of a
/// point. At most @p mostUnsure of those anywhere may be unsure.
template <class CodeAt>
void ExpectSoundAnswers(const TwoTests& tests, const CodeAt& codeAt,
                        double mostUnsure) {
  const auto ask = [&](const std::vector<TVector3>& points) {
    std::array<AnswerTally, 2> tallies;
    for (const TVector3& point : points) {
      const ShadowMap::Code code = codeAt(point);
      tallies[0].Add(ShadowMap::AnswerOf(code, eMappedTest::kNCDAnchor),
                     tests.IsSpot(point), point);
      tallies[1].Add(ShadowMap::AnswerOf(code, eMappedTest::kNeckBoss),
                     tests.IsCap(point), point);
      // What is off never blocks.
      EXPECT_EQ(ShadowMap::AnswerOf(code, eMappedTest::kBellyPlate),
                eAnswer::kClear);
    }
    return tallies;
  };
  for (const AnswerTally& tally : ask(TwoTests::PointsAnywhere(20000))) {
    tally.Expect(mostUnsure);
  }
  for (const AnswerTally& tally : ask(tests.PointsAtLimits(50000))) {
    tally.ExpectNoneWrong();
  }
}

TEST(ShadowMap, IsNeverWrongOfAPointInTheShellAndMostlySure) {
  const TwoTests tests;
  const auto expect = [&](int cells, double mostUnsure) {
    const ShadowMap map = tests.Map(cells);
    ExpectSoundAnswers(
        tests, [&](const TVector3& point) { return map.At(point); },
        mostUnsure);
  };
  // The fewer cells, the longer the borders.
  expect(64, 0.35);
  expect(128, 0.15);
  expect(1024, 0.02);
}

TEST(ShadowMap, IsNeverWrongWhereACellIsFoundInSinglePrecision) {
  const TwoTests tests;
  const ShadowMap map = tests.Map(1024);
  ExpectSoundAnswers(
      tests,
      [&](const TVector3& point) {
        return map.Codes()[static_cast<std::size_t>(map.CellOf(
            static_cast<float>(point.X()), static_cast<float>(point.Y()),
            static_cast<float>(point.Z())))];
      },
      0.02);
}

TEST(ShadowMap, KnowsNothingOffTheShell) {
  const ShadowMap map = TwoTests().Map(128);
  const auto isKnown = [&](double z) {
    return map.At({0, 0, z}) != ShadowMap::kNothingKnown;
  };
  EXPECT_TRUE(isKnown(kRadius));
  for (const double sign : {-1.0, 1.0}) {
    EXPECT_TRUE(isKnown(sign * Below(kRadius + kShell)));
    EXPECT_FALSE(isKnown(sign * (kRadius + kShell)));
    EXPECT_TRUE(isKnown(sign * Above(kRadius - kShell)));
    EXPECT_FALSE(isKnown(sign * (kRadius - kShell)));
  }
  for (const double z : {0.0, 1e-170, 1e9, 1e200, kInfinity, std::nan("")}) {
    EXPECT_FALSE(isKnown(z)) << z;
  }
  EXPECT_EQ(AnswersOf(ShadowMap::kNothingKnown),
            std::vector<eAnswer>(kMappedTests, eAnswer::kUnsure));
}

TEST(ShadowMap, TellsTheSquaresOfItsShell) {
  const ShadowMap map = TwoTests().Map(128);
  EXPECT_EQ(map.Lowest2(), (kRadius - kShell) * (kRadius - kShell));
  EXPECT_EQ(map.Highest2(), (kRadius + kShell) * (kRadius + kShell));
}

TEST(ShadowMap, KnowsNothingOfASphereThatItCannotTrust) {
  const TwoTests tests;
  const auto isKnown = [&](double radius) {
    const ShadowMap map = tests.Map(16, radius);
    const bool isMade = map.Cells() == 16;
    EXPECT_EQ(map.At({0, 0, radius}) != ShadowMap::kNothingKnown, isMade);
    EXPECT_EQ(map.Codes().size(), isMade ? 16U * 16U + 1U : 1U);
    EXPECT_EQ(map.Codes().back(), ShadowMap::kNothingKnown);
    return isMade;
  };
  EXPECT_TRUE(isKnown(10.0));
  EXPECT_FALSE(isKnown(Below(10.0)));
  EXPECT_TRUE(isKnown(1e5));
  EXPECT_FALSE(isKnown(Above(1e5)));
  for (const double radius : {0.0, -5860.0, 1e-170, kInfinity, std::nan("")}) {
    EXPECT_FALSE(isKnown(radius));
  }
  EXPECT_EQ(ShadowMap().At({0, 0, 0}), ShadowMap::kNothingKnown);
  EXPECT_EQ(ShadowMap().Codes(),
            std::vector<ShadowMap::Code>{ShadowMap::kNothingKnown});
}

TEST(ShadowMap, IsClearEverywhereWithoutATest) {
  const ShadowMap map(kRadius, {}, 16);
  for (std::size_t cell = 0; cell < 256; ++cell) {
    ASSERT_EQ(AnswersOf(map.Codes()[cell]),
              std::vector<eAnswer>(kMappedTests, eAnswer::kClear));
  }
}

TEST(ShadowMap, GivesEachTestItsOwnAnswer) {
  const SmallBallTest blocks(1e9, eAnswer::kBlocks);
  const SmallBallTest unsure(0, eAnswer::kBlocks);
  const SmallBallTest small(2000, eAnswer::kBlocks);
  const ShadowMap map(kRadius, {&blocks, &unsure, nullptr, &small, &unsure},
                      64);
  for (std::size_t cell = 0; cell < map.OffMap(); ++cell) {
    ASSERT_EQ(AnswersOf(map.Codes()[cell]),
              (std::vector<eAnswer>{eAnswer::kBlocks, eAnswer::kUnsure,
                                    eAnswer::kClear, eAnswer::kBlocks,
                                    eAnswer::kUnsure}));
  }
  // What is known of a ball is asked of none inside.
  EXPECT_LT(blocks.Asked(), small.Asked());
  EXPECT_LT(small.Asked(), unsure.Asked());
}

TEST(ShadowMap, DoesNotDivideWhatIsSure) {
  const SmallBallTest blocks(1e9, eAnswer::kBlocks);
  const SmallBallTest clear(1e9, eAnswer::kClear);
  const ShadowMap map(kRadius, {&blocks, &clear}, 1024);
  EXPECT_LE(blocks.Asked(), 16);
  EXPECT_EQ(clear.Asked(), blocks.Asked());
}

TEST(CellAnswers, AreTheDigitsOfTheCode) {
  EXPECT_EQ(AnswersOf(0), std::vector<eAnswer>(kMappedTests, eAnswer::kClear));
  EXPECT_EQ(
      AnswersOf(2 * 1 + 0 * 3 + 1 * 9 + 2 * 27 + 1 * 81),
      (std::vector<eAnswer>{eAnswer::kBlocks, eAnswer::kClear, eAnswer::kUnsure,
                            eAnswer::kBlocks, eAnswer::kUnsure}));
}

TEST(ShadowMap, FindsTheCellOfEveryPointInTheShell) {
  const TwoTests tests;
  for (const int cells : {16, 128}) {
    const ShadowMap map = tests.Map(cells);
    const auto side = static_cast<std::size_t>(cells);
    const std::size_t count = side * side;
    EXPECT_EQ(map.OffMap(), count);
    EXPECT_EQ(map.At(map.OffMap()), ShadowMap::kNothingKnown);
    std::vector<bool> isFound(count, false);
    auto points = TwoTests::PointsAnywhere(20000);
    const auto atBorders = TwoTests::PointsAtBorders(points, cells);
    points.insert(points.end(), atBorders.begin(), atBorders.end());
    for (const TVector3& point : points) {
      const std::size_t cell = map.CellAt(point);
      ASSERT_LT(cell, count);
      EXPECT_EQ(cell, static_cast<std::size_t>(
                          map.CellOf(point.X(), point.Y(), point.Z())));
      EXPECT_EQ(map.At(point), map.Codes()[cell]);
      EXPECT_EQ(map.At(cell), map.Codes()[cell]);
      isFound[cell] = true;
    }
    if (cells == 16) {
      EXPECT_EQ(std::count(isFound.begin(), isFound.end(), false), 0);
    }
  }
}

TEST(ShadowMap, FindsNoCellOffTheShell) {
  const ShadowMap map = TwoTests().Map(128);
  for (const double sign : {-1.0, 1.0}) {
    EXPECT_NE(map.CellAt({0, 0, sign * Below(kRadius + kShell)}), map.OffMap());
    EXPECT_EQ(map.CellAt({0, 0, sign * (kRadius + kShell)}), map.OffMap());
    EXPECT_NE(map.CellAt({sign * Above(kRadius - kShell), 0, 0}), map.OffMap());
    EXPECT_EQ(map.CellAt({sign * (kRadius - kShell), 0, 0}), map.OffMap());
  }
  for (const double y : {0.0, 1e-170, 1e9, 1e200, kInfinity, std::nan("")}) {
    EXPECT_EQ(map.CellAt({0, y, 0}), map.OffMap()) << y;
  }
}

TEST(ShadowMap, FindsNoCellAtAllWhereItKnowsNothing) {
  const TwoTests tests;
  for (const ShadowMap& map : {ShadowMap(), tests.Map(16, 1.0)}) {
    EXPECT_EQ(map.OffMap(), 0U);
    for (const TVector3& point :
         {TVector3(0, 0, 0), TVector3(0, 0, kRadius), TVector3(1, 0, 0)}) {
      EXPECT_EQ(map.CellAt(point), map.OffMap());
    }
    EXPECT_EQ(map.At(map.OffMap()), ShadowMap::kNothingKnown);
    EXPECT_TRUE(map.Open(eMappedTest::kNCDAnchor).All().empty());
  }
}

}  // namespace
}  // namespace ZARN::DU
