#include "du/geometry/PointBlocks.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "tests/du/Neighbours.hpp"
#include "tests/du/PrintVectors.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::DU {
namespace {

using Testing::Above;
using Testing::Below;
using Testing::kInfinity;
using Testing::kNaN;
using Testing::Random;

using ListedPoints = std::vector<Point>;

constexpr std::uint32_t kBlock = PointBlocks::kPoints;

/// The loop over the points of some blocks.
bool IsAnyNear(const ListedPoints& points, double reach, const TVector3& place,
               std::ptrdiff_t begin, std::ptrdiff_t end) {
  const auto last = std::min<std::ptrdiff_t>(
      end * kBlock, static_cast<std::ptrdiff_t>(points.size()));
  return std::any_of(points.begin() + begin * kBlock, points.begin() + last,
                     [&](const Point& listed) {
                       return reach > (place - AsTVector3(listed)).Mag();
                     });
}

ListedPoints RandomPoints(Random& random, std::uint32_t count, double radius) {
  ListedPoints points;
  points.reserve(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    const TVector3 point = radius * random.Direction();
    points.push_back({point.X(), point.Y(), point.Z()});
  }
  return points;
}

/// Expect what the loop says of ranges all over the list, empty ones among
/// them, and give how many have a point near.
int ExpectAnswersOfTheLoop(const ListedPoints& points, double reach,
                           const TVector3& place, Random& random) {
  const PointBlocks list(points, reach);
  const std::uint32_t size = list.Size();
  int near = 0;
  const auto expect = [&](std::uint32_t begin, std::uint32_t end) {
    const bool expected = IsAnyNear(points, reach, place, begin, end);
    near += expected ? 1 : 0;
    EXPECT_EQ(list.HasNear(place, begin, end), expected)
        << begin << " to " << end << " of " << size << ", reach " << reach
        << ", place " << ::testing::PrintToString(place);
  };
  expect(0, size);
  EXPECT_EQ(list.HasNear(place), list.HasNear(place, 0, size));
  EXPECT_EQ(list.HasNear(place, {0, size}), list.HasNear(place, 0, size));
  for (int i = 0; i < 5; ++i) {
    const auto a = static_cast<std::uint32_t>(random.Below(size + 1));
    const auto b = static_cast<std::uint32_t>(random.Below(size + 1));
    expect(std::min(a, b), std::max(a, b));
  }
  return near;
}

TEST(PointBlocks, FindsWhatTheLoopFinds) {
  Random random(72);
  int near = 0;
  constexpr int kPlaces = 2000;
  for (int i = 0; i < kPlaces; ++i) {
    const double reach = std::pow(10, random.Uniform(-1, 4.2));
    const ListedPoints points =
        RandomPoints(random, static_cast<std::uint32_t>(random.Below(20)), 6e3);
    const TVector3 place =
        points.empty() || random.Chance(0.3)
            ? random.Uniform(0, 7000) * random.Direction()
            : AsTVector3(random.Pick(points)) +
                  random.Uniform(0, 2 * reach) * random.Direction();
    near += ExpectAnswersOfTheLoop(points, reach, place, random);
  }
  EXPECT_GT(near, kPlaces);
  EXPECT_LT(near, 5 * kPlaces);
}

TEST(PointBlocks, FindsWhatTheLoopFindsExactlyAtTheReach) {
  Random random(73);
  int near = 0;
  constexpr int kPlaces = 3000;
  for (int i = 0; i < kPlaces; ++i) {
    const double reach = std::pow(10, random.Uniform(-1, 4));
    // Far apart, so that of all points only one can decide.
    const ListedPoints points = RandomPoints(random, 3, 1e6);
    const TVector3 point = AsTVector3(random.Pick(points));
    const TVector3 way = random.Direction();
    const auto change =
        Testing::FindChange(0.5 * reach, 2 * reach, [&](double length) {
          return reach > (point + length * way - point).Mag();
        });
    for (const double length :
         {change.before, change.after, Below(change.before),
          Above(change.after), reach}) {
      near +=
          ExpectAnswersOfTheLoop(points, reach, point + length * way, random);
    }
  }
  EXPECT_GT(near, kPlaces);
}

TEST(PointBlocks, CountsOnlyWhatIsStrictlyWithinReach) {
  const PointBlocks list({{1, 2, 0}}, 5.0);
  EXPECT_FALSE(list.HasNear({4, 6, 0}, 0, 1));
  EXPECT_FALSE(list.HasNear({1, 2, 5}, 0, 1));
  EXPECT_TRUE(list.HasNear({1, 2, Below(5)}, 0, 1));
  EXPECT_TRUE(list.HasNear({1, 2, Above(-5)}, 0, 1));
  EXPECT_FALSE(list.HasNear({1, 2, -5}, 0, 1));
}

TEST(PointBlocks, LooksOnlyIntoTheRange) {
  ListedPoints points;
  for (const double x : {0.0, 100.0, 200.0}) {
    points.insert(points.end(), kBlock, {x, 0, 0});
  }
  const PointBlocks list(points, 10.0);
  ASSERT_EQ(list.Size(), 3U);
  const TVector3 middle(101, 0, 0);
  EXPECT_TRUE(list.HasNear(middle, 0, 3));
  EXPECT_TRUE(list.HasNear(middle, 1, 2));
  EXPECT_TRUE(list.HasNear(middle, 0, 2));
  EXPECT_TRUE(list.HasNear(middle, 1, 3));
  EXPECT_FALSE(list.HasNear(middle, 0, 1));
  EXPECT_FALSE(list.HasNear(middle, 2, 3));
}

TEST(PointBlocks, FindsNothingInAnEmptyRange) {
  const PointBlocks list({{0, 0, 0}, {1, 0, 0}}, 10.0);
  for (const std::uint32_t i : {0U, 1U}) {
    EXPECT_FALSE(list.HasNear({0, 0, 0}, i, i));
  }
  EXPECT_FALSE(PointBlocks().HasNear({0, 0, 0}));
}

TEST(PointBlocks, FindsWhatTheLoopFindsForEveryReach) {
  Random random(74);
  const ListedPoints points = {
      {1, 2, 3}, {1, 2, 3}, {0, 0, 1e-170}, {1e200, 0, 0}};
  int near = 0;
  for (const double reach : {0.0, -0.0, -5.0, -kInfinity, kNaN, kInfinity,
                             1e-300, 1e-160, 1e160, 1e300}) {
    for (const TVector3& place :
         {TVector3(1, 2, 3), TVector3(0, 0, 0), TVector3(-1e200, 0, 0),
          TVector3(1e155, 0, 0)}) {
      near += ExpectAnswersOfTheLoop(points, reach, place, random);
    }
  }
  EXPECT_GT(near, 0);
  for (const double reach : {0.0, -0.0, -5.0, -kInfinity, kNaN}) {
    EXPECT_FALSE(PointBlocks(points, reach).HasNear({1, 2, 3})) << reach;
  }
  EXPECT_TRUE(PointBlocks(points, kInfinity).HasNear({1e9, 0, 0}));
}

TEST(PointBlocks, IsNeverNearAPlaceThatIsNotFinite) {
  Random random(75);
  const ListedPoints points = RandomPoints(random, 5, 10.0);
  for (const double reach : {1.0, 1e10, kInfinity}) {
    for (const double bad : {kNaN, kInfinity, -kInfinity}) {
      for (const int axis : {0, 1, 2}) {
        TVector3 place(1, 2, 3);
        place[axis] = bad;
        EXPECT_EQ(ExpectAnswersOfTheLoop(points, reach, place, random), 0);
      }
    }
  }
}

TEST(PointBlocks, FindsEveryPointAlsoInABlockThatIsNotFull) {
  EXPECT_EQ(PointBlocks().Size(), 0U);
  EXPECT_EQ(PointBlocks({}, 5.0).Size(), 0U);
  Random random(76);
  for (std::uint32_t count = 1; count <= 9; ++count) {
    const ListedPoints points = RandomPoints(random, count, 6000.0);
    const PointBlocks list(points, kInfinity);
    ASSERT_EQ(list.Size(), (count + kBlock - 1) / kBlock);
    for (std::uint32_t i = 0; i < count; ++i) {
      const Point& point = points[i];
      EXPECT_EQ(list.LeastSquaredDistance(point, i / kBlock), 0.0);
      EXPECT_TRUE(PointBlocks(points, 1e-9).HasNear(AsTVector3(point)));
    }
    for (std::uint32_t block = 0; block < list.Size(); ++block) {
      const Point far = {1e4, 2e4, -3e4};
      double least = kInfinity;
      for (std::uint32_t i = block * kBlock;
           i < std::min(count, (block + 1) * kBlock); ++i) {
        least = std::min(least, SquaredDistance(far, points[i]));
      }
      EXPECT_EQ(list.LeastSquaredDistance(far, block), least);
    }
  }
}

}  // namespace
}  // namespace ZARN::DU
