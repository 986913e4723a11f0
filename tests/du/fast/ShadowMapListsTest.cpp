#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "du/fast/ShadowMap.hpp"
#include "du/geometry/OctahedralDirection.hpp"
#include "du/geometry/PointTree.hpp"
#include "tests/du/fast/MapTests.hpp"
#include "tests/property/Random.hpp"

// What a shadow map lists for cells in which a test is unsure.

namespace ZARN::DU {
namespace {

using Testing::Index;
using Testing::kRadius;
using Testing::kShell;
using Testing::Random;
using Testing::SmallBallTest;
using Testing::TwoTests;

/// Leaves all of its items open everywhere.
class OpenTest final : public BallTest {
 public:
  explicit OpenTest(std::uint32_t count) : count_(count) {}

  Items AllItems() const override { return {0}; }
  eAnswer Judge(const Ball& /*ball*/, const Items& items,
                Items& open) const override {
    open = items;
    return eAnswer::kUnsure;
  }
  /// So many that none stands beside another.
  void AppendEntries(const Items& /*items*/,
                     StretchLists& list) const override {
    for (std::uint32_t i = 0; i < count_; ++i) list.Append(10 * i, 10 * i + 1);
  }

 private:
  std::uint32_t count_;
};

TEST(ShadowMap, NamesNoItemsOnceThereIsNoRoomForMore) {
  constexpr std::uint32_t kCount = 40;
  const OpenTest test(kCount);
  const ShadowMap map(kRadius, {&test}, 1024);
  const CellItems& open = map.Open(static_cast<eMappedTest>(0));
  EXPECT_LT(open.All().size(), map.OffMap() * kCount);
  std::size_t named = 0;
  for (std::size_t cell = 0; cell < map.OffMap(); ++cell) {
    const CellItems::View some = open.Of(cell);
    const auto count = static_cast<std::uint32_t>(some.end() - some.begin());
    ASSERT_TRUE(count == 0 || count == kCount);
    named += count;
  }
  EXPECT_EQ(named, open.All().size());
  EXPECT_GT(named, map.OffMap());
}

/// As a batch finds it.
std::size_t CellInSinglePrecision(const ShadowMap& map, const TVector3& point) {
  return static_cast<std::size_t>(map.CellOf(static_cast<float>(point.X()),
                                             static_cast<float>(point.Y()),
                                             static_cast<float>(point.Z())));
}

/// Expect a map, and where it is unsure the items that are open in the cell, to
/// decide as the test itself; with the cell found in both precisions.
///
/// @return how often the items were asked
int ExpectOpenItemsToDecide(const PointTree& tree, const ShadowMap& map,
                            const std::vector<TVector3>& points) {
  constexpr auto kTest = eMappedTest::kNCDAnchor;
  const CellItems& open = map.Open(kTest);
  int asked = 0;
  int wrong = 0;
  for (const TVector3& point : points) {
    const bool expected = tree.HasPointNear(point);
    for (const std::size_t cell :
         {map.CellAt(point), CellInSinglePrecision(map, point)}) {
      bool isBlocked = false;
      const eAnswer answer = ShadowMap::AnswerOf(map.At(cell), kTest);
      if (answer == eAnswer::kUnsure) {
        ++asked;
        const CellItems::View some = open.Of(cell);
        EXPECT_FALSE(some.IsEmpty());
        isBlocked = std::any_of(some.begin(), some.end(), [&](Stretch entries) {
          return tree.HasPointNear(point, entries);
        });
      } else {
        isBlocked = answer == eAnswer::kBlocks;
      }
      wrong += isBlocked != expected ? 1 : 0;
    }
  }
  EXPECT_EQ(wrong, 0) << "of " << 2 * points.size();
  return asked;
}

TEST(ShadowMap, KeepsOpenInEachUnsureCellWhatDecidesThere) {
  const TwoTests tests;
  const auto atLimits = tests.PointsAtLimits(50000);
  for (const int cells : {16, 128, 1024}) {
    SCOPED_TRACE(cells);
    const ShadowMap map = tests.Map(cells);
    const auto atBorders = TwoTests::PointsAtBorders(atLimits, cells);
    for (const auto& points :
         {TwoTests::PointsAnywhere(20000), atLimits, atBorders}) {
      EXPECT_GT(ExpectOpenItemsToDecide(tests.Spots(), map, points), 100);
    }
  }
}

TEST(ShadowMap, KeepsOpenWhatReachesOnlyTheCornerOfACell) {
  // Above the sphere and below, of corners that in single precision belong to
  // this cell or another.
  Random random(34);
  constexpr double kReach = 50.0;
  for (const int cells : {64, 256, 1024}) {
    SCOPED_TRACE(cells);
    const double step = 2.0 / cells;
    std::vector<TVector3> spots;
    std::vector<TVector3> places;
    for (int i = 0; i < 1000; ++i) {
      const double left = random.Whole(0, cells - 1) * step - 1;
      const double top = random.Whole(0, cells - 1) * step - 1;
      const auto at = [&](double u, double v) {
        return AsTVector3(DirectionAt(left + u * step, top + v * step));
      };
      const TVector3 middle =
          kRadius / 4 * (at(0, 0) + at(0, 1) + at(1, 0) + at(1, 1));
      const double inside = std::pow(10, random.Uniform(-12, -3));
      const auto corner = [&] {
        return random.Chance(0.5) ? inside : 1 - inside;
      };
      const double off = random.Chance(0.5) ? 0.999 * kShell : -0.999 * kShell;
      const TVector3 place = (kRadius + off) * at(corner(), corner());
      places.push_back(place);
      // Seen from the middle of the cell the spot lies behind the place: of the
      // whole cell its reach holds little else.
      spots.push_back(place + kReach * (1 - 1e-9) * (place - middle).Unit());
    }
    const PointTree tree(spots, kReach);
    ShadowMap::Tests tests = {};
    tests[Index(eMappedTest::kNCDAnchor)] = &tree;
    const ShadowMap map(kRadius, tests, cells);
    EXPECT_GT(ExpectOpenItemsToDecide(tree, map, places), 1000);
  }
}

TEST(ShadowMap, KeepsOpenFewOfManyItemsInASmallCell) {
  // Of points one behind the other.
  std::vector<TVector3> line;
  for (int i = -500; i <= 500; ++i) {
    line.emplace_back(kRadius * std::cos(0.0008 * i), 0,
                      kRadius * std::sin(0.0008 * i));
  }
  const PointTree tree(line, 162.0);
  ShadowMap::Tests tests = {};
  tests[Index(eMappedTest::kHoldDownSurface)] = &tree;
  const ShadowMap map(kRadius, tests);
  const CellItems& open = map.Open(eMappedTest::kHoldDownSurface);
  int unsure = 0;
  std::uint32_t all = 0;
  for (std::size_t cell = 0; cell < map.OffMap(); ++cell) {
    if (ShadowMap::AnswerOf(map.At(cell), eMappedTest::kHoldDownSurface) !=
        eAnswer::kUnsure) {
      continue;
    }
    ++unsure;
    const CellItems::View some = open.Of(cell);
    EXPECT_FALSE(some.IsEmpty());
    std::uint32_t count = 0;
    for (const Stretch points : some) count += points.Count();
    EXPECT_LE(count, 50U);
    all += count;
  }
  EXPECT_GT(unsure, 100);
  EXPECT_LE(all, 30U * static_cast<unsigned>(unsure));
  // Where they stand in the list, they mostly stand side by side.
  EXPECT_LE(open.All().size(), 3U * static_cast<unsigned>(unsure));
}

TEST(ShadowMap, KeepsOpenTheItemsOfEachTestApart) {
  const SmallBallTest unsure(0, eAnswer::kBlocks);
  const SmallBallTest blocks(1e9, eAnswer::kBlocks);
  const ShadowMap map(kRadius, {&blocks, nullptr, &unsure}, 16);
  EXPECT_TRUE(map.Open(eMappedTest::kHoldDownSurface).All().empty());
  EXPECT_TRUE(map.Open(eMappedTest::kBellyPlate).All().empty());
  const CellItems& open = map.Open(eMappedTest::kNCDAnchor);
  EXPECT_EQ(open.All().size(), 256U);
  for (std::size_t cell = 0; cell < 256; ++cell) {
    const CellItems::View some = open.Of(cell);
    ASSERT_EQ(some.end() - some.begin(), 1);
    EXPECT_EQ(some.begin()->Begin(), 1U);
    EXPECT_EQ(some.begin()->Count(), 1U);
  }
}

}  // namespace
}  // namespace ZARN::DU
