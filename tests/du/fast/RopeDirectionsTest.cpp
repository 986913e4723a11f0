#include "du/fast/RopeDirections.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "du/geometry/Constants.hpp"
#include "du/geometry/CylinderCrossing.hpp"
#include "du/geometry/Primitives.hpp"
#include "tests/du/Answers.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::DU {
namespace {

using eCrossings = RopeDirections::eCrossings;
using Testing::AnswerTally;
using Testing::kInfinity;
using Testing::kNaN;
using Testing::Random;
using Ropes = std::vector<TVector3>;

constexpr std::array kWays = {eCrossings::kFlattened, eCrossings::kInSpace};

bool IsNear(const Ropes& ropes, double tolerance, const TVector3& crossing) {
  return std::any_of(ropes.begin(), ropes.end(), [&](const TVector3& rope) {
    return tolerance > crossing.Angle(rope);
  });
}

eAnswer Judge(const RopeDirections& directions, const TVector3& crossing) {
  return directions.Judge(crossing.X(), crossing.Y(), crossing.Z());
}

/// Ropes all around, a little above and below the horizon.
Ropes RopesAround(Random& random, double highest) {
  Ropes ropes;
  for (int i = random.Whole(1, 12); i > 0; --i) {
    TVector3 rope(random.Uniform(3000, 7000), 0,
                  random.Uniform(-highest, highest));
    rope.RotateZ(random.Uniform(-4, 4));
    ropes.push_back(rope);
  }
  return ropes;
}

/// A crossing whose angle to a rope is nearly the tolerance.
TVector3 AtTheLimit(const TVector3& rope, double tolerance,
                    eCrossings crossings, Random& random) {
  const double angle =
      tolerance * (1 + (random.Chance(0.5) ? 1 : -1) *
                           std::pow(10, random.Uniform(-16, -1)));
  TVector3 crossing = rope;
  if (crossings == eCrossings::kFlattened) {
    const double cosine = std::cos(angle) * rope.Mag() / rope.Perp();
    crossing.SetZ(0);
    crossing.RotateZ((random.Chance(0.5) ? 1 : -1) *
                     std::acos(std::clamp(cosine, -1.0, 1.0)));
    return crossing;
  }
  const TVector3 axis = rope.Cross(random.Direction()).Unit();
  crossing.Rotate(angle, axis);
  return crossing;
}

TEST(RopeDirections, AreNeverWrongAndMostlySure) {
  Random random(20);
  for (const eCrossings crossings : kWays) {
    for (const int cells : {1, 64, 4096}) {
      AnswerTally anywhere;
      AnswerTally atTheLimit;
      for (int geometry = 0; geometry < 100; ++geometry) {
        const Ropes ropes = RopesAround(random, 200);
        const double tolerance = std::pow(10, random.Uniform(-4, 0.2));
        const RopeDirections directions(ropes, tolerance, crossings, cells);
        for (int i = 0; i < 50; ++i) {
          TVector3 crossing = 6000.0 * random.Direction();
          if (crossings == eCrossings::kFlattened) crossing.SetZ(0);
          anywhere.Add(Judge(directions, crossing),
                       IsNear(ropes, tolerance, crossing), crossing);
          crossing =
              AtTheLimit(random.Pick(ropes), tolerance, crossings, random);
          atTheLimit.Add(Judge(directions, crossing),
                         IsNear(ropes, tolerance, crossing), crossing);
        }
      }
      anywhere.Expect(0.001);
      atTheLimit.Expect(0.8);
    }
  }
}

TEST(RopeDirections, GiveNoWrongTableAnswerForASlightlyWrongAzimuth) {
  // For crossings in single precision only the table is used.
  Random random(21);
  for (const eCrossings crossings : kWays) {
    AnswerTally tally;
    for (int geometry = 0; geometry < 200; ++geometry) {
      const Ropes ropes = RopesAround(random, 200);
      const double tolerance = std::pow(10, random.Uniform(-4, 0));
      const RopeDirections directions(ropes, tolerance, crossings, 4096);
      for (int i = 0; i < 50; ++i) {
        const TVector3 crossing =
            random.Chance(0.5)
                ? AtTheLimit(random.Pick(ropes), tolerance, crossings, random)
                : Rotated({6000, 0, 0}, random.Uniform(-kPi, kPi));
        TVector3 wrong = crossing;
        wrong.RotateZ(random.Uniform(-0.99, 0.99) * AzimuthTable::kMargin);
        const AzimuthTable& table = directions.Table();
        tally.Add(table.At(table.CellOf(static_cast<float>(wrong.X()),
                                        static_cast<float>(wrong.Y()))),
                  IsNear(ropes, tolerance, crossing), crossing);
      }
    }
    tally.ExpectNoneWrong();
    EXPECT_GT(tally.Count(eAnswer::kClear), tally.Count() / 5);
    // In space the height matters, so an azimuth alone blocks nothing.
    EXPECT_EQ(tally.Count(eAnswer::kBlocks) > 0,
              crossings == eCrossings::kFlattened);
  }
}

TEST(RopeDirections, BlockNothingBeyondTheirHeights) {
  Random random(22);
  AnswerTally tally;
  for (int geometry = 0; geometry < 500; ++geometry) {
    const Ropes ropes = RopesAround(random, 3000);
    const double tolerance = std::pow(10, random.Uniform(-4, 0));
    const RopeDirections directions(ropes, tolerance, eCrossings::kInSpace, 64);
    for (int i = 0; i < 50; ++i) {
      TVector3 crossing = AtTheLimit(random.Pick(ropes), tolerance,
                                     eCrossings::kInSpace, random);
      // With an error as large as that of single precision.
      const double height = kHalfPi - crossing.Theta();
      const double sine = std::sin(height + random.Uniform(-1, 1) * 0.99 *
                                                RopeDirections::kHeightMargin);
      const bool isBeyond =
          sine < directions.LowestSine() || sine > directions.HighestSine();
      tally.Add(AnswerOf(false, isBeyond), IsNear(ropes, tolerance, crossing),
                crossing);
    }
  }
  tally.ExpectNoneWrong();
}

TEST(RopeDirections, HaveHeightsAsNarrowAsToleranceAndMarginAllow) {
  const RopeDirections directions({{6000, 0, 600}, {0, 6000, -300}}, 0.03,
                                  eCrossings::kInSpace, 64);
  const double widened = 0.03 + RopeDirections::kHeightMargin;
  EXPECT_NEAR(directions.HighestSine(), std::sin(std::atan(0.1) + widened),
              1e-12);
  EXPECT_NEAR(directions.LowestSine(), std::sin(-std::atan(0.05) - widened),
              1e-12);
}

TEST(RopeDirections, HaveNoHeightLimitIfTheyReachOverThePole) {
  const RopeDirections steep({{100, 0, 6000}}, 0.03, eCrossings::kInSpace, 64);
  EXPECT_EQ(steep.HighestSine(), 2.0);
  EXPECT_GT(steep.LowestSine(), 0.9);
  for (const double tolerance : {2.0, -2.0, kNaN, kInfinity}) {
    const RopeDirections wide({{6000, 0, 0}}, tolerance, eCrossings::kInSpace,
                              64);
    EXPECT_EQ(wide.LowestSine(), -2.0) << tolerance;
    EXPECT_EQ(wide.HighestSine(), 2.0) << tolerance;
  }
}

TEST(RopeDirections, LeaveTheLimitItselfOpen) {
  for (const eCrossings crossings : kWays) {
    const RopeDirections directions({{6000, 0, 0}}, 0.025, crossings, 4096);
    const auto judge = [&](double phi) {
      return Judge(directions, Rotated({6000, 0, 0}, phi));
    };
    EXPECT_EQ(judge(0.025), eAnswer::kUnsure);
    EXPECT_EQ(judge(-0.025), eAnswer::kUnsure);
    EXPECT_EQ(judge(0.0249), eAnswer::kBlocks);
    EXPECT_EQ(judge(-0.0251), eAnswer::kClear);
  }
}

TEST(RopeDirections, AreRightForEveryTolerance) {
  Random random(23);
  const Ropes ropes = {{6000, 0, 20}, {-4000, 3000, -5}};
  for (const eCrossings crossings : kWays) {
    for (const double tolerance :
         {0.0, -0.0, -0.025, -10.0, -kInfinity, kNaN, kInfinity, 1e-300, 1e-170,
          1e-12, 1e-8, 1.5, kHalfPi, 2.0, 3.0, kPi, 3.2, 7.0, 1e300}) {
      SCOPED_TRACE(tolerance);
      for (const int cells : {1, 4096}) {
        const RopeDirections directions(ropes, tolerance, crossings, cells);
        AnswerTally tally;
        for (int i = 0; i < 100; ++i) {
          TVector3 crossing = i < 4 ? ropes[static_cast<std::size_t>(i % 2)]
                                    : 6000.0 * random.Direction();
          if (i % 4 < 2 && i < 4) crossing *= -1;
          if (crossings == eCrossings::kFlattened) crossing.SetZ(0);
          tally.Add(Judge(directions, crossing),
                    IsNear(ropes, tolerance, crossing), crossing);
        }
        tally.ExpectNoneWrong();
        EXPECT_LE(tally.Count(eAnswer::kUnsure),
                  std::isinf(tolerance) ? 100U : 4U);
      }
    }
  }
}

TEST(RopeDirections, AreClearEverywhereWithoutARope) {
  for (const eCrossings crossings : kWays) {
    for (const double tolerance : {0.025, 4.0}) {
      const RopeDirections directions({}, tolerance, crossings, 64);
      EXPECT_EQ(Judge(directions, {6000, 0, 0}), eAnswer::kClear);
      EXPECT_EQ(Judge(directions, {-1, 5, 0}), eAnswer::kClear);
    }
  }
  EXPECT_EQ(Judge(RopeDirections(), {6000, 0, 0}), eAnswer::kClear);
}

TEST(RopeDirections, AreUnsureEverywhereWithARopeThatCannotBeJudged) {
  // To some of them the angle of ROOT's vectors differs from that of products.
  for (const TVector3& rope :
       {TVector3(0, 0, 0), TVector3(0, 0, 6000), TVector3(1e-170, 0, 0),
        TVector3(1e200, 0, 0), TVector3(kNaN, 0, 0),
        TVector3(0, kInfinity, 0)}) {
    for (const eCrossings crossings : kWays) {
      const RopeDirections directions({{6000, 0, 0}, rope}, 0.025, crossings,
                                      64);
      for (const double phi : {0.0, 1.0, 2.0, -2.0}) {
        EXPECT_EQ(Judge(directions, Rotated({6000, 0, 0}, phi)),
                  eAnswer::kUnsure);
      }
      EXPECT_EQ(directions.LowestSine(), -2.0);
      EXPECT_EQ(directions.HighestSine(), 2.0);
      for (const eAnswer answer : directions.Table().Answers()) {
        EXPECT_EQ(answer, eAnswer::kUnsure);
      }
    }
  }
}

TEST(RopeDirections, GiveTheSameAnswerAtEveryDistance) {
  const RopeDirections directions({{6000, 0, 0}}, 0.025, eCrossings::kFlattened,
                                  1);
  for (const double length : {1e-3, 1.0, 1e5}) {
    EXPECT_EQ(Judge(directions, {length, 0.02 * length, 0}), eAnswer::kBlocks);
    EXPECT_EQ(Judge(directions, {length, 0.03 * length, 0}), eAnswer::kClear);
  }
}

/// The direction of a rope rotated by an angle in a random direction.
TVector3 TurnedFrom(const TVector3& rope, double angle, Random& random) {
  TVector3 turned = rope;
  turned.Rotate(angle, rope.Cross(random.Direction()).Unit());
  return turned;
}

/// A rope whose distance from the axis is a share of its length.
Ropes SteepRope(double share) { return {{5000.0 * share, 0, 5000.0}}; }

/// 0 to 1, mostly near 0.
double Fraction(Random& random) { return std::pow(10, random.Uniform(-8, 0)); }

TEST(RopeDirections, AreNeverWrongAboutARopeThatIsNearlyTheAxis) {
  // Such a rope is at almost the same angle from all points on the horizon, so
  // the last bit of an angle becomes a large part of the width of its shadow.
  Random random(86);
  for (const double share :
       {2e-13, 1e-11, 1e-9, 1e-8, 1e-7, 0.9e-6, 1.1e-6, 1e-4, 1e-2}) {
    SCOPED_TRACE(share);
    const Ropes ropes = SteepRope(share);
    AnswerTally tally;
    for (int i = 0; i < 60; ++i) {
      // The shadow is half a turn wide or less, often much less.
      const double tolerance = kHalfPi - (1 - Fraction(random)) * share;
      const RopeDirections directions(ropes, tolerance, eCrossings::kFlattened,
                                      4096);
      for (int k = 0; k < 500; ++k) {
        const double phi = (random.Chance(0.5) ? kPi : -kPi) * Fraction(random);
        const TVector3 crossing = Rotated({6000, 0, 0}, phi);
        const bool isNear = IsNear(ropes, tolerance, crossing);
        tally.Add(Judge(directions, crossing), isNear, crossing);
        // With an error as large as that of the algebra in single precision.
        const TVector3 wrong =
            Rotated(crossing, random.Uniform(-1, 1) *
                                  double{CrossingBands<float>::kAzimuthError});
        const AzimuthTable& table = directions.Table();
        tally.Add(table.At(table.CellOf(static_cast<float>(wrong.X()),
                                        static_cast<float>(wrong.Y()))),
                  isNear, crossing);
      }
    }
    tally.ExpectNoneWrong();
    EXPECT_EQ(tally.Count(eAnswer::kUnsure) == tally.Count(), share < 1e-6);
  }
}

TEST(RopeDirections, AreNeverWrongInSpaceAboutARopeNearTheAxis) {
  // An angle from an arc cosine may be 5e-8 too small. The azimuth by which the
  // table finds ropes then has that error as seen from the axis.
  Random random(87);
  for (const double share : {1.1e-6, 1e-5, 1e-4, 1e-3}) {
    SCOPED_TRACE(share);
    const Ropes ropes = SteepRope(share);
    AnswerTally tally;
    for (const double tolerance : {1e-12, 1e-9, 1e-8, 5e-8}) {
      const RopeDirections directions(ropes, tolerance, eCrossings::kInSpace,
                                      4096);
      for (int i = 0; i < 10000; ++i) {
        const TVector3 crossing =
            TurnedFrom(ropes.front(), random.Uniform(0, 6e-8), random);
        tally.Add(Judge(directions, crossing),
                  IsNear(ropes, tolerance, crossing), crossing);
      }
    }
    tally.ExpectNoneWrong();
  }
}

TEST(RopeDirections, AreSureInSpaceNextToALimitOfAThousandth) {
  Random random(83);
  constexpr double kAngle = 1e-3;
  for (const int cells : {1, 4096}) {
    for (int i = 0; i < 200; ++i) {
      const TVector3 rope = RopesAround(random, 200).front();
      const RopeDirections directions({rope}, kAngle, eCrossings::kInSpace,
                                      cells);
      const auto judge = [&](double angle) {
        return Judge(directions, TurnedFrom(rope, angle, random));
      };
      EXPECT_EQ(judge(0), eAnswer::kBlocks);
      EXPECT_EQ(judge(0.5e-3), eAnswer::kBlocks);
      EXPECT_EQ(judge(kAngle - 4e-6), eAnswer::kBlocks);
      for (const double off : {0.0, 1e-10, 1e-8, 1e-7, 1.9e-6}) {
        EXPECT_EQ(judge(kAngle - off), eAnswer::kUnsure) << off;
        EXPECT_EQ(judge(kAngle + off), eAnswer::kUnsure) << off;
      }
      EXPECT_EQ(judge(kAngle + 4e-6), eAnswer::kClear);
      EXPECT_EQ(judge(1.5e-3), eAnswer::kClear);
    }
  }
}

TEST(RopeDirections, AreNeverWrongInSpaceForACrossingWithTheErrorOfTheAlgebra) {
  Random random(84);
  for (const double tolerance : {1e-4, 3e-4, 1e-3, 3e-3, 1e-2}) {
    SCOPED_TRACE(tolerance);
    AnswerTally beside;
    AnswerTally atTheLimit;
    for (int i = 0; i < 4000; ++i) {
      const Ropes ropes = RopesAround(random, 200);
      const RopeDirections directions(ropes, tolerance, eCrossings::kInSpace,
                                      4096);
      const auto add = [&](const TVector3& crossing, AnswerTally& tally) {
        using Bands = CrossingBands<double>;
        TVector3 found = crossing;
        found.SetTheta(crossing.Theta() +
                       random.Uniform(-1, 1) * Bands::kSpaceError);
        found.RotateZ(random.Uniform(-1, 1) * Bands::kAzimuthError);
        tally.Add(Judge(directions, found), IsNear(ropes, tolerance, crossing),
                  crossing);
      };
      const TVector3& rope = random.Pick(ropes);
      add(TurnedFrom(rope, tolerance * random.Uniform(0.5, 1.5), random),
          beside);
      add(AtTheLimit(rope, tolerance, eCrossings::kInSpace, random),
          atTheLimit);
      const double off = std::pow(10, random.Uniform(-12, -5));
      add(TurnedFrom(rope, tolerance + (random.Chance(0.5) ? off : -off),
                     random),
          atTheLimit);
    }
    // Twice kAngleBandInSpace, relative to the width of the tolerance.
    beside.Expect(6e-6 / tolerance);
    atTheLimit.Expect(0.95);
  }
}

TEST(RopeDirections, AreNeverWrongInSpaceForATinyTolerance) {
  // The band around the limit may reach down to angle 0.
  Random random(85);
  const TVector3 rope(6000, 0, 20);
  for (const double tolerance : {1e-9, 1e-6, 2e-6, 4e-6}) {
    SCOPED_TRACE(tolerance);
    const RopeDirections directions({rope}, tolerance, eCrossings::kInSpace,
                                    64);
    AnswerTally tally;
    for (int i = 0; i < 2000; ++i) {
      const TVector3 crossing =
          TurnedFrom(rope, std::pow(10, random.Uniform(-10, -4)), random);
      tally.Add(Judge(directions, crossing),
                IsNear({rope}, tolerance, crossing), crossing);
    }
    tally.ExpectNoneWrong();
    EXPECT_GT(tally.Count(eAnswer::kClear), 350U);
  }
}

}  // namespace
}  // namespace ZARN::DU
