#include "du/geometry/SquaredReach.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/du/Neighbours.hpp"
#include "tests/property/Random.hpp"
#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::DU {
namespace {

using Testing::Above;
using Testing::Below;
using Testing::kInfinity;
using Testing::Random;

using Limits = std::numeric_limits<double>;

/// Expect the squared limit to agree with the square root around the limit, and
/// at the ends of the range of doubles.
void ExpectAgreesWithTheRoot(double reach) {
  const double limit = SquaredReach(reach);
  SCOPED_TRACE(reach);
  double below = limit;
  double above = limit;
  for (int i = 0; i < 4; ++i) {
    for (const double a : {below, above}) {
      if (a < 0.0) continue;
      EXPECT_EQ(a < limit, std::sqrt(a) < reach) << "for " << a;
    }
    below = Below(below);
    above = Above(above);
  }
  for (const double a : {0.0, Limits::denorm_min(), Limits::max(), kInfinity}) {
    EXPECT_EQ(a < limit, std::sqrt(a) < reach) << "for " << a;
  }
}

TEST(SquaredReach, AgreesWithTheRootToTheLastBit) {
  Random random(1);
  for (int i = 0; i < 20000; ++i) {
    ExpectAgreesWithTheRoot(random.Uniform(0, 10000));
    ExpectAgreesWithTheRoot(std::exp2(random.Uniform(-1074, 1023)));
  }
}

TEST(SquaredReach, AgreesWithTheRootWhereTheSquareIsNotExact) {
  // Squares that underflow, lose bits, or overflow.
  for (const double reach :
       {Limits::denorm_min(), 1e-200, 1e-170, 1.5e-162, 1e-160, 1e-154,
        Limits::min(), 1e154, std::sqrt(Limits::max()), 1.4e154, 1e200,
        Limits::max(), kInfinity}) {
    ExpectAgreesWithTheRoot(reach);
    ExpectAgreesWithTheRoot(Below(reach));
    ExpectAgreesWithTheRoot(Above(reach));
  }
}

TEST(SquaredReach, HasNothingBelowAReachThatIsNotAboveZero) {
  for (const double reach :
       {0.0, -0.0, -1.0, -1e-170, -kInfinity, Limits::quiet_NaN()}) {
    EXPECT_FALSE(0.0 < SquaredReach(reach)) << reach;
  }
}

}  // namespace
}  // namespace ZARN::DU
