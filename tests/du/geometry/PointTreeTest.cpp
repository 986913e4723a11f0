#include "du/geometry/PointTree.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "du/geometry/StretchLists.hpp"
#include "tests/du/Balls.hpp"
#include "tests/du/Neighbours.hpp"
#include "tests/du/PrintVectors.hpp"
#include "tests/du/geometry/PointTreeLoops.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::DU {
namespace {

using Testing::Above;
using Testing::AnswerTally;
using Testing::Below;
using Testing::IsAnyNear;
using Testing::IsAnyOpenNear;
using Testing::JudgeBall;
using Testing::kInfinity;
using Testing::kNaN;
using Testing::Random;

using Points = std::vector<TVector3>;
using Limits = std::numeric_limits<double>;

/// Expect a tree to say of every place what the loop says, and give how many of
/// the places have a point near.
int ExpectAnswersOfTheLoop(const Points& points, double reach,
                           const Points& places) {
  SCOPED_TRACE(reach);
  int near = 0;
  const PointTree tree(points, reach);
  for (const TVector3& place : places) {
    const bool expected = IsAnyNear(points, reach, place);
    near += expected ? 1 : 0;
    EXPECT_EQ(tree.HasPointNear(place), expected)
        << ::testing::PrintToString(place);
  }
  return near;
}

/// How many points stand behind some open items.
std::size_t CountOpen(const PointTree& tree, const BoxTest::Items& open) {
  StretchLists list(1000000);
  tree.AppendEntries(open, list);
  list.EndList();
  std::size_t count = 0;
  for (const Stretch some : list.All()) {
    count += std::min(some.End() * PointBlocks::kPoints, tree.CountPoints()) -
             some.Begin() * PointBlocks::kPoints;
  }
  return count;
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

TEST(PointTree, FindsWhatTheLoopFinds) {
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

TEST(PointTree, FindsWhatTheLoopFindsExactlyAtTheReach) {
  Random random(6);
  for (const double reach : {1e-3, 12.0, 162.0, 3000.0, 1e12}) {
    const Points points = PointsOnASphere(random, 200, 6000.0);
    const Points places = PlacesAtTheLimit(points, reach, random);
    const int near = ExpectAnswersOfTheLoop(points, reach, places);
    EXPECT_GT(near, 20) << reach;
    EXPECT_LT(near, 2 * 200 * 9 / 10 + (reach > 1000 ? 200 : 0)) << reach;
  }
}

TEST(PointTree, CountsOnlyWhatIsStrictlyWithinReach) {
  const PointTree tree({{1, 2, 0}}, 5.0);
  EXPECT_FALSE(tree.HasPointNear({4, 6, 0}));
  EXPECT_FALSE(tree.HasPointNear({1, 2, 5}));
  EXPECT_TRUE(tree.HasPointNear({1, 2, Below(5)}));
  EXPECT_FALSE(tree.HasPointNear({1, 2, -5}));
  EXPECT_TRUE(tree.HasPointNear({1, 2, Above(-5)}));
  EXPECT_TRUE(tree.HasPointNear({1, 2, 0}));
}

TEST(PointTree, FindsAPointAtTheBorderOfEveryBlock) {
  // Points on a lattice as wide as the reach, so many that they take several
  // blocks, the last of which is not full.
  constexpr double kReach = 10.0;
  Points points;
  for (const double x : {-40.0, -20.0, 0.0, 20.0, 40.0}) {
    for (const double y : {-20.0, 0.0, 20.0}) {
      for (const double z : {-20.0, 0.0, 20.0}) points.emplace_back(x, y, z);
    }
  }
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
  for (std::size_t count = 1; count <= points.size(); ++count) {
    const Points some(points.begin(),
                      points.begin() + static_cast<std::ptrdiff_t>(count));
    EXPECT_GT(ExpectAnswersOfTheLoop(some, kReach, places), 0);
  }
}

TEST(PointTree, FindsNothingWithoutAPoint) {
  for (const PointTree& tree : {PointTree(), PointTree({}, 150.0)}) {
    EXPECT_FALSE(tree.HasPointNear({0, 0, 0}));
    EXPECT_EQ(tree.CountPoints(), 0U);
    EXPECT_TRUE(tree.AllItems().empty());
  }
}

TEST(PointTree, FindsNothingWithinAReachThatIsNotAboveZero) {
  for (const double reach : {0.0, -0.0, -150.0, -kInfinity, kNaN}) {
    EXPECT_EQ(ExpectAnswersOfTheLoop({{1, 2, 3}}, reach,
                                     {{1, 2, 3}, {1, 2, 4}, {0, 0, 0}}),
              0);
    // Nor has a map anything to divide.
    const PointTree tree({{1, 2, 3}}, reach);
    EXPECT_TRUE(tree.AllItems().empty());
    BoxTest::Items open;
    EXPECT_EQ(JudgeBall(tree, {{1, 2, 3}, 1.0}, {}, open), eAnswer::kClear);
  }
}

TEST(PointTree, FindsEveryFinitePointWithinAnInfiniteReach) {
  const Points points = {{kNaN, 0, 0}, {0, kInfinity, 0}, {1, 2, 3}};
  const Points places = {{0, 0, 0}, {1e6, -1e9, 0}, {1e200, 0, 0}};
  EXPECT_EQ(ExpectAnswersOfTheLoop({points[0]}, kInfinity, places), 0);
  EXPECT_EQ(ExpectAnswersOfTheLoop(points, kInfinity, places), 2);
  EXPECT_EQ(PointTree(points, kInfinity).CountPoints(), 1U);
}

TEST(PointTree, IsNeverNearAPlaceThatIsNotFinite) {
  const Points places = {{kNaN, 0, 0},       {0, kNaN, 0},
                         {0, 0, kNaN},       {kInfinity, 0, 0},
                         {0, -kInfinity, 0}, {0, 0, kInfinity}};
  for (const double reach : {1.0, 1e10, kInfinity}) {
    EXPECT_EQ(ExpectAnswersOfTheLoop({{0, 0, 0}, {50, 1, 2}}, reach, places),
              0);
  }
}

TEST(PointTree, KeepsTheOthersBesideAPointThatIsNotFinite) {
  const Points points = {
      {100, 0, 0}, {kNaN, 0, 0}, {0, -kInfinity, 0}, {0, 100, 0}};
  EXPECT_EQ(ExpectAnswersOfTheLoop(points, 10.0,
                                   {{100, 0, 1}, {0, 99, 0}, {0, 0, 0}}),
            2);
}

TEST(PointTree, FindsWhatTheLoopFindsAtEveryScale) {
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

TEST(PointTree, CountsADistanceWhoseSquareUnderflowsAsNone) {
  // The library's length of such a vector is 0, which is below any reach.
  EXPECT_EQ(ExpectAnswersOfTheLoop({{0, 0, 0}}, 1e-170,
                                   {{0, 0, 3e-170}, {1e-165, 0, 0}}),
            2);
}

TEST(PointTree, HoldsPointsThatLieInOnePlaceOrOnALine) {
  const Points same(10, {1, 2, 3});
  EXPECT_EQ(ExpectAnswersOfTheLoop(same, 1.0, {{1, 2, 3.5}, {1, 2, 4}}), 1);
  Points line;
  for (int i = -500; i <= 500; ++i) line.emplace_back(0, 10.0 * i, -7);
  EXPECT_EQ(ExpectAnswersOfTheLoop(
                line, 1.0, {{0, 5000, -7}, {0, -5000.5, -7}, {0.5, 15, -7}}),
            2);
}

TEST(PointTree, HasEveryFinitePointInOneOfItsEntries) {
  Random random(77);
  Points points = PointsOnASphere(random, 100, 6000.0);
  points.insert(points.begin() + 20, {kNaN, 0, 0});
  points.insert(points.begin() + 50, {0, kInfinity, 0});
  points.emplace_back(0, 0, 0);  // in no direction
  const PointTree tree(points, 1.0);
  ASSERT_EQ(tree.CountPoints(), 101U);
  EXPECT_EQ(CountOpen(tree, tree.AllItems()), 101U);
  int found = 0;
  for (const TVector3& point : points) {
    for (std::uint32_t entry = 0;
         entry * PointBlocks::kPoints < tree.CountPoints(); ++entry) {
      found += tree.HasPointNear(point, {entry, 1}) ? 1 : 0;
    }
    EXPECT_FALSE(tree.HasPointNear(point, {0, 0}));
  }
  EXPECT_EQ(found, 101);
}

TEST(PointTreeOnBalls, SaysNothingWrongOfAnyPointOfABall) {
  Random random(8);
  for (const double reach : {60.0, 400.0, 6000.0}) {
    const Points points = PointsOnASphere(random, 100, 6000.0);
    const PointTree tree(points, reach);
    EXPECT_EQ(tree.CountPoints(), 100U);
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
          tree, {{middle.X(), middle.Y(), middle.Z()}, radius}, random, {point},
          [&](const TVector3& p) { return IsAnyNear(points, reach, p); },
          tally);
    }
    tally.Expect(0.8);
  }
}

TEST(PointTreeOnBalls, IsSureOfASmallBallUnlessItMeetsTheLimit) {
  const PointTree tree({{0, 0, 0}, {1000, 0, 0}}, 100.0);
  const auto judge = [&](double x, double radius) {
    BoxTest::Items open;
    return JudgeBall(tree, {{x, 0, 0}, radius}, tree.AllItems(), open);
  };
  EXPECT_EQ(judge(0, 99), eAnswer::kBlocks);
  EXPECT_EQ(judge(0, 100), eAnswer::kUnsure);
  EXPECT_EQ(judge(89, 10), eAnswer::kBlocks);
  EXPECT_EQ(judge(95, 10), eAnswer::kUnsure);
  EXPECT_EQ(judge(105, 10), eAnswer::kUnsure);
  EXPECT_EQ(judge(111, 10), eAnswer::kClear);
  EXPECT_EQ(judge(1095, 10), eAnswer::kUnsure);
}

TEST(PointTreeOnBalls, IsUnsureWhereDistancesAreRoundedByMoreThanTheBall) {
  const PointTree tree({{1e19, 0, 0}}, 1e19);
  // Distances so large are a kilometre apart.
  EXPECT_FALSE(tree.HasPointNear({1000, 0, 0}));
  EXPECT_TRUE(tree.HasPointNear({1050, 0, 0}));
  for (const double x : {900.0, 1150.0}) {
    BoxTest::Items open;
    EXPECT_EQ(JudgeBall(tree, {{x, 0, 0}, 200}, tree.AllItems(), open),
              eAnswer::kUnsure);
    EXPECT_EQ(CountOpen(tree, open), 1U);
  }
}

TEST(PointTreeOnBalls, IsSureOfPointsFarWithinAHugeReach) {
  for (const double reach : {1e8, 1e9, 1e100, 1e200, kInfinity}) {
    const PointTree tree({{0, 0, 1e6}, {0, 1e7, 0}}, reach);
    BoxTest::Items open;
    EXPECT_EQ(JudgeBall(tree, {{0, 0, 5860}, 1000}, tree.AllItems(), open),
              eAnswer::kBlocks);
  }
}

TEST(PointTreeOnBalls, LeavesOnlyThePointsOpenThatCanDecide) {
  // As many in each place as there are in a block.
  Points points(PointBlocks::kPoints, {0, 0, 1});
  points.insert(points.end(), PointBlocks::kPoints, {150, 0, 1});
  points.insert(points.end(), PointBlocks::kPoints, {0, 1000, 1});
  const PointTree tree(points, 100.0);
  BoxTest::Items near;
  EXPECT_EQ(JudgeBall(tree, {{75, 0, 90}, 30}, tree.AllItems(), near),
            eAnswer::kUnsure);
  EXPECT_EQ(CountOpen(tree, near), 2 * PointBlocks::kPoints);
  // What an enclosing ball has left out is not looked at again.
  BoxTest::Items open;
  EXPECT_EQ(JudgeBall(tree, {{0, 1000, 0}, 1}, near, open), eAnswer::kClear);
}

/// What is open in balls, and how much of it.
struct OpenInBalls {
  int unsure = 0;
  int left = 0;  // unsure balls for which some point is left out
};

/// Expect that what a ball leaves open decides for places all over it as all
/// points do.
///
/// @param places  more of them, in the ball
void ExpectOpenItemsToDecide(const PointTree& tree, const Points& points,
                             double reach, const Ball& ball, Random& random,
                             Points places, OpenInBalls& balls) {
  BoxTest::Items open;
  if (JudgeBall(tree, ball, tree.AllItems(), open) != eAnswer::kUnsure) return;
  ++balls.unsure;
  Points near;
  for (const TVector3& point : points) {
    if ((point - AsTVector3(ball.centre)).Mag() < reach + ball.radius) {
      near.push_back(point);
    }
  }
  EXPECT_GE(CountOpen(tree, open), near.size());
  if (CountOpen(tree, open) < points.size()) ++balls.left;
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
    ASSERT_EQ(IsAnyOpenNear(tree, open, place), IsAnyNear(points, reach, place))
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
  const PointTree tree(points, reach);
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
    ExpectOpenItemsToDecide(tree, points, reach,
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
    ExpectOpenItemsToDecide(tree, points, reach,
                            ballAt(place - radius * apart.Unit()), random,
                            {place}, balls);
  }
}

TEST(PointTreeOnBalls, LeavesOpenWhatDecidesInABallBesideALine) {
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

TEST(PointTreeOnBalls, LeavesOpenWhatDecidesInABallAmongScatteredPoints) {
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

TEST(PointTreeOnBalls, LeavesOpenWhatDecidesAmongPointsInOnePlace) {
  Random random(80);
  OpenInBalls balls;
  Points points(10, {1, 2, 5800});
  ExpectOpenItemsToDecideAround(points, 162.0, random, 300, balls);
  const Points others(10, {Above(1), 2, 5803});
  points.insert(points.end(), others.begin(), others.end());
  ExpectOpenItemsToDecideAround(points, 162.0, random, 600, balls);
  EXPECT_GT(balls.unsure, 300);
}

TEST(PointTreeOnBalls, LeavesFewOpenInASmallBallBesideALine) {
  Random random(81);
  const Points points = PointsInALine(random, 400, 5.0);
  const PointTree tree(points, 162.0);
  const TVector3 along = (points[1] - points[0]).Unit();
  for (int i = 0; i < 200; ++i) {
    const TVector3 aside = along.Cross(random.Direction()).Unit();
    const TVector3 middle = points[0] + random.Uniform(300, 1700) * along +
                            random.Uniform(150, 174) * aside;
    BoxTest::Items open;
    ASSERT_EQ(JudgeBall(tree, {{middle.X(), middle.Y(), middle.Z()}, 15.0},
                        tree.AllItems(), open),
              eAnswer::kUnsure);
    EXPECT_LE(CountOpen(tree, open), 48U);
  }
}

}  // namespace
}  // namespace ZARN::DU
