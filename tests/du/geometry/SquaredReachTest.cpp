#include "du/geometry/SquaredReach.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/du/Neighbours.hpp"
#include "tests/property/Random.hpp"

namespace ZARN::DU {
namespace {

using Testing::Above;
using Testing::Below;
using Testing::Random;

using Limits = std::numeric_limits<double>;
constexpr double kInfinity = Limits::infinity();

/// Expect the square to tell around its turn, and at the ends of all numbers,
/// what the square root tells.
void ExpectTellsWhatTheRootDoes(double reach) {
  const double turn = SquaredReach(reach);
  SCOPED_TRACE(reach);
  double below = turn;
  double above = turn;
  for (int i = 0; i < 4; ++i) {
    for (const double a : {below, above}) {
      if (a < 0.0) continue;
      EXPECT_EQ(a < turn, std::sqrt(a) < reach) << "for " << a;
    }
    below = Below(below);
    above = Above(above);
  }
  for (const double a : {0.0, Limits::denorm_min(), Limits::max(), kInfinity}) {
    EXPECT_EQ(a < turn, std::sqrt(a) < reach) << "for " << a;
  }
}

TEST(SquaredReach, TellsWhatTheRootDoesToTheLastBit) {
  Random random(1);
  for (int i = 0; i < 20000; ++i) {
    ExpectTellsWhatTheRootDoes(random.Uniform(0, 10000));
    ExpectTellsWhatTheRootDoes(std::exp2(random.Uniform(-1074, 1023)));
  }
}

TEST(SquaredReach, TellsItAlsoWhereTheSquareIsNoNumberOfItsOwn) {
  // Squares that underflow, lose bits, or overflow.
  for (const double reach :
       {Limits::denorm_min(), 1e-200, 1e-170, 1.5e-162, 1e-160, 1e-154,
        Limits::min(), 1e154, std::sqrt(Limits::max()), 1.4e154, 1e200,
        Limits::max(), kInfinity}) {
    ExpectTellsWhatTheRootDoes(reach);
    ExpectTellsWhatTheRootDoes(Below(reach));
    ExpectTellsWhatTheRootDoes(Above(reach));
  }
}

TEST(SquaredReach, LetsNothingBeBelowAReachThatIsNotAboveZero) {
  for (const double reach :
       {0.0, -0.0, -1.0, -1e-170, -kInfinity, Limits::quiet_NaN()}) {
    EXPECT_FALSE(0.0 < SquaredReach(reach)) << reach;
  }
}

}  // namespace
}  // namespace ZARN::DU
