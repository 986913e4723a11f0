#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "du/geometry/PointTree.hpp"
#include "tests/du/Answers.hpp"
#include "tests/du/Balls.hpp"
#include "tests/property/Random.hpp"

// What a tree of points says of a place that is only known within a ball.

namespace ZARN::DU {
namespace {

using Testing::AnswerTally;
using Testing::Random;

TEST(PointTreeNear, SaysNothingWrongOfAnyPlaceInABall) {
  Random random(97);
  std::vector<TVector3> points;
  for (int i = 0; i < 40; ++i) points.push_back(6000.0 * random.Direction());
  for (const double reach : {60.0, 400.0, 6000.0}) {
    SCOPED_TRACE(reach);
    const PointTree tree(points, reach);
    const std::uint32_t blocks = tree.CountPoints() / PointBlocks::kPoints;
    AnswerTally tally;
    for (int i = 0; i < 2000; ++i) {
      const double radius = reach * std::pow(10, random.Uniform(-10, 0));
      const TVector3& point = random.Pick(points);
      const TVector3 middle =
          point + (reach + random.Uniform(-2, 2) * radius) * random.Direction();
      const Stretch asked =
          random.Chance(0.5)
              ? Stretch(static_cast<std::uint32_t>(random.Below(blocks)), 1)
              : Stretch(0, blocks);
      const Point centre = {middle.X(), middle.Y(), middle.Z()};
      const eAnswer answer = tree.JudgePointNear({centre, radius}, asked);
      // Rounded places on the border would be outside.
      for (const TVector3& place :
           Testing::PointsOf({centre, 0.999 * radius}, random, {point})) {
        tally.Add(answer, tree.HasPointNear(place, asked), place);
      }
    }
    tally.Expect(0.6);
  }
}

TEST(PointTreeNear, IsUnsureOnlyIfTheBallMeetsTheReach) {
  const PointTree tree({{0, 0, 0}}, 100.0);
  const auto judge = [&](double x, double radius) {
    return tree.JudgePointNear({{x, 0, 0}, radius}, {0, 1});
  };
  EXPECT_EQ(judge(98.9, 1.0), eAnswer::kBlocks);
  EXPECT_EQ(judge(99.1, 1.0), eAnswer::kUnsure);
  EXPECT_EQ(judge(100.9, 1.0), eAnswer::kUnsure);
  EXPECT_EQ(judge(101.1, 1.0), eAnswer::kClear);
  // The computed distance may be that of a place on the other side.
  EXPECT_EQ(judge(100.0, 0.0), eAnswer::kUnsure);
  EXPECT_EQ(judge(100.0 - 1e-9, 0.0), eAnswer::kBlocks);
  EXPECT_EQ(judge(100.0 + 1e-9, 0.0), eAnswer::kClear);
}

}  // namespace
}  // namespace ZARN::DU
