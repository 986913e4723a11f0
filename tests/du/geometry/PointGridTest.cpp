#include "du/geometry/PointGrid.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <vector>

#include "tests/du/Balls.hpp"
#include "tests/du/Neighbours.hpp"
#include "tests/du/PrintVectors.hpp"
#include "tests/property/Random.hpp"

namespace ZARN::DU {
namespace {

using Testing::Above;
using Testing::AnswerTally;
using Testing::Below;
using Testing::Random;

using Points = std::vector<TVector3>;
using Limits = std::numeric_limits<double>;
constexpr double kInfinity = Limits::infinity();
constexpr double kNaN = Limits::quiet_NaN();
constexpr std::array kLayouts = {eGrid::kUniform, eGrid::kOneCell};

/// The loop that the grid spares.
bool IsAnyNear(const Points& points, double reach, const TVector3& point) {
  return std::any_of(points.begin(), points.end(), [&](const TVector3& listed) {
    return reach > (point - listed).Mag();
  });
}

/// Expect both layouts to say of every place what the loop says, and give how
/// many of the places have a point near.
int ExpectAnswersOfTheLoop(const Points& points, double reach,
                           const Points& places) {
  SCOPED_TRACE(reach);
  int near = 0;
  for (const eGrid layout : kLayouts) {
    const PointGrid grid(points, reach, layout);
    for (const TVector3& place : places) {
      const bool expected = IsAnyNear(points, reach, place);
      near += expected ? 1 : 0;
      EXPECT_EQ(grid.HasPointNear(place), expected)
          << ::testing::PrintToString(place);
    }
  }
  return near / static_cast<int>(kLayouts.size());
}

/// Random points of a ball shell, as a rope's samples lie on the vessel.
Points PointsOnASphere(Random& random, std::size_t count, double radius) {
  Points points;
  for (std::size_t i = 0; i < count; ++i) {
    points.push_back(radius * random.Direction());
  }
  return points;
}

/// Places one reach away from listed points, or a few last bits off it.
Points PlacesAtTheLimit(const Points& points, double reach, Random& random) {
  Points places;
  for (const TVector3& point : points) {
    const TVector3 way = random.Direction();
    double length = reach;
    for (int bit = random.Whole(0, 3); bit > 0; --bit) length = Above(length);
    for (int bit = random.Whole(0, 3); bit > 0; --bit) length = Below(length);
    places.push_back(point + length * way);
    // Along an axis the distance is the reach itself, and the place next to a
    // border of cells.
    TVector3 along = point;
    along[random.Whole(0, 2)] += random.Chance(0.5) ? length : -length;
    places.push_back(along);
  }
  return places;
}

TEST(PointGrid, FindsWhatTheLoopFinds) {
  Random random(5);
  for (const double reach : {0.5, 60.0, 162.0, 700.0, 5000.0, 20000.0}) {
    const Points points = PointsOnASphere(random, 300, 6000.0);
    Points places;
    for (const TVector3& point : points) {
      places.push_back(random.Uniform(0, 7000) * random.Direction());
      places.push_back(point +
                       random.Uniform(0, 2 * reach) * random.Direction());
    }
    const int near = ExpectAnswersOfTheLoop(points, reach, places);
    EXPECT_GT(near, 50) << reach;
  }
}

TEST(PointGrid, FindsWhatTheLoopFindsExactlyAtTheReach) {
  Random random(6);
  for (const double reach : {1e-3, 12.0, 162.0, 3000.0}) {
    const Points points = PointsOnASphere(random, 200, 6000.0);
    const Points places = PlacesAtTheLimit(points, reach, random);
    const int near = ExpectAnswersOfTheLoop(points, reach, places);
    EXPECT_GT(near, 20) << reach;
    EXPECT_LT(near, 2 * 200 * 9 / 10 + (reach > 1000 ? 200 : 0)) << reach;
  }
}

TEST(PointGrid, CountsOnlyWhatIsStrictlyWithinReach) {
  for (const eGrid layout : kLayouts) {
    const PointGrid grid({{1, 2, 0}}, 5.0, layout);
    EXPECT_FALSE(grid.HasPointNear({4, 6, 0}));
    EXPECT_FALSE(grid.HasPointNear({1, 2, 5}));
    EXPECT_TRUE(grid.HasPointNear({1, 2, Below(5)}));
    EXPECT_FALSE(grid.HasPointNear({1, 2, -5}));
    EXPECT_TRUE(grid.HasPointNear({1, 2, Above(-5)}));
    EXPECT_TRUE(grid.HasPointNear({1, 2, 0}));
  }
}

TEST(PointGrid, FindsAPointAcrossEveryBorderOfItsCells) {
  // Points on a lattice as wide as the reach: each lies where cells meet.
  constexpr double kReach = 10.0;
  Points points;
  for (const double x : {-20.0, 0.0, 20.0}) {
    for (const double y : {-20.0, 20.0}) points.emplace_back(x, y, 0);
  }
  points.emplace_back(0, 0, -20);
  points.emplace_back(0, 0, 20);
  Points places;
  for (const TVector3& point : points) {
    for (const int axis : {0, 1, 2}) {
      for (const double sign : {-1.0, 1.0}) {
        for (const double way : {Below(10.0), 10.0, Above(10.0), 9.0, 1e-12}) {
          TVector3 place = point;
          place[axis] += sign * way;
          places.push_back(place);
        }
      }
    }
  }
  EXPECT_GT(ExpectAnswersOfTheLoop(points, kReach, places), 0);
}

TEST(PointGrid, FindsNothingWithoutAPoint) {
  EXPECT_FALSE(PointGrid().HasPointNear({0, 0, 0}));
  EXPECT_EQ(PointGrid().CountItems(), 0U);
  for (const eGrid layout : kLayouts) {
    const PointGrid grid({}, 150.0, layout);
    EXPECT_FALSE(grid.HasPointNear({0, 0, 0}));
    EXPECT_EQ(grid.CountItems(), 0U);
  }
}

TEST(PointGrid, FindsNothingWithinAReachThatIsNotAboveZero) {
  for (const double reach : {0.0, -0.0, -150.0, -kInfinity, kNaN}) {
    EXPECT_EQ(ExpectAnswersOfTheLoop({{1, 2, 3}}, reach,
                                     {{1, 2, 3}, {1, 2, 4}, {0, 0, 0}}),
              0);
    // Nor has a map anything to divide.
    const PointGrid grid({{1, 2, 3}}, reach);
    EXPECT_EQ(grid.CountItems(), 0U);
    BallTest::Items open;
    EXPECT_EQ(grid.Judge({{1, 2, 3}, 1.0}, {}, open), eAnswer::kClear);
  }
}

TEST(PointGrid, FindsEveryFinitePointWithinAnInfiniteReach) {
  const Points points = {{kNaN, 0, 0}, {0, kInfinity, 0}, {1, 2, 3}};
  const Points places = {{0, 0, 0}, {1e6, -1e9, 0}, {1e200, 0, 0}};
  EXPECT_EQ(ExpectAnswersOfTheLoop({points[0]}, kInfinity, places), 0);
  EXPECT_EQ(ExpectAnswersOfTheLoop(points, kInfinity, places), 2);
  EXPECT_EQ(PointGrid(points, kInfinity).CountItems(), 1U);
}

TEST(PointGrid, IsNeverNearAPlaceThatIsNotFinite) {
  const Points places = {{kNaN, 0, 0},       {0, kNaN, 0},
                         {0, 0, kNaN},       {kInfinity, 0, 0},
                         {0, -kInfinity, 0}, {0, 0, kInfinity}};
  for (const double reach : {1.0, 1e10, kInfinity}) {
    EXPECT_EQ(ExpectAnswersOfTheLoop({{0, 0, 0}, {50, 1, 2}}, reach, places),
              0);
  }
}

TEST(PointGrid, KeepsTheOthersBesideAPointThatIsNotFinite) {
  const Points points = {
      {100, 0, 0}, {kNaN, 0, 0}, {0, -kInfinity, 0}, {0, 100, 0}};
  EXPECT_EQ(ExpectAnswersOfTheLoop(points, 10.0,
                                   {{100, 0, 1}, {0, 99, 0}, {0, 0, 0}}),
            2);
}

TEST(PointGrid, FindsWhatTheLoopFindsAtEveryScale) {
  Random random(7);
  for (const double scale :
       {1e-300, 1e-150, 1e-30, 1e8, 1e9, 1e15, 1e100, 1e155, 1e300}) {
    const Points points = PointsOnASphere(random, 30, scale);
    Points places = PlacesAtTheLimit(points, 0.3 * scale, random);
    for (int i = 0; i < 60; ++i) {
      places.push_back(random.Uniform(0, 3) * scale * random.Direction());
    }
    ExpectAnswersOfTheLoop(points, 0.3 * scale, places);
    ExpectAnswersOfTheLoop(points, 162.0, places);
    ExpectAnswersOfTheLoop(points, 1e200, places);
  }
}

TEST(PointGrid, CountsADistanceWhoseSquareUnderflowsAsNone) {
  // The library's length of such a vector is 0, which is below any reach.
  EXPECT_EQ(ExpectAnswersOfTheLoop({{0, 0, 0}}, 1e-170,
                                   {{0, 0, 3e-170}, {1e-165, 0, 0}}),
            2);
}

TEST(PointGrid, HoldsPointsThatLieInOnePlaceOrOnALine) {
  const Points same(10, {1, 2, 3});
  EXPECT_EQ(ExpectAnswersOfTheLoop(same, 1.0, {{1, 2, 3.5}, {1, 2, 4}}), 1);
  Points line;
  for (int i = -500; i <= 500; ++i) line.emplace_back(0, 10.0 * i, -7);
  EXPECT_EQ(ExpectAnswersOfTheLoop(
                line, 1.0, {{0, 5000, -7}, {0, -5000.5, -7}, {0.5, 15, -7}}),
            2);
}

TEST(PointGrid, ListsThePointsBehindItsItemsInTheirOrder) {
  Random random(77);
  Points points = PointsOnASphere(random, 100, 6000.0);
  // No item stands for a point that is not finite.
  points.insert(points.begin() + 20, {kNaN, 0, 0});
  points.insert(points.begin() + 50, {0, kInfinity, 0});
  for (const eGrid layout : kLayouts) {
    const PointGrid grid(points, 300.0, layout);
    ASSERT_EQ(grid.CountItems(), 100U);
    EXPECT_EQ(grid.ListOf({}).Size(), 0U);
    // As many items as points, in an order of their own and one more than once.
    BallTest::Items items(100);
    for (std::uint32_t i = 0; i < 100; ++i) items[i] = (i * 37 + 11) % 100;
    items.push_back(items[5]);
    const PointList list = grid.ListOf(items);
    ASSERT_EQ(list.Size(), items.size());
    std::vector<bool> isListed(points.size(), false);
    for (std::uint32_t i = 0; i < list.Size(); ++i) {
      const auto found =
          std::find(points.begin(), points.end(), AsTVector3(list[i]));
      ASSERT_NE(found, points.end());
      isListed[static_cast<std::size_t>(found - points.begin())] = true;
      // It is the one by which the item blocks.
      BallTest::Items open;
      EXPECT_EQ(grid.Judge({list[i], 1.0}, {items[i]}, open), eAnswer::kBlocks);
      const TVector3 beside = 1.06 * *found;  // 360 mm off
      const Ball ball = {{beside.X(), beside.Y(), beside.Z()}, 59.0};
      EXPECT_EQ(grid.Judge(ball, {items[i]}, open), eAnswer::kClear);
    }
    EXPECT_EQ(std::count(isListed.begin(), isListed.end(), true), 100);
    // With the reach of the grid.
    const TVector3 way = AsTVector3(list[0]).Unit();
    EXPECT_TRUE(list.HasNear(6299.9 * way, 0, 1));
    EXPECT_FALSE(list.HasNear(6300.1 * way, 0, 1));
  }
}

TEST(PointGridAsABallTest, SaysNothingWrongOfAnyPointOfABall) {
  Random random(8);
  for (const double reach : {60.0, 400.0, 6000.0}) {
    const Points points = PointsOnASphere(random, 100, 6000.0);
    const PointGrid grid(points, reach);
    EXPECT_EQ(grid.CountItems(), 100U);
    AnswerTally tally;
    for (int i = 0; i < 400; ++i) {
      // Balls that just touch the reach of a point, from either side.
      const double radius = reach * std::pow(10, random.Uniform(-6, 0));
      const double touching =
          random.Chance(0.5) ? reach - radius : reach + radius;
      const TVector3& point = random.Pick(points);
      const TVector3 middle = point + touching *
                                          (1 + random.Uniform(-0.01, 0.01)) *
                                          random.Direction();
      AskAboutBall(
          grid, {{middle.X(), middle.Y(), middle.Z()}, radius}, random, {point},
          [&](const TVector3& p) { return IsAnyNear(points, reach, p); },
          tally);
    }
    tally.Expect(0.8);
  }
}

TEST(PointGridAsABallTest, IsSureOfASmallBallUnlessItMeetsTheLimit) {
  const PointGrid grid({{0, 0, 0}, {1000, 0, 0}}, 100.0);
  const auto judge = [&](double x, double radius) {
    BallTest::Items open;
    return grid.Judge({{x, 0, 0}, radius}, {0, 1}, open);
  };
  EXPECT_EQ(judge(0, 99), eAnswer::kBlocks);
  EXPECT_EQ(judge(0, 100), eAnswer::kUnsure);
  EXPECT_EQ(judge(89, 10), eAnswer::kBlocks);
  EXPECT_EQ(judge(95, 10), eAnswer::kUnsure);
  EXPECT_EQ(judge(105, 10), eAnswer::kUnsure);
  EXPECT_EQ(judge(111, 10), eAnswer::kClear);
  EXPECT_EQ(judge(1095, 10), eAnswer::kUnsure);
}

TEST(PointGridAsABallTest, IsUnsureWhereDistancesAreRoundedByMoreThanTheBall) {
  const PointGrid grid({{1e19, 0, 0}}, 1e19);
  // Distances so large are a kilometre apart.
  EXPECT_FALSE(grid.HasPointNear({1000, 0, 0}));
  EXPECT_TRUE(grid.HasPointNear({1050, 0, 0}));
  for (const double x : {900.0, 1150.0}) {
    BallTest::Items open;
    EXPECT_EQ(grid.Judge({{x, 0, 0}, 200}, {0}, open), eAnswer::kUnsure);
    EXPECT_TRUE(open.empty());  // all count
  }
}

TEST(PointGridAsABallTest, IsSureOfPointsFarWithinAHugeReach) {
  for (const double reach : {1e8, 1e9, 1e100, 1e200, kInfinity}) {
    const PointGrid grid({{0, 0, 1e6}, {0, 1e7, 0}}, reach);
    BallTest::Items open;
    EXPECT_EQ(grid.Judge({{0, 0, 5860}, 1000}, {0, 1}, open), eAnswer::kBlocks);
  }
}

TEST(PointGridAsABallTest, LeavesOnlyThePointsOpenThatCanDecide) {
  const PointGrid grid({{0, 0, 0}, {150, 0, 0}, {0, 1000, 0}}, 100.0);
  BallTest::Items near;
  EXPECT_EQ(grid.Judge({{75, 0, 90}, 30}, {0, 1, 2}, near), eAnswer::kUnsure);
  EXPECT_EQ(near.size(), 2U);
  // What an enclosing ball has left out is not looked at again.
  BallTest::Items open;
  EXPECT_EQ(grid.Judge({{0, 1000, 0}, 1}, near, open), eAnswer::kClear);
}

/// What is open in balls, and how much of it.
struct OpenInBalls {
  int unsure = 0;
  int left = 0;  // unsure balls for which a point near them is left out
};

/// Expect that what a ball leaves open decides for places all over it as all
/// points do.
///
/// @param places  more of them, in the ball
void ExpectOpenItemsToDecide(const PointGrid& grid, const Points& points,
                             double reach, const Ball& ball, Random& random,
                             Points places, OpenInBalls& balls) {
  BallTest::Items all(grid.CountItems());
  std::iota(all.begin(), all.end(), 0U);
  BallTest::Items open;
  if (grid.Judge(ball, all, open) != eAnswer::kUnsure) return;
  ++balls.unsure;
  const PointList list = grid.ListOf(open);
  Points near;
  for (const TVector3& point : points) {
    if ((point - AsTVector3(ball.centre)).Mag() < reach + ball.radius) {
      near.push_back(point);
    }
  }
  if (list.Size() < near.size()) ++balls.left;
  Points towards;
  for (int i = 0; i < 4 && !near.empty(); ++i) {
    towards.push_back(random.Pick(near));
    // Where one is nearest in comparison with another.
    places.push_back(AsTVector3(ball.centre) +
                     ball.radius *
                         (random.Pick(near) - random.Pick(near)).Unit());
  }
  const Points over = Testing::PointsOf(ball, random, towards);
  places.insert(places.end(), over.begin(), over.end());
  for (const TVector3& place : places) {
    ASSERT_EQ(list.HasNear(place, 0, list.Size()),
              IsAnyNear(points, reach, place))
        << ::testing::PrintToString(place) << ", ball of " << ball.radius
        << ", reach " << reach;
  }
}

/// Points one behind the other at some spacing, as the samples of a rope.
Points PointsInALine(Random& random, std::size_t count, double spacing) {
  const TVector3 middle = 6000.0 * random.Direction();
  const TVector3 way = random.Direction();
  Points points;
  for (std::size_t i = 0; i < count; ++i) {
    points.push_back(middle + static_cast<double>(i) * spacing * way);
  }
  return points;
}

/// Balls that meet the limit of a point's reach somewhere, small and large and
/// about half as large as the reach.
void ExpectOpenItemsToDecideAround(const Points& points, double reach,
                                   Random& random, int count,
                                   OpenInBalls& balls) {
  const PointGrid grid(points, reach);
  for (int i = 0; i < count; ++i) {
    const double radius =
        reach * (random.Chance(0.2)
                     ? 0.5 + (random.Chance(0.5) ? 1 : -1) *
                                 std::pow(10, random.Uniform(-9, -1))
                     : std::pow(10, random.Uniform(-6, 0.2)));
    const TVector3& point = random.Pick(points);
    const auto ballAt = [&](const TVector3& middle) -> Ball {
      return {{middle.X(), middle.Y(), middle.Z()}, radius};
    };
    ExpectOpenItemsToDecide(grid, points, reach,
                            ballAt(point +
                                   random.Uniform(-1.1 * radius, 1.1 * radius) *
                                       random.Direction() +
                                   reach * random.Direction()),
                            random, {}, balls);
    // At one place the point is just in reach and the other farther, while
    // anywhere else in the ball the other gains on it.
    const TVector3& other = random.Pick(points);
    const TVector3 apart = point - other;
    if (apart.Mag() == 0.0) continue;
    const TVector3 square = apart.Cross(random.Direction()).Unit();
    const TVector3 sight = reach * square - random.Uniform(0, 0.45) * apart;
    const TVector3 place =
        point +
        reach * (1 - std::pow(10, random.Uniform(-12, -3))) * sight.Unit();
    ExpectOpenItemsToDecide(grid, points, reach,
                            ballAt(place - radius * apart.Unit()), random,
                            {place}, balls);
  }
}

TEST(PointGridAsABallTest, LeavesOpenWhatDecidesInABallBesideALine) {
  Random random(78);
  OpenInBalls balls;
  for (const double reach : {12.0, 162.0, 1000.0}) {
    for (const double spacing : {1e-9, 1e-4, 0.5, 5.0, 60.0}) {
      ExpectOpenItemsToDecideAround(PointsInALine(random, 80, spacing), reach,
                                    random, 300, balls);
    }
  }
  EXPECT_GT(balls.unsure, 2000);
  EXPECT_GT(balls.left, 500);
}

TEST(PointGridAsABallTest, LeavesOpenWhatDecidesInABallAmongScatteredPoints) {
  Random random(79);
  OpenInBalls balls;
  for (const double reach : {60.0, 400.0, 3000.0}) {
    for (const std::size_t count : {2U, 10U, 200U}) {
      ExpectOpenItemsToDecideAround(PointsOnASphere(random, count, 6000.0),
                                    reach, random, 300, balls);
    }
  }
  EXPECT_GT(balls.unsure, 1000);
  EXPECT_GT(balls.left, 50);
}

TEST(PointGridAsABallTest, LeavesOpenWhatDecidesAmongPointsInOnePlace) {
  Random random(80);
  OpenInBalls balls;
  Points points(10, {1, 2, 5800});
  ExpectOpenItemsToDecideAround(points, 162.0, random, 300, balls);
  const Points others(10, {Above(1), 2, 5803});
  points.insert(points.end(), others.begin(), others.end());
  ExpectOpenItemsToDecideAround(points, 162.0, random, 600, balls);
  EXPECT_GT(balls.unsure, 300);
}

TEST(PointGridAsABallTest, LeavesFewOpenInASmallBallBesideALine) {
  Random random(81);
  const Points points = PointsInALine(random, 400, 5.0);
  const PointGrid grid(points, 162.0);
  BallTest::Items all(grid.CountItems());
  std::iota(all.begin(), all.end(), 0U);
  const TVector3 along = (points[1] - points[0]).Unit();
  for (int i = 0; i < 200; ++i) {
    const TVector3 aside = along.Cross(random.Direction()).Unit();
    const TVector3 middle = points[0] + random.Uniform(300, 1700) * along +
                            random.Uniform(150, 174) * aside;
    BallTest::Items open;
    ASSERT_EQ(
        grid.Judge({{middle.X(), middle.Y(), middle.Z()}, 15.0}, all, open),
        eAnswer::kUnsure);
    EXPECT_LE(open.size(), 20U);
  }
}

}  // namespace
}  // namespace ZARN::DU
