#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "du/fast/AVPipeBands.hpp"
#include "du/geometry/Constants.hpp"
#include "du/hardware/AVPipes.hpp"
#include "tests/du/Answers.hpp"
#include "tests/du/Balls.hpp"
#include "tests/property/Random.hpp"

namespace ZARN::DU {
namespace {

using Testing::AnswerTally;
using Testing::AskAboutBall;
using Testing::Random;

eAnswer Judge(const Ball& ball) {
  BallTest::Items open;
  const eAnswer answer = AVPipeBands().Judge(ball, {}, open);
  EXPECT_TRUE(open.empty());
  return answer;
}

/// The point at a polar angle and azimuth, in degrees.
Point At(double theta, double phi, double radius = 5860.0) {
  TVector3 point;
  point.SetMagThetaPhi(radius, theta / kDegreesPerRadian,
                       phi / kDegreesPerRadian);
  return {point.X(), point.Y(), point.Z()};
}

TEST(AVPipeBands, GiveNoWrongAnswerForAnyPointOfABall) {
  Random random(25);
  AnswerTally anywhere;
  AnswerTally atTheLimits;
  const AVPipeBands bands;
  constexpr std::array kThetas = {30.0, 120.0};
  constexpr std::array kPhis = {75.0, 80.0, 85.0, 95.0, 100.0, 105.0};
  for (int i = 0; i < 3000; ++i) {
    const TVector3 point = 5860.0 * random.Direction();
    const double radius = std::pow(10, random.Uniform(-4, 2.5));
    AskAboutBall(bands, {{point.X(), point.Y(), point.Z()}, radius}, random, {},
                 IsWithinAVPipeBands, anywhere);
    // A ball whose border just touches a limit.
    const double angle = kDegreesPerRadian * std::asin(radius / 5860.0);
    const auto off = [&] {
      return (random.Chance(0.5) ? 1 : -1) * angle *
             (1 + random.Uniform(-1e-3, 1e-3));
    };
    const double theta = random.Chance(0.7) ? random.Pick(kThetas) + off()
                                            : random.Uniform(2, 178);
    const double phi =
        random.Pick(kPhis) + off() / std::sin(theta / kDegreesPerRadian);
    AskAboutBall(bands, {At(theta, phi), radius}, random, {},
                 IsWithinAVPipeBands, atTheLimits);
  }
  anywhere.Expect(0.2);
  atTheLimits.Expect(0.7);
}

TEST(AVPipeBands, AreSureAboutSmallBallsInsideAndOutsideEachBand) {
  const auto expectBand = [](double theta, double halfWidth) {
    SCOPED_TRACE(theta);
    for (const double sign : {-1.0, 1.0}) {
      const auto judge = [&](double way) {
        return Judge({At(theta, 90 + sign * way), 1.0});
      };
      EXPECT_EQ(judge(0), eAnswer::kBlocks);
      EXPECT_EQ(judge(halfWidth - 0.5), eAnswer::kBlocks);
      EXPECT_EQ(judge(halfWidth), eAnswer::kUnsure);
      EXPECT_EQ(judge(halfWidth + 0.5), eAnswer::kClear);
      EXPECT_EQ(judge(180), eAnswer::kClear);
    }
  };
  expectBand(5, 15);
  expectBand(29, 15);
  expectBand(31, 10);
  expectBand(119, 10);
  expectBand(121, 5);
  expectBand(170, 5);
}

TEST(AVPipeBands, AreUnsureIfABallReachesFromOneBandIntoTheNext) {
  EXPECT_EQ(Judge({At(30, 102), 10.0}), eAnswer::kUnsure);
  EXPECT_EQ(Judge({At(120, 83), 10.0}), eAnswer::kUnsure);
  // In the middle, both bands block.
  EXPECT_EQ(Judge({At(30, 90), 10.0}), eAnswer::kBlocks);
}

TEST(AVPipeBands, AreUnsureAboutABallAroundTheAxis) {
  EXPECT_EQ(Judge({{0, 1, 5860}, 2.0}), eAnswer::kUnsure);
  EXPECT_EQ(Judge({{0, 0, 0}, 1.0}), eAnswer::kUnsure);
  EXPECT_EQ(Judge({{0, 0, 0}, 0.0}), eAnswer::kUnsure);
  EXPECT_EQ(Judge({{0, -1, -5860}, 2.0}), eAnswer::kUnsure);
}

TEST(AVPipeBands, HaveNoEntries) {
  EXPECT_TRUE(AVPipeBands().AllItems().empty());
}

}  // namespace
}  // namespace ZARN::DU
