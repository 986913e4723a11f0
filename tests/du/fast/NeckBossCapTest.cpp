#include <gtest/gtest.h>

#include <cmath>

#include "du/fast/NeckBossCap.hpp"
#include "du/geometry/Constants.hpp"
#include "du/hardware/NeckBoss.hpp"
#include "tests/du/Answers.hpp"
#include "tests/du/Balls.hpp"
#include "tests/du/Boss.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::DU {
namespace {

using Testing::AnswerTally;
using Testing::AskAboutBall;
using Testing::BossWithAngle;
using Testing::kInfinity;
using Testing::Random;

/// A ball on the vessel at a polar angle.
Ball BallAt(double theta, double radius) {
  return {{5860.0 * std::sin(theta), 0, 5860.0 * std::cos(theta)}, radius};
}

eAnswer Judge(double bossAngle, const Ball& ball) {
  BallTest::Items open;
  const eAnswer answer =
      NeckBossCap(BossWithAngle(bossAngle)).Judge(ball, {}, open);
  EXPECT_TRUE(open.empty());
  return answer;
}

TEST(NeckBossCap, GivesNoWrongAnswerForAnyPointOfABall) {
  Random random(26);
  AnswerTally tally;
  for (int i = 0; i < 5000; ++i) {
    const TVector3 point = 5860.0 * random.Direction();
    const double radius = std::pow(10, random.Uniform(-6, 3));
    // The edge of the boss just touches the ball, from inside or outside.
    const double spread = std::asin(radius / point.Mag());
    const double angle = point.Theta() + (random.Chance(0.5) ? 1 : -1) *
                                             spread *
                                             (1 + random.Uniform(-1e-6, 1e-6));
    const NeckBossModel model = BossWithAngle(angle);
    AskAboutBall(
        NeckBossCap(model), {{point.X(), point.Y(), point.Z()}, radius}, random,
        {}, [&](const TVector3& p) { return IsUnderNeckBoss(model, p); },
        tally);
  }
  tally.Expect(0.8);
}

TEST(NeckBossCap, IsSureUnlessTheBallMeetsItsEdge) {
  EXPECT_EQ(Judge(0.2, BallAt(0.1, 500)), eAnswer::kBlocks);
  EXPECT_EQ(Judge(0.2, BallAt(0.1, 600)), eAnswer::kUnsure);
  EXPECT_EQ(Judge(0.2, BallAt(0.2, 1e-3)), eAnswer::kUnsure);
  EXPECT_EQ(Judge(0.2, BallAt(0.3, 600)), eAnswer::kUnsure);
  EXPECT_EQ(Judge(0.2, BallAt(0.3, 500)), eAnswer::kClear);
  EXPECT_EQ(Judge(0.2, BallAt(0.2 + 1e-6, 1e-3)), eAnswer::kClear);
  EXPECT_EQ(Judge(0.2, BallAt(0.2 - 1e-6, 1e-3)), eAnswer::kBlocks);
}

TEST(NeckBossCap, BlocksNothingIfItsAngleIsNotAboveZero) {
  for (const double angle : {-1.0, -kInfinity, std::nan("")}) {
    EXPECT_EQ(Judge(angle, BallAt(1.0, 10)), eAnswer::kClear) << angle;
  }
  EXPECT_EQ(Judge(0.0, BallAt(1.0, 10)), eAnswer::kClear);
  EXPECT_EQ(Judge(4.0, BallAt(3.0, 10)), eAnswer::kBlocks);
  EXPECT_EQ(Judge(kInfinity, BallAt(3.0, 10)), eAnswer::kBlocks);
}

TEST(NeckBossCap, IsUnsureAboutABallAroundTheCentre) {
  EXPECT_EQ(Judge(0.2, {{0, 0, 100}, 200}), eAnswer::kUnsure);
  EXPECT_EQ(Judge(0.2, {{0, 0, 0}, 0}), eAnswer::kUnsure);
}

TEST(NeckBossCap, HasNoEntries) {
  EXPECT_TRUE(NeckBossCap(BossWithAngle(0.2)).AllItems().empty());
}

}  // namespace
}  // namespace ZARN::DU
