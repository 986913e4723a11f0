#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <vector>

#include "TVector3.h"
#include "du/geometry/BoxTest.hpp"
#include "tests/du/Answers.hpp"
#include "tests/property/Random.hpp"

namespace ZARN::Testing {

/// Points all over a ball: the centre; the border along the axes, at random,
/// where polar angle and azimuth differ most from those of the centre, and on
/// the lines to the points @p towards; and random points inside.
inline std::vector<TVector3> PointsOf(const DU::Ball& ball, Random& random,
                                      const std::vector<TVector3>& towards) {
  const TVector3 middle = AsTVector3(ball.centre);
  const double r = ball.radius;
  std::vector<TVector3> points = {middle};
  const auto add = [&](const TVector3& offset) {
    points.push_back(middle + offset);
  };
  for (const double s : {-r, r}) {
    add({s, 0, 0});
    add({0, s, 0});
    add({0, 0, s});
    for (const TVector3& target : towards) add(s * (target - middle).Unit());
    const double distance = middle.Mag();
    const double fromAxis = middle.Perp();
    if (fromAxis > r) {
      TVector3 tangent = middle;
      tangent.SetMagThetaPhi(
          std::sqrt(distance * distance - r * r),
          middle.Theta() + std::copysign(std::asin(r / distance), s),
          middle.Phi());
      points.push_back(tangent);
      const double perp = std::sqrt(fromAxis * fromAxis - r * r);
      tangent.SetZ(middle.Z());
      tangent.SetX(perp);
      tangent.SetY(0);
      tangent.RotateZ(middle.Phi() + std::copysign(std::asin(r / fromAxis), s));
      points.push_back(tangent);
    }
  }
  constexpr int kRandomPoints = 10;
  for (int i = 0; i < kRandomPoints; ++i) {
    add(r * random.Direction());
    add(random.Uniform(0, r) * random.Direction());
  }
  return points;
}

/// What a test says of a ball, which is a box without edges: the same for each
/// of its quarters.
inline DU::eAnswer JudgeBall(const DU::BoxTest& test, const DU::Ball& ball,
                             const DU::BoxTest::Items& items,
                             DU::BoxTest::Items& open) {
  const DU::QuarteredBox box = {ball.centre, {}, ball.radius, ball.radius};
  DU::BoxTest::OfQuarters<DU::BoxTest::Items> openInQuarters;
  const auto answers = test.JudgeQuarters(box, items, openInQuarters);
  for (std::size_t i = 1; i < answers.size(); ++i) {
    EXPECT_EQ(answers[i], answers[0]);
    EXPECT_EQ(openInQuarters[i], openInQuarters[0]);
  }
  open = openInQuarters[0];
  return answers[0];
}

/// Let a test judge a ball, and with the items that this leaves open a ball
/// inside; count the answers, each compared with the formula at points all over
/// its ball.
template <class IsBlocked>
void AskAboutBall(const DU::BoxTest& test, const DU::Ball& ball, Random& random,
                  const std::vector<TVector3>& towards,
                  const IsBlocked& isBlocked, AnswerTally& tally) {
  const auto ask = [&](const DU::Ball& asked, const DU::BoxTest::Items& items,
                       DU::BoxTest::Items& open) {
    const DU::eAnswer answer = JudgeBall(test, asked, items, open);
    for (const TVector3& point : PointsOf(asked, random, towards)) {
      tally.Add(answer, isBlocked(point), point);
    }
    return answer;
  };
  DU::BoxTest::Items remaining;
  if (ask(ball, test.AllItems(), remaining) != DU::eAnswer::kUnsure) return;
  EXPECT_EQ(remaining.empty(), test.AllItems().empty());

  const double part = random.Uniform(0, 1);
  const TVector3 middle =
      AsTVector3(ball.centre) +
      (1 - part) * random.Uniform(0, 1) * ball.radius * random.Direction();
  DU::BoxTest::Items open;
  ask({{middle.X(), middle.Y(), middle.Z()}, part * ball.radius}, remaining,
      open);
}

}  // namespace ZARN::Testing
