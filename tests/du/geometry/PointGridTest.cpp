#include "du/geometry/PointGrid.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
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

TEST(PointGridAsABallTest, LeavesOnlyThePointsOpenThatCanDecide) {
  const PointGrid grid({{0, 0, 0}, {150, 0, 0}, {0, 1000, 0}}, 100.0);
  BallTest::Items near;
  EXPECT_EQ(grid.Judge({{75, 0, 90}, 30}, {0, 1, 2}, near), eAnswer::kUnsure);
  EXPECT_EQ(near.size(), 2U);
  // What an enclosing ball has left out is not looked at again.
  BallTest::Items open;
  EXPECT_EQ(grid.Judge({{0, 1000, 0}, 1}, near, open), eAnswer::kClear);
}

}  // namespace
}  // namespace ZARN::DU
