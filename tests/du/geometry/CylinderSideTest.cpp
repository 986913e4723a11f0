#include "du/geometry/CylinderSide.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "du/geometry/Answer.hpp"
#include "du/geometry/Constants.hpp"
#include "du/geometry/Primitives.hpp"
#include "tests/du/Answers.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::DU {
namespace {

using Testing::AnswerTally;
using Testing::kInfinity;
using Testing::kNaN;
using Testing::Random;

/// This number is the square root of several doubles next to its square.
constexpr double kRadius = 5734.4;

template <class Real>
class CylinderSideIn : public ::testing::Test {
 protected:
  struct Place {
    explicit Place(const TVector3& p)
        : x(static_cast<Real>(p.X())), y(static_cast<Real>(p.Y())) {}
    Real Distance2() const { return x * x + y * y; }
    Real x;
    Real y;
  };

  static eAnswer JudgeInside(const TVector3& point) {
    const Real distance2 = Place(point).Distance2();
    return AnswerOf(IsInside(distance2, kRadius2),
                    IsOutside(distance2, kRadius2));
  }

  static eAnswer JudgePassing(const TVector3& first, const TVector3& second) {
    const Place a(first);
    const Place b(second);
    const auto passage = PassageOf(a.Distance2(), b.Distance2(),
                                   a.x * b.x + a.y * b.y, kRadius2);
    return AnswerOf(IsMeeting(passage), IsPassingBeside(passage));
  }

  static constexpr Real kRadius2 = static_cast<Real>(kRadius * kRadius);
};

using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(CylinderSideIn, Precisions);

/// Positive or negative, 1e-17 to 1.
double SmallNumber(Random& random) {
  return (random.Chance(0.5) ? 1 : -1) * std::pow(10, random.Uniform(-17, 0));
}

TYPED_TEST(CylinderSideIn, TellsInsideFromOutside) {
  Random random(15);
  AnswerTally anywhere;
  AnswerTally atTheLimit;
  for (int i = 0; i < 50000; ++i) {
    const TVector3 point = random.Uniform(0, 12000) * random.Direction();
    anywhere.Add(this->JudgeInside(point), Flattened(point).Mag() < kRadius,
                 point);
    TVector3 near = point;
    near.SetPerp(kRadius * (1 + SmallNumber(random)));
    atTheLimit.Add(this->JudgeInside(near), Flattened(near).Mag() < kRadius,
                   near);
  }
  anywhere.Expect(0.01);
  atTheLimit.Expect(0.9);
}

TYPED_TEST(CylinderSideIn, IsUnsureOfItsSideOnTheCylinder) {
  EXPECT_EQ(this->JudgeInside({kRadius, 0, 0}), eAnswer::kUnsure);
  EXPECT_EQ(this->JudgeInside({0.6 * kRadius, 0.8 * kRadius, 0}),
            eAnswer::kUnsure);
}

TYPED_TEST(CylinderSideIn, TellsWhetherAPathCanMeetTheCylinder) {
  Random random(16);
  AnswerTally anywhere;
  AnswerTally atTheLimit;
  for (int i = 0; i < 50000; ++i) {
    TVector3 start = random.Direction();
    start.SetPerp(random.Uniform(1.001, 1.5) * kRadius);
    TVector3 end = random.Direction();
    end.SetPerp(random.Uniform(1.001, 1.5) * kRadius);
    const TVector3 flat = Flattened(start);
    const double closest = ClosestAngle(flat, kRadius);
    const auto add = [&](AnswerTally& tally) {
      tally.Add(this->JudgePassing(start, end),
                closest > flat.Angle(Flattened(end)), start);
    };
    add(anywhere);
    end.SetPhi(start.Phi() + (random.Chance(0.5) ? 1 : -1) * closest *
                                 (1 + SmallNumber(random)));
    add(atTheLimit);
  }
  anywhere.Expect(0.01);
  atTheLimit.Expect(0.8);
}

TYPED_TEST(CylinderSideIn, IsUnsureOfAPathThatStartsInTheCylinder) {
  EXPECT_EQ(this->JudgePassing({100, 0, 0}, {9000, 0, 0}), eAnswer::kUnsure);
  EXPECT_EQ(this->JudgePassing({0, 0, 0}, {9000, 0, 0}), eAnswer::kUnsure);
}

TYPED_TEST(CylinderSideIn, IsUnsureOfWhatIsNotANumber) {
  EXPECT_EQ(this->JudgeInside({kNaN, 0, 0}), eAnswer::kUnsure);
  for (const double bad : {kNaN, kInfinity, -kInfinity}) {
    EXPECT_EQ(this->JudgePassing({bad, 0, 0}, {9000, 0, 0}), eAnswer::kUnsure);
    EXPECT_EQ(this->JudgePassing({9000, 0, 0}, {0, bad, 0}), eAnswer::kUnsure);
  }
  using Real = TypeParam;
  const Real none = std::numeric_limits<Real>::quiet_NaN();
  EXPECT_FALSE(IsInside(Real(1), none));
  EXPECT_FALSE(IsOutside(Real(1), none));
}

TYPED_TEST(CylinderSideIn, IsUnsureOfACylinderWithoutWidth) {
  using Real = TypeParam;
  EXPECT_FALSE(IsInside(Real(0), Real(0)));
  EXPECT_FALSE(IsOutside(Real(0), Real(0)));
  EXPECT_TRUE(IsOutside(Real(1), Real(0)));
}

}  // namespace
}  // namespace ZARN::DU
