#include "du/geometry/AzimuthTable.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "du/geometry/Constants.hpp"
#include "tests/du/Answers.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::DU {
namespace {

using Testing::AnswerTally;
using Testing::kNaN;
using Testing::Random;

constexpr double kMargin = AzimuthTable::kMargin;

bool Covers(const AzimuthRange& range, double phi) {
  return range.halfWidth >= 0 &&
         std::abs(std::remainder(phi - range.phi, kTwoPi)) <= range.halfWidth;
}

int CellAt(const AzimuthTable& table, double phi) {
  return table.CellOf(std::cos(phi), std::sin(phi));
}

std::vector<std::uint32_t> CandidatesAt(const AzimuthTable& table, int cell) {
  return {table.BeginCandidates(cell), table.EndCandidates(cell)};
}

/// Look up the azimuth @p phi with an error of up to the margin.
void Ask(const AzimuthTable& table, const std::vector<AzimuthRange>& ranges,
         double phi, Random& random, AnswerTally& tally) {
  const double asked = phi + random.Uniform(-0.99, 0.99) * kMargin;
  const int cell = CellAt(table, asked);
  bool isSurelyBlocked = false;
  bool isMaybeBlocked = false;
  const auto candidates = CandidatesAt(table, cell);
  for (std::uint32_t i = 0; i < ranges.size(); ++i) {
    if (!Covers(ranges[i], phi)) continue;
    (ranges[i].isSure ? isSurelyBlocked : isMaybeBlocked) = true;
    if (table.At(cell) == eAnswer::kUnsure) {
      EXPECT_EQ(std::count(candidates.begin(), candidates.end(), i), 1) << phi;
    }
  }
  const TVector3 place(std::cos(phi), std::sin(phi), 0);
  tally.Add(table.At(cell), isSurelyBlocked, place);
  EXPECT_FALSE(isMaybeBlocked && table.At(cell) == eAnswer::kClear) << phi;
}

TEST(AzimuthTable, IsNeverWrongByAnErrorBelowItsMargin) {
  Random random(9);
  for (const int cells : {4, 64, 4096}) {
    AnswerTally tally;
    for (int geometry = 0; geometry < 50; ++geometry) {
      std::vector<AzimuthRange> ranges;
      for (int i = random.Whole(1, 5); i > 0; --i) {
        ranges.push_back({random.Uniform(-10, 10),
                          std::pow(10, random.Uniform(-4, 0.4)),
                          random.Chance(0.7)});
      }
      const AzimuthTable table(ranges, cells);
      for (int i = 0; i < 100; ++i) {
        Ask(table, ranges, random.Uniform(-kPi, kPi), random, tally);
        // At an end of a range.
        const AzimuthRange& range = random.Pick(ranges);
        const double end =
            random.Chance(0.5) ? range.halfWidth : -range.halfWidth;
        Ask(table, ranges, range.phi + end + random.Uniform(-2, 2) * kMargin,
            random, tally);
      }
    }
    tally.Expect(cells == 4 ? 0.95 : 0.8);
  }
}

TEST(AzimuthTable, IsSureExceptForTheCellsAtTheEndsOfARange) {
  const AzimuthTable table({{1.0, 0.2, true}}, 4096);
  const auto& answers = table.Answers();
  EXPECT_EQ(answers.size(), 4096U);
  EXPECT_LE(std::count(answers.begin(), answers.end(), eAnswer::kUnsure), 4);
  EXPECT_NEAR(static_cast<double>(
                  std::count(answers.begin(), answers.end(), eAnswer::kBlocks)),
              0.4 / kTwoPi * 4096, 60);
}

TEST(AzimuthTable, IsUnsureWhereARangeIsNotSure) {
  const AzimuthTable table({{1.0, 0.2, false}}, 4096);
  EXPECT_EQ(table.At(CellAt(table, 1.0)), eAnswer::kUnsure);
  EXPECT_EQ(table.At(CellAt(table, 2.0)), eAnswer::kClear);
  const auto& answers = table.Answers();
  EXPECT_EQ(std::count(answers.begin(), answers.end(), eAnswer::kBlocks), 0);
}

TEST(AzimuthTable, WorksAcrossEverySeam) {
  // At the azimuth of the first cell, and where the azimuth of ROOT's vectors
  // jumps.
  for (const double phi : {-kHalfPi, kPi, -kPi, 3 * kHalfPi, 0.0, kHalfPi}) {
    SCOPED_TRACE(phi);
    const AzimuthTable table({{phi, 0.1, true}}, 4096);
    for (const double way : {-0.098, -0.001, 0.0, 0.001, 0.098}) {
      EXPECT_EQ(table.At(CellAt(table, phi + way)), eAnswer::kBlocks) << way;
    }
    for (const double way : {-0.102, 0.102}) {
      EXPECT_EQ(table.At(CellAt(table, phi + way)), eAnswer::kClear) << way;
    }
  }
}

TEST(AzimuthTable, IgnoresWholeTurns) {
  for (const double turns : {-2.0, 1.0, 3.0}) {
    EXPECT_EQ(AzimuthTable({{1.0 + turns * kTwoPi, 0.2, true}}, 64).Answers(),
              AzimuthTable({{1.0, 0.2, true}}, 64).Answers());
  }
}

TEST(AzimuthTable, BlocksEverythingWithARangeBeyondHalfATurn) {
  for (const int cells : {1, 64}) {
    for (const double halfWidth : {kPi + 2 * kMargin, 7.0, 1e300}) {
      const AzimuthTable table({{1.0, halfWidth, true}}, cells);
      for (const eAnswer answer : table.Answers()) {
        EXPECT_EQ(answer, eAnswer::kBlocks);
      }
      const AzimuthTable unsure({{1.0, halfWidth, false}}, cells);
      for (int cell = 0; cell < cells; ++cell) {
        EXPECT_EQ(unsure.At(cell), eAnswer::kUnsure);
        EXPECT_EQ(CandidatesAt(unsure, cell), std::vector<std::uint32_t>{0});
      }
    }
  }
}

TEST(AzimuthTable, IsUnsureOppositeARangeOfAboutHalfATurn) {
  for (const double halfWidth : {kPi - kMargin / 2, kPi, kPi + kMargin / 2}) {
    const AzimuthTable table({{0.0, halfWidth, true}}, 64);
    EXPECT_EQ(table.At(CellAt(table, kPi - 1e-9)), eAnswer::kUnsure);
    EXPECT_EQ(table.At(CellAt(table, -kPi + 1e-9)), eAnswer::kUnsure);
    EXPECT_EQ(table.At(CellAt(table, 0.0)), eAnswer::kBlocks);
  }
}

TEST(AzimuthTable, IsClearWithoutARangeOrWithAnEmptyOne) {
  for (const int cells : {1, 64}) {
    const std::vector<eAnswer> allClear(static_cast<std::size_t>(cells),
                                        eAnswer::kClear);
    EXPECT_EQ(AzimuthTable({}, cells).Answers(), allClear);
    for (const double halfWidth : {-1.0, -1e300, kNaN}) {
      EXPECT_EQ(AzimuthTable({{1.0, halfWidth, true}}, cells).Answers(),
                allClear);
    }
  }
  EXPECT_EQ(AzimuthTable().Cells(), 1);
  EXPECT_EQ(AzimuthTable().At(0), eAnswer::kClear);
}

TEST(AzimuthTable, ListsTheRangesOfAnUnsureCellAndOfNoOther) {
  const std::vector<AzimuthRange> ranges = {
      {0.5, 0.1, true}, {0.7, 0.1001, true}, {2.0, 0.3, true}};
  const AzimuthTable table(ranges, 64);
  const int between = CellAt(table, 0.6);
  ASSERT_EQ(table.At(between), eAnswer::kUnsure);
  EXPECT_EQ(CandidatesAt(table, between), (std::vector<std::uint32_t>{0, 1}));
  for (int cell = 0; cell < table.Cells(); ++cell) {
    EXPECT_EQ(CandidatesAt(table, cell).empty(),
              table.At(cell) != eAnswer::kUnsure);
  }
}

TEST(AzimuthTable, FindsItsCellsInSinglePrecisionToo) {
  const AzimuthTable table({{1.0, 0.2, true}}, 4096);
  EXPECT_EQ(table.CellOf(3.0F, 4.0F), table.CellOf(3.0, 4.0));
  EXPECT_EQ(table.CellOf(-5860.0F, 1.0F), table.CellOf(-5860.0, 1.0));
}

}  // namespace
}  // namespace ZARN::DU
