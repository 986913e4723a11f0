#include "du/geometry/LeastDouble.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/SpecialNumbers.hpp"

namespace ZARN::DU {
namespace {

using Testing::kInfinity;
using Testing::kNaN;

constexpr double kMax = std::numeric_limits<double>::max();
constexpr double kTiny = std::numeric_limits<double>::denorm_min();

TEST(OrderOf, CountsTheDoublesBetweenTwo) {
  for (const double x : {-kMax, -150.0, -kTiny, kTiny, 1.0, 1e300}) {
    EXPECT_EQ(OrderOf(std::nextafter(x, kInfinity)) - OrderOf(x), 1U);
    EXPECT_EQ(DoubleAt(OrderOf(x)), x);
  }
  EXPECT_EQ(OrderOf(kTiny) - OrderOf(-kTiny), 3U) << "two zeros are between";
}

TEST(LeastDouble, FindsEveryLimitFromEveryGuess) {
  for (const double limit :
       {-kMax / 2, -150.0, -1e-300, -kTiny, 0.0, kTiny, 162.0, 1e300, kMax}) {
    for (const double guess : {-kMax, -1.0, 0.0, 161.9999, kMax, kInfinity,
                               -kInfinity, kNaN, limit}) {
      EXPECT_EQ(
          LeastDouble(-kMax, kMax, guess, [&](double x) { return x >= limit; }),
          limit)
          << guess;
    }
  }
}

TEST(LeastDouble, NeedsFewStepsFromAGoodGuess) {
  int steps = 0;
  const double limit = 162.0;
  const double guess = std::nextafter(std::nextafter(limit, 0.0), 0.0);
  LeastDouble(-kMax, kMax, guess, [&](double x) {
    ++steps;
    return x >= limit;
  });
  EXPECT_LE(steps, 6);
}

TEST(LeastDouble, TellsAConditionThatAlwaysOrNeverHolds) {
  EXPECT_EQ(LeastDouble(-1.0, 1.0, 0.0, [](double) { return true; }),
            -kInfinity);
  EXPECT_EQ(LeastDouble(-1.0, 1.0, 0.0, [](double) { return false; }),
            kInfinity);
}

TEST(LeastDouble, FindsNothingInARangeThatIsEmptyOrNaN) {
  const auto always = [](double) { return true; };
  EXPECT_EQ(LeastDouble(1.0, -1.0, 0.0, always), kInfinity);
  EXPECT_EQ(LeastDouble(kNaN, 1.0, 0.0, always), kInfinity);
  EXPECT_EQ(LeastDouble(-1.0, kNaN, 0.0, always), kInfinity);
}

TEST(LeastDouble, FindsOneOfSeveralChanges) {
  const auto isRagged = [](double x) {
    return x >= 3.0 || (x >= 1.0 && x < 2.0);
  };
  for (const double guess : {0.5, 1.5, 2.5, 3.5}) {
    const double found = LeastDouble(0.0, 4.0, guess, isRagged);
    EXPECT_TRUE(isRagged(found));
    EXPECT_FALSE(isRagged(std::nextafter(found, 0.0)));
  }
}

TEST(LeastDouble, NeverGivesANegativeZero) {
  const double zero =
      LeastDouble(-1.0, 1.0, -0.5, [](double x) { return x >= 0.0; });
  EXPECT_EQ(zero, 0.0);
  EXPECT_FALSE(std::signbit(zero));
}

}  // namespace
}  // namespace ZARN::DU
